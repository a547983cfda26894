#include "xml/schema/schema_lexical.h"

#include "platform/iso_date.h"
#include "platform/utf8.h"

#include <algorithm>
#include <charconv>
#include <chrono>

namespace conferix {

namespace {

using std::chrono::minutes;

constexpr bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

std::string_view TakeDigits(std::string_view& text) {
    std::size_t count = 0;
    while (count < text.size() && IsDigit(text[count]))
        ++count;
    const std::string_view digits = text.substr(0, count);
    text.remove_prefix(count);
    return digits;
}

bool TakeChar(std::string_view& text, char c) {
    if (text.empty() || text.front() != c)
        return false;
    text.remove_prefix(1);
    return true;
}

/// A field of exactly two digits.
bool TakeTwo(std::string_view& text, int& value) {
    if (text.size() < 2 || !IsDigit(text[0]) || !IsDigit(text[1]))
        return false;
    value = (text[0] - '0') * 10 + (text[1] - '0');
    text.remove_prefix(2);
    return true;
}

/// A date with a year of four digits or more, which may be negative; its beginning, since 1970-01-01.
std::optional<minutes> TakeDate(std::string_view& text) {
    const bool negative = TakeChar(text, '-');
    const std::string_view digits = TakeDigits(text);
    // Years beyond nine digits have no use here.
    if (digits.size() < 4 || digits.size() > 9 || (digits.size() > 4 && digits[0] == '0'))
        return std::nullopt;
    std::int64_t year = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), year);
    int month = 0;
    int day = 0;
    if (year == 0 || !TakeChar(text, '-') || !TakeTwo(text, month) || !TakeChar(text, '-') ||
        !TakeTwo(text, day))
        return std::nullopt;
    // There is no year 0: -0001 is the year before 0001.
    const std::int64_t astronomical = negative ? 1 - year : year;
    // The calendar repeats every 400 years; <chrono> knows years of at most five digits.
    constexpr std::int64_t kCycle = 400;
    const std::int64_t inCycle = (astronomical % kCycle + kCycle) % kCycle;
    const std::optional<TDate> date =
        MakeDate(static_cast<int>(inCycle), static_cast<unsigned>(month), static_cast<unsigned>(day));
    if (!date)
        return std::nullopt;
    constexpr std::chrono::days kDaysOfCycle(146097);
    return std::chrono::sys_days(*date).time_since_epoch() +
           kDaysOfCycle * ((astronomical - inCycle) / kCycle);
}

bool TakeTime(std::string_view& text) {
    int hour = 0;
    int minute = 0;
    int second = 0;
    if (!TakeTwo(text, hour) || !TakeChar(text, ':') || !TakeTwo(text, minute) || !TakeChar(text, ':') ||
        !TakeTwo(text, second))
        return false;
    std::string_view fraction;
    if (TakeChar(text, '.')) {
        fraction = TakeDigits(text);
        if (fraction.empty())
            return false;
    }
    const bool endOfDay =
        hour == 24 && minute == 0 && second == 0 && fraction.find_first_not_of('0') == std::string_view::npos;
    return (hour <= 23 || endOfDay) && minute <= 59 && second <= 59;
}

/// What is left of a text: a time zone, as its distance from UTC, or nothing at all, as no distance.
bool IsZone(std::string_view text, std::optional<minutes>& zone) {
    if (text.empty())
        return true;
    zone = minutes(0);
    if (text == "Z")
        return true;
    const bool west = text.front() == '-';
    if (!west && text.front() != '+')
        return false;
    text.remove_prefix(1);
    int hour = 0;
    int minute = 0;
    if (!TakeTwo(text, hour) || !TakeChar(text, ':') || !TakeTwo(text, minute) || !text.empty() ||
        minute > 59 || hour > 14 || (hour == 14 && minute != 0))
        return false;
    zone = minutes((west ? -1 : 1) * (hour * 60 + minute));
    return true;
}

bool IsMoment(TSchemaValueKind kind, std::string_view text) {
    std::optional<minutes> zone;
    return (kind == TSchemaValueKind::Time || TakeDate(text)) &&
           (kind != TSchemaValueKind::DateTime || TakeChar(text, 'T')) &&
           (kind == TSchemaValueKind::Date || TakeTime(text)) && IsZone(text, zone);
}

constexpr int kBase64Invalid = 64;

constexpr int Base64Value(char c) {
    if (c >= 'A' && c <= 'Z')
        return c - 'A';
    if (c >= 'a' && c <= 'z')
        return c - 'a' + 26;
    if (IsDigit(c))
        return c - '0' + 52;
    return c == '+' ? 62 : c == '/' ? 63 : kBase64Invalid;
}

bool IsBase64(std::string_view text) {
    std::size_t digits = 0;
    std::size_t padding = 0;
    int last = 0;
    for (const char c : text) {
        if (c == ' ')
            continue;
        if (c == '=') {
            ++padding;
            continue;
        }
        const int value = Base64Value(c);
        if (value == kBase64Invalid || padding > 0)
            return false;
        last = value;
        ++digits;
    }
    if ((digits + padding) % 4 != 0)
        return false;
    switch (padding) {
    case 0:
        return true;
    case 1:
        return (last & 3) == 0; // bits that no octet uses are zero
    case 2:
        return (last & 15) == 0 && digits % 4 == 2;
    default:
        return false;
    }
}

