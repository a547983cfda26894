#include "app/message_places.h"

#include <algorithm>
#include <limits>

namespace conferix {

TMessagePlaces::TMessagePlaces(const TXmlMessages& messages)
    : placeOf_(messages.size(), std::numeric_limits<std::size_t>::max()) {
    for (std::size_t i = 0; i < messages.size(); ++i)
        if (messages[i]->Line() > 0)
            places_.push_back({i, messages[i]->Line(), messages[i]->LinePos(), messages[i]->MsgType()});
    std::ranges::stable_sort(places_, [](const TMessagePlace& left, const TMessagePlace& right) {
        return left.Line != right.Line ? left.Line < right.Line : left.LinePos < right.LinePos;
    });
    for (std::size_t i = 0; i < places_.size(); ++i)
        placeOf_[places_[i].Message] = i;
}

void TMessagePlaces::LinesChanged(std::int32_t line, std::int32_t added) {
    for (auto place = std::ranges::upper_bound(places_, line, {}, &TMessagePlace::Line);
         place != places_.end(); ++place)
        place->Line = std::max(line, place->Line + added);
}

std::int32_t TMessagePlaces::LineOf(std::size_t message) const {
    const std::size_t place = message < placeOf_.size() ? placeOf_[message] : places_.size();
    return place < places_.size() ? places_[place].Line : 0;
}

std::pair<std::size_t, std::size_t> TMessagePlaces::OnLines(std::int32_t first, std::int32_t last) const {
    const auto from = std::ranges::lower_bound(places_, first, {}, &TMessagePlace::Line);
    const auto to = std::ranges::upper_bound(places_, last, {}, &TMessagePlace::Line);
    return {static_cast<std::size_t>(from - places_.begin()), static_cast<std::size_t>(to - places_.begin())};
}

} // namespace conferix
