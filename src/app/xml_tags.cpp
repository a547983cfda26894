#include "app/xml_tags.h"

#include <algorithm>

namespace conferix {

namespace {

constexpr std::size_t kNowhere = std::string_view::npos;

struct TTag {
    TTextRange Name;
    std::size_t End = 0; ///< one past its ">"
    bool Closes = false;
    bool Empty = false;
};

/// The tag that starts at a "<"; nothing for other markup and for a tag that does not end.
std::optional<TTag> TagAt(std::string_view text, std::size_t at) {
    const std::size_t end = text.find('>', at);
    if (at >= text.size() || text[at] != '<' || end == kNowhere)
        return std::nullopt;
    TTag tag;
    tag.End = end + 1;
    tag.Closes = text.substr(at).starts_with("</");
    tag.Empty = text[end - 1] == '/';
    tag.Name.Start = at + (tag.Closes ? 2 : 1);
    tag.Name.End = std::min(text.find_first_of(" \t\r\n/>", tag.Name.Start), end);
    if (tag.Name.Start >= tag.Name.End || text[tag.Name.Start] == '!' || text[tag.Name.Start] == '?')
        return std::nullopt;
    return tag;
}

std::string_view NameOf(std::string_view text, const TTag& tag) {
    return text.substr(tag.Name.Start, tag.Name.End - tag.Name.Start);
}

/// Counts tags of one name; true once as many were closed as opened.
class TBalance {
  public:
    TBalance(std::string_view text, const TTag& first)
        : text_(text), name_(NameOf(text, first)), closes_(first.Closes) {}
    bool Meets(const TTag& tag) {
        if (tag.Empty || NameOf(text_, tag) != name_)
            return false;
        depth_ += tag.Closes == closes_ ? 1 : -1;
        return depth_ == 0;
    }

  private:
    std::string_view text_;
    std::string_view name_;
    bool closes_;
    int depth_ = 1;
};

} // namespace

std::optional<std::pair<TTextRange, TTextRange>> MatchTags(std::string_view text, std::size_t place) {
    if (text.empty())
        return std::nullopt;
    std::size_t start = text.rfind('<', std::min(place, text.size() - 1));
    if (start == kNowhere)
        return std::nullopt;
    const std::optional<TTag> tag = TagAt(text, start);
    if (!tag || place > tag->End)
        return std::nullopt;
    if (tag->Empty && !tag->Closes)
        return std::pair(tag->Name, tag->Name);
    TBalance balance(text, *tag);
    for (;;) {
        if (tag->Closes)
            start = start == 0 ? kNowhere : text.rfind('<', start - 1);
        else
            start = text.find('<', start + 1);
        if (start == kNowhere)
            return std::nullopt;
        if (const auto other = TagAt(text, start); other && balance.Meets(*other))
            return std::pair(tag->Name, other->Name);
    }
}

TTextRange MarkedRange(std::string_view text, std::size_t place) {
    const std::size_t lineEnd = std::min(text.find_first_of("\r\n", place), text.size());
    const std::optional<TTag> tag = TagAt(text, place);
    if (!tag || tag->End > lineEnd)
        return {place, lineEnd};
    const std::size_t next = text.find('<', tag->End);
    const auto closing = next < lineEnd ? TagAt(text, next) : std::nullopt;
    if (!tag->Empty && closing && closing->Closes && NameOf(text, *closing) == NameOf(text, *tag))
        return {place, closing->End};
    return {place, tag->End};
}

} // namespace conferix
