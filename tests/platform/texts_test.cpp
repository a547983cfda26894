// Numbers and days as text.
#include "platform/format_settings.h"
#include "platform/iso_date.h"
#include "support/case_file.h"

#include <gtest/gtest.h>

#include <charconv>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>

namespace conferix {
namespace {

const TFormatSettings kBrazil = TFormatSettings::OfLocale({",", "."});

std::string Shortest(double value) {
    char text[32];
    return {text, std::to_chars(std::begin(text), std::end(text), value).ptr};
}

/// What the function of that name makes of one text or two.
std::string Made(const std::string& function, const std::string& text, const std::string& other) {
    const TFormatSettings messages = TFormatSettings::Messages();
    const double number = std::strtod(text.c_str(), nullptr);
    if (function == "Money")
        return kBrazil.Money(number) + " " + messages.Money(number);
    if (function == "Count")
        return kBrazil.Count(std::stoll(text)) + " " + messages.Count(std::stoll(text));
    if (function == "Decimal")
        return kBrazil.Decimal(number, std::stoi(other));
    if (function == "OfLocale")
        return TFormatSettings::OfLocale({text, other}).Money(1234.5);
    if (function == "ParseDecimal") {
        const auto value = ParseDecimal(text);
        return value ? Shortest(*value) : "-";
    }
    EXPECT_EQ(function, "ParseIsoDate");
    const auto date = ParseIsoDate(text);
    return date ? std::to_string(unsigned(date->day())) + "." + std::to_string(unsigned(date->month())) +
                      "." + std::to_string(int(date->year())) + " " + FormatIsoDate(*date)
                : "-";
}

TEST(Texts, OfNumbersAndDaysAreThoseOfTheCases) {
    for (const tests::TCase& c : tests::Cases("platform/texts.casos"))
        for (const auto& [text, other] : c.Inputs)
            EXPECT_EQ(Made(c.Section, text, other), c.Expected.front()) << c.Section << " " << c << "\n"
                                                                        << text;
    const double largest = std::numeric_limits<double>::max();
    EXPECT_EQ(TFormatSettings::Messages().Money(largest).size(), 309U + 3U);
    EXPECT_FALSE(ParseDecimal(std::string(400, '9')).has_value()) << "beyond the range of a double";
    EXPECT_EQ(ParseDecimal("-0." + std::string(400, '0') + "1"), 0.0);
    std::mt19937_64 random(1);
    for (int i = 0; i < 20'000; ++i) {
        std::string text = std::to_string(random()).substr(0, 1 + random() % 18);
        text.insert(random() % (text.size() + 1), ".");
        ASSERT_EQ(ParseDecimal(text), std::strtod(text.c_str(), nullptr)) << text;
    }
}

} // namespace
} // namespace conferix
