#include "xml/schema/schema_lexical.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace conferix {

namespace {

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

/// A point in time, or a time of day, with its fraction of a second kept as digits.
struct TMoment {
    std::int64_t Seconds = 0; ///< in UTC when there is a zone
    std::string_view Fraction;
    bool Zoned = false;
};

constexpr std::int64_t kDaySeconds = 24 * 60 * 60;
constexpr std::int64_t kWidestZone = 14 * 60 * 60;

constexpr bool IsLeapYear(std::int64_t year) {
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

/// Days from 1970-01-01 in the proleptic Gregorian calendar.
constexpr std::int64_t DaysOf(std::int64_t year, int month, int day) {
    year -= month <= 2 ? 1 : 0;
    const std::int64_t era = (year >= 0 ? year : year - 399) / 400;
    const std::int64_t yearOfEra = year - era * 400;
    const std::int64_t dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
    return era * 146097 + yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear - 719468;
}

bool TakeDate(std::string_view& text, TMoment& moment) {
    const bool negative = TakeChar(text, '-');
    const std::string_view digits = TakeDigits(text);
    // Years beyond nine digits have no use here and would overflow the count of seconds.
    if (digits.size() < 4 || digits.size() > 9 || (digits.size() > 4 && digits[0] == '0'))
        return false;
    std::int64_t year = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), year);
    int month = 0;
    int day = 0;
    if (year == 0 || !TakeChar(text, '-') || !TakeTwo(text, month) || !TakeChar(text, '-') ||
        !TakeTwo(text, day))
        return false;
    constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    // There is no year 0: -0001 is the year before 0001.
    const std::int64_t astronomical = negative ? 1 - year : year;
    if (month < 1 || month > 12 || day < 1 ||
        day > kDays[month - 1] + (month == 2 && IsLeapYear(astronomical) ? 1 : 0))
        return false;
    moment.Seconds += DaysOf(astronomical, month, day) * kDaySeconds;
    return true;
}

bool TakeTime(std::string_view& text, TMoment& moment) {
    int hour = 0;
    int minute = 0;
    int second = 0;
    if (!TakeTwo(text, hour) || !TakeChar(text, ':') || !TakeTwo(text, minute) || !TakeChar(text, ':') ||
        !TakeTwo(text, second))
        return false;
    if (TakeChar(text, '.')) {
        moment.Fraction = TakeDigits(text);
        if (moment.Fraction.empty())
            return false;
        while (!moment.Fraction.empty() && moment.Fraction.back() == '0')
            moment.Fraction.remove_suffix(1);
    }
    const bool endOfDay = hour == 24 && minute == 0 && second == 0 && moment.Fraction.empty();
    if ((hour > 23 && !endOfDay) || minute > 59 || second > 59)
        return false;
    moment.Seconds += (hour * 60 + minute) * 60 + second;
    return true;
}

bool TakeZone(std::string_view& text, TMoment& moment) {
    if (text.empty())
        return true;
    moment.Zoned = true;
    if (TakeChar(text, 'Z'))
        return true;
    const bool west = text.front() == '-';
    if (!west && text.front() != '+')
        return false;
    text.remove_prefix(1);
    int hour = 0;
    int minute = 0;
    if (!TakeTwo(text, hour) || !TakeChar(text, ':') || !TakeTwo(text, minute) || minute > 59 || hour > 14 ||
        (hour == 14 && minute != 0))
        return false;
    moment.Seconds += (west ? 1 : -1) * (hour * 60 + minute) * 60;
    return true;
}

std::optional<TMoment> ParseMoment(TSchemaValueKind kind, std::string_view text) {
    TMoment moment;
    if (kind != TSchemaValueKind::Time && !TakeDate(text, moment))
        return std::nullopt;
    if (kind == TSchemaValueKind::DateTime && !TakeChar(text, 'T'))
        return std::nullopt;
    if (kind != TSchemaValueKind::Date && !TakeTime(text, moment))
        return std::nullopt;
    if (!TakeZone(text, moment) || !text.empty())
        return std::nullopt;
    if (kind == TSchemaValueKind::Time && moment.Seconds == kDaySeconds)
        moment.Seconds = 0;
    return moment;
}

TSchemaOrder OrderOf(int difference) {
    return difference < 0 ? TSchemaOrder::Less : difference > 0 ? TSchemaOrder::Greater : TSchemaOrder::Equal;
}

