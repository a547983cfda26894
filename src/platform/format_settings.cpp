#include "platform/format_settings.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <system_error>
#include <utility>

namespace conferix {

namespace {

constexpr bool IsXmlWhiteSpace(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// Shortest decimal of the magnitude, without exponent: "1234.5", "0.001", "7".
std::string ShortestDecimal(double magnitude) {
    // 309 digits before the point, or 324 and 17 after it, are the longest forms.
    char buffer[400];
    const auto end = std::to_chars(buffer, buffer + sizeof buffer, magnitude, std::chars_format::fixed).ptr;
    return {buffer, end};
}

void Increment(std::string& digits) {
    for (auto digit = digits.rbegin(); digit != digits.rend(); ++digit) {
        if (*digit != '9') {
            ++*digit;
            return;
        }
        *digit = '0';
    }
    digits.insert(digits.begin(), '1');
}

// All digits of a decimal rounded to `decimals` places, the point left out: "1.005" -> "101".
std::string RoundedDigits(const std::string& decimal, std::size_t decimals) {
    const std::size_t point = std::min(decimal.find('.'), decimal.size());
    std::string digits = decimal.substr(0, point);
    std::string fraction = point < decimal.size() ? decimal.substr(point + 1) : std::string();
    const bool roundsUp = fraction.size() > decimals && fraction[decimals] >= '5';
    fraction.resize(decimals, '0');
    digits += fraction;
    if (roundsUp) {
        Increment(digits);
    }
    return digits;
}

} // namespace

TFormatSettings::TFormatSettings(std::string decimal, std::string thousands)
    : decimal_(std::move(decimal)), thousands_(std::move(thousands)) {}

TFormatSettings TFormatSettings::Regional() {
    static const TFormatSettings settings = OfLocale(RegionalSeparators());
    return settings;
}

TFormatSettings TFormatSettings::Messages() {
    return {".", ""};
}

TFormatSettings TFormatSettings::OfLocale(const TRegionalSeparators& separators) {
    const bool unknown = separators.Decimal.empty();
    const bool noCountry = separators.Decimal == "." && separators.Thousands.empty();
    if (unknown || noCountry || separators.Decimal == separators.Thousands) {
        return {",", "."};
    }
    return {separators.Decimal, separators.Thousands};
}

std::string TFormatSettings::Count(std::int64_t value) const {
    const std::string text = std::to_string(value);
    const std::size_t sign = value < 0 ? 1 : 0;
    return text.substr(0, sign) + Grouped(std::string_view(text).substr(sign));
}

std::string TFormatSettings::Decimal(double value, int decimals) const {
    if (std::isnan(value)) {
        return "NaN";
    }
    if (std::isinf(value)) {
        return value < 0 ? "-INF" : "INF";
    }
    const auto places = static_cast<std::size_t>(std::max(decimals, 0));
    const std::string digits = RoundedDigits(ShortestDecimal(std::fabs(value)), places);
    const bool isZero = digits.find_first_not_of('0') == std::string::npos;
    const std::string_view all = digits;
    std::string text = value < 0 && !isZero ? "-" : "";
    text += Grouped(all.substr(0, all.size() - places));
    if (places > 0) {
        text += decimal_;
        text += all.substr(all.size() - places);
    }
    return text;
}

std::string TFormatSettings::Grouped(std::string_view digits) const {
    std::string text;
    for (std::size_t i = 0; i < digits.size(); ++i) {
        if (i > 0 && (digits.size() - i) % 3 == 0) {
            text += thousands_;
        }
        text += digits[i];
    }
    return text;
}

constexpr std::array<double, 16> kExactPowers = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                 1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};

std::optional<double> ParseDecimal(std::string_view text) {
    while (!text.empty() && IsXmlWhiteSpace(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && IsXmlWhiteSpace(text.back())) {
        text.remove_suffix(1);
    }
    if (text.empty()) {
        return std::nullopt;
    }
    const bool negative = text.front() == '-';
    if (negative || text.front() == '+') {
        text.remove_prefix(1);
    }
    std::size_t point = text.size();
    std::uint64_t number = 0; // of all digits, modulo 2^64
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (IsDigit(text[i])) {
            number = number * 10 + static_cast<std::uint64_t>(text[i] - '0');
        } else if (text[i] == '.' && point == text.size()) {
            point = i;
        } else {
            return std::nullopt;
        }
    }
    const std::size_t decimals = text.size() - std::min(point + 1, text.size());
    const std::size_t digits = point + decimals;
    if (digits == 0) {
        return std::nullopt;
    }
    // Up to 15 digits are a whole number that a double holds, as it does their power of ten, and the quotient
    // of the two is rounded once: the nearest double, as below, in a third of the time.
    if (digits < kExactPowers.size()) {
        const double exact = static_cast<double>(number) / kExactPowers[decimals];
        return negative ? -exact : exact;
    }
    double value = 0;
    const auto result =
        std::from_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed);
    if (result.ec == std::errc::result_out_of_range) {
        if (text.substr(0, point).find_first_not_of('0') != std::string_view::npos) {
            return std::nullopt;
        }
        value = 0; // smaller than any double
    }
    return negative ? -value : value;
}

} // namespace conferix
