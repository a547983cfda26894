// Numbers as text: the one place that formats them, and the reading of decimals.
#pragma once

#include "platform/platform.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace conferix {

/// Formats numbers with a decimal separator and, in groups of three digits, a thousands separator.
class TFormatSettings {
  public:
    /// As the user writes numbers (the locale as it was at the first call).
    static TFormatSettings Regional();
    /// As numbers stand in messages and files: decimal point, no thousands separator.
    static TFormatSettings Messages();
    /// With the separators of a locale. Where they are those of no country (C, POSIX), equal or
    /// unknown, with those of Brazil: "," and ".".
    static TFormatSettings OfLocale(const TRegionalSeparators& separators);

    /// An amount, pattern "#,0.00".
    std::string Money(double value) const { return Decimal(value, 2); }

    /// A whole number, pattern "#,0".
    std::string Count(std::int64_t value) const;

    /// A number with a fixed count of decimals (0 or more), rounded half away from zero. What is
    /// rounded is the shortest decimal that stands for the double, so that 1.005 gives "1.01". Zero
    /// has no sign; a value that is no number gives "NaN", an infinite one "INF" or "-INF".
    std::string Decimal(double value, int decimals) const;

  private:
    TFormatSettings(std::string decimal, std::string thousands);

    std::string Grouped(std::string_view digits) const;

    std::string decimal_;
    std::string thousands_;
};

/// Value of a text in the lexical form of an XML Schema decimal (sign, digits, point, digits; no
/// exponent), surrounding XML white space aside; nothing for any other text and for numbers beyond
/// the range of a double.
std::optional<double> ParseDecimal(std::string_view text);

} // namespace conferix