TSchemaOrder CompareMoments(const TMoment& left, const TMoment& right) {
    if (left.Zoned != right.Zoned) {
        // The one without zone may lie anywhere within fourteen hours around its face value.
        const std::int64_t distance = left.Seconds - right.Seconds;
        if (distance < -kWidestZone)
            return TSchemaOrder::Less;
        return distance > kWidestZone ? TSchemaOrder::Greater : TSchemaOrder::Unordered;
    }
    if (left.Seconds != right.Seconds)
        return left.Seconds < right.Seconds ? TSchemaOrder::Less : TSchemaOrder::Greater;
    return OrderOf(left.Fraction.compare(right.Fraction));
}

TSchemaOrder CompareDecimals(const TSchemaDecimal& left, const TSchemaDecimal& right) {
    if (left.Negative != right.Negative)
        return left.Negative ? TSchemaOrder::Less : TSchemaOrder::Greater;
    int difference = left.Whole.size() != right.Whole.size()
                         ? (left.Whole.size() < right.Whole.size() ? -1 : 1)
                         : left.Whole.compare(right.Whole);
    if (difference == 0)
        difference = left.Fraction.compare(right.Fraction);
    return OrderOf(left.Negative ? -difference : difference);
}

bool IsFloat(std::string_view text) {
    if (text == "INF" || text == "-INF" || text == "NaN")
        return true;
    if (const std::size_t exponent = text.find_first_of("eE"); exponent != std::string_view::npos) {
        if (!ParseSchemaDecimal(text.substr(exponent + 1), true))
            return false;
        text = text.substr(0, exponent);
    }
    return ParseSchemaDecimal(text, false).has_value();
}

double FloatOf(std::string_view text) {
    if (text == "INF" || text == "-INF")
        return text.front() == '-' ? -std::numeric_limits<double>::infinity()
                                   : std::numeric_limits<double>::infinity();
    if (text == "NaN")
        return std::numeric_limits<double>::quiet_NaN();
    if (!text.empty() && text.front() == '+')
        text.remove_prefix(1);
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc::result_out_of_range) {
        const std::size_t exponent = text.find_first_of("eE");
        const bool tiny = exponent != std::string_view::npos && text.substr(exponent + 1).starts_with('-');
        value = tiny ? 0 : std::numeric_limits<double>::infinity();
        return text.front() == '-' ? -value : value;
    }
    return value;
}

TSchemaOrder CompareFloats(double left, double right) {
    if (std::isnan(left) || std::isnan(right))
        return std::isnan(left) && std::isnan(right) ? TSchemaOrder::Equal : TSchemaOrder::Unordered;
    return left < right ? TSchemaOrder::Less : left > right ? TSchemaOrder::Greater : TSchemaOrder::Equal;
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

bool IsHex(std::string_view text) {
    return text.size() % 2 == 0 && std::all_of(text.begin(), text.end(), IsHexDigit);
}

/// Almost every text is a reference, since other characters count as escaped; what no escaping mends is
/// a percent sign without its two digits and a second fragment.
bool IsUri(std::string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i)
        if (text[i] == '%' && (i + 2 >= text.size() || !IsHexDigit(text[i + 1]) || !IsHexDigit(text[i + 2])))
            return false;
    return std::count(text.begin(), text.end(), '#') <= 1;
}

/// A name without colon. Characters beyond ASCII are letters but for the punctuation and symbols that
/// XML keeps out of names.
bool IsNCName(std::string_view text) {
    if (text.empty())
        return false;
    for (std::size_t i = 0; i < text.size();) {
        const auto lead = static_cast<unsigned char>(text[i]);
        if (lead < 0x80) {
            const bool letter = (lead >= 'a' && lead <= 'z') || (lead >= 'A' && lead <= 'Z') || lead == '_';
            const bool inner = IsDigit(text[i]) || lead == '-' || lead == '.';
            if (!letter && (i == 0 || !inner))
                return false;
            ++i;
            continue;
        }
        const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
        if (i + length > text.size())
            return false;
        std::uint32_t code = lead & (0xFFU >> (length + 1));
        for (std::size_t k = 1; k < length; ++k)
            code = (code << 6) | (static_cast<unsigned char>(text[i + k]) & 0x3FU);
        const bool punctuation = (code < 0xC0 && code != 0xB7) || code == 0xD7 || code == 0xF7 ||
                                 (code >= 0x2000 && code <= 0x206F && code != 0x203F && code != 0x2040 &&
                                  code != 0x200C && code != 0x200D) ||
                                 (code >= 0x2190 && code <= 0x2BFF) || (code >= 0x3000 && code == 0x3000) ||
                                 (code >= 0xD800 && code <= 0xF8FF) || code == 0xFFFE || code == 0xFFFF;
        const bool combining =
            code == 0xB7 || (code >= 0x300 && code <= 0x36F) || code == 0x203F || code == 0x2040;
        if (punctuation || (i == 0 && combining))
            return false;
        i += length;
    }
    return true;
}

} // namespace

