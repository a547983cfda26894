#include "platform/iso_date.h"

#include <algorithm>
#include <cstddef>

namespace conferix {

namespace {

constexpr std::string_view kForm = "dddd-dd-dd";

bool HasForm(std::string_view text) {
    return std::equal(text.begin(), text.end(), kForm.begin(), kForm.end(),
                      [](char c, char form) { return form == 'd' ? c >= '0' && c <= '9' : c == form; });
}

unsigned Number(std::string_view digits) {
    unsigned value = 0;
    for (const char c : digits) {
        value = value * 10 + static_cast<unsigned>(c - '0');
    }
    return value;
}

std::string Padded(unsigned value, std::size_t width) {
    std::string text = std::to_string(value);
    text.insert(0, width - std::min(width, text.size()), '0');
    return text;
}

} // namespace

std::optional<TDate> MakeDate(int year, unsigned month, unsigned day) {
    const TDate date{std::chrono::year(year), std::chrono::month(month), std::chrono::day(day)};
    return date.ok() ? std::optional(date) : std::nullopt;
}

std::optional<TDate> ParseIsoDate(std::string_view text) {
    if (!HasForm(text)) {
        return std::nullopt;
    }
    const unsigned year = Number(text.substr(0, 4));
    return year != 0 ? MakeDate(static_cast<int>(year), Number(text.substr(5, 2)), Number(text.substr(8, 2)))
                     : std::nullopt;
}

std::string FormatIsoDate(const TDate& date) {
    return Padded(static_cast<unsigned>(static_cast<int>(date.year())), 4) + "-" +
           Padded(static_cast<unsigned>(date.month()), 2) + "-" +
           Padded(static_cast<unsigned>(date.day()), 2);
}

} // namespace conferix