bool IsHexDigit(char c) {
    return IsDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

/// Almost every text is a reference, since other characters count as escaped; what no escaping mends is
/// a percent sign without its two digits and a second fragment.
bool IsUri(std::string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i)
        if (text[i] == '%' && (i + 2 >= text.size() || !IsHexDigit(text[i + 1]) || !IsHexDigit(text[i + 2])))
            return false;
    return std::count(text.begin(), text.end(), '#') <= 1;
}

/// How a character may stand in a name. Those beyond ASCII are letters but for the punctuation and symbols
/// that XML keeps out of names.
enum class TNamePart { None, Inner, Start };

TNamePart NamePartOf(char32_t c) {
    if (c < 0x80) {
        const char ascii = static_cast<char>(c);
        if ((ascii >= 'a' && ascii <= 'z') || (ascii >= 'A' && ascii <= 'Z') || ascii == '_')
            return TNamePart::Start;
        return IsDigit(ascii) || ascii == '-' || ascii == '.' ? TNamePart::Inner : TNamePart::None;
    }
    const auto isIn = [c](char32_t first, char32_t last) { return c >= first && c <= last; };
    if (c == 0xB7 || isIn(0x300, 0x36F) || c == 0x203F || c == 0x2040)
        return TNamePart::Inner;
    const bool symbol = c < 0xC0 || c == 0xD7 || c == 0xF7 ||
                        (isIn(0x2000, 0x206F) && c != 0x200C && c != 0x200D) || isIn(0x2190, 0x2BFF) ||
                        c == 0x3000 || isIn(0xD800, 0xF8FF) || c == 0xFFFE || c == 0xFFFF;
    return symbol ? TNamePart::None : TNamePart::Start;
}

/// A name without colon.
bool IsNCName(std::string_view text) {
    bool fits = !text.empty() && NamePartOf(TakeCharacter(text)) == TNamePart::Start;
    while (fits && !text.empty())
        fits = NamePartOf(TakeCharacter(text)) != TNamePart::None;
    return fits;
}

} // namespace

std::optional<TSchemaDecimal> ParseSchemaDecimal(std::string_view value) {
    TSchemaDecimal decimal;
    if (!value.empty() && (value.front() == '-' || value.front() == '+'))
        value.remove_prefix(1);
    decimal.Whole = TakeDigits(value);
    if (TakeChar(value, '.'))
        decimal.Fraction = TakeDigits(value);
    if (!value.empty() || (decimal.Whole.empty() && decimal.Fraction.empty()))
        return std::nullopt;
    while (!decimal.Whole.empty() && decimal.Whole.front() == '0')
        decimal.Whole.remove_prefix(1);
    while (!decimal.Fraction.empty() && decimal.Fraction.back() == '0')
        decimal.Fraction.remove_suffix(1);
    return decimal;
}

bool IsSchemaLexical(TSchemaValueKind kind, std::string_view value) {
    switch (kind) {
    case TSchemaValueKind::Any:
    case TSchemaValueKind::String:
        return true;
    case TSchemaValueKind::Id:
        return IsNCName(value);
    case TSchemaValueKind::AnyUri:
        return IsUri(value);
    case TSchemaValueKind::Boolean:
        return value == "true" || value == "false" || value == "1" || value == "0";
    case TSchemaValueKind::Decimal:
        return ParseSchemaDecimal(value).has_value();
    case TSchemaValueKind::Integer:
        return value.find('.') == std::string_view::npos && ParseSchemaDecimal(value).has_value();
    case TSchemaValueKind::Date:
    case TSchemaValueKind::Time:
    case TSchemaValueKind::DateTime:
        return IsMoment(kind, value);
    case TSchemaValueKind::Base64Binary:
        return IsBase64(value);
    }
    return false;
}

bool IsSchemaDateFrom(std::string_view least, std::string_view date) {
    constexpr std::chrono::hours kWidestZone(14);
    std::optional<minutes> leastZone;
    std::optional<minutes> zone;
    const std::optional<minutes> from = TakeDate(least);
    const std::optional<minutes> day = TakeDate(date);
    if (!from || !day || !IsZone(least, leastZone) || !IsZone(date, zone))
        return false;
    const minutes distance = (*day - zone.value_or(minutes(0))) - (*from - leastZone.value_or(minutes(0)));
    return zone.has_value() == leastZone.has_value() ? distance >= minutes(0) : distance > kWidestZone;
}

std::size_t CountBase64Octets(std::string_view value) {
    const auto digits = static_cast<std::size_t>(
        std::count_if(value.begin(), value.end(), [](char c) { return c != ' ' && c != '='; }));
    return digits * 3 / 4;
}

} // namespace conferix