std::string TSchemaDecimal::Key() const {
    std::string key(Negative ? "-" : "");
    key.append(Whole).append(".").append(Fraction);
    return key;
}

std::optional<TSchemaDecimal> ParseSchemaDecimal(std::string_view value, bool integer) {
    TSchemaDecimal decimal;
    decimal.Negative = !value.empty() && value.front() == '-';
    if (decimal.Negative || (!value.empty() && value.front() == '+'))
        value.remove_prefix(1);
    decimal.Whole = TakeDigits(value);
    if (!integer && TakeChar(value, '.'))
        decimal.Fraction = TakeDigits(value);
    if (!value.empty() || (decimal.Whole.empty() && decimal.Fraction.empty()))
        return std::nullopt;
    while (!decimal.Whole.empty() && decimal.Whole.front() == '0')
        decimal.Whole.remove_prefix(1);
    while (!decimal.Fraction.empty() && decimal.Fraction.back() == '0')
        decimal.Fraction.remove_suffix(1);
    if (decimal.Whole.empty() && decimal.Fraction.empty())
        decimal.Negative = false;
    return decimal;
}

bool IsSchemaLexical(TSchemaValueKind kind, std::string_view value) {
    switch (kind) {
    case TSchemaValueKind::Any:
    case TSchemaValueKind::String:
        return true;
    case TSchemaValueKind::NCName:
    case TSchemaValueKind::Id:
        return IsNCName(value);
    case TSchemaValueKind::AnyUri:
        return IsUri(value);
    case TSchemaValueKind::Boolean:
        return value == "true" || value == "false" || value == "1" || value == "0";
    case TSchemaValueKind::Decimal:
        return ParseSchemaDecimal(value, false).has_value();
    case TSchemaValueKind::Integer:
        return ParseSchemaDecimal(value, true).has_value();
    case TSchemaValueKind::Float:
        return IsFloat(value);
    case TSchemaValueKind::Date:
    case TSchemaValueKind::Time:
    case TSchemaValueKind::DateTime:
        return ParseMoment(kind, value).has_value();
    case TSchemaValueKind::Base64Binary:
        return IsBase64(value);
    case TSchemaValueKind::HexBinary:
        return IsHex(value);
    }
    return false;
}

TSchemaOrder CompareSchemaValues(TSchemaValueKind kind, std::string_view left, std::string_view right) {
    if (!IsSchemaLexical(kind, left) || !IsSchemaLexical(kind, right))
        return TSchemaOrder::Unordered;
    switch (kind) {
    case TSchemaValueKind::Decimal:
    case TSchemaValueKind::Integer:
        return CompareDecimals(*ParseSchemaDecimal(left, false), *ParseSchemaDecimal(right, false));
    case TSchemaValueKind::Float:
        return CompareFloats(FloatOf(left), FloatOf(right));
    case TSchemaValueKind::Date:
    case TSchemaValueKind::Time:
    case TSchemaValueKind::DateTime:
        return CompareMoments(*ParseMoment(kind, left), *ParseMoment(kind, right));
    default:
        return left == right ? TSchemaOrder::Equal : TSchemaOrder::Unordered;
    }
}

bool IsSchemaOrdered(TSchemaValueKind kind) {
    switch (kind) {
    case TSchemaValueKind::Decimal:
    case TSchemaValueKind::Integer:
    case TSchemaValueKind::Float:
    case TSchemaValueKind::Date:
    case TSchemaValueKind::Time:
    case TSchemaValueKind::DateTime:
        return true;
    default:
        return false;
    }
}

std::size_t CountCodePoints(std::string_view text) {
    return static_cast<std::size_t>(std::count_if(
        text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

std::size_t CountOctets(TSchemaValueKind kind, std::string_view value) {
    if (kind == TSchemaValueKind::HexBinary)
        return value.size() / 2;
    const auto digits = static_cast<std::size_t>(
        std::count_if(value.begin(), value.end(), [](char c) { return c != ' ' && c != '='; }));
    return digits * 3 / 4;
}

} // namespace conferix
