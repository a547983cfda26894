#include "platform/format_settings.h"
#include "support/test_files.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <ostream>
#include <string>

#include <locale.h>

namespace conferix {
namespace {

const TFormatSettings kBrazil = TFormatSettings::OfLocale({",", "."});

TEST(FormatSettings, MoneyRoundsHalfAwayFromZero) {
    const struct {
        double Value;
        const char* Regional;
        const char* Message;
    } cases[] = {
        {0, "0,00", "0.00"},
        {-0.0, "0,00", "0.00"},
        {-0.004, "0,00", "0.00"},
        {-0.005, "-0,01", "-0.01"},
        {0.005, "0,01", "0.01"},
        {1.005, "1,01", "1.01"},
        {2.675, "2,68", "2.68"},
        {-2.675, "-2,68", "-2.68"},
        {1.0049999, "1,00", "1.00"},
        {0.1 + 0.2, "0,30", "0.30"},
        {9.995, "10,00", "10.00"},
        {999.995, "1.000,00", "1000.00"},
        {999999.999, "1.000.000,00", "1000000.00"},
        {1234567.5, "1.234.567,50", "1234567.50"},
        {-123456.78, "-123.456,78", "-123456.78"},
        {12345678901234.56, "12.345.678.901.234,56", "12345678901234.56"},
        {1e22, "10.000.000.000.000.000.000.000,00", "10000000000000000000000.00"},
        {5e-324, "0,00", "0.00"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(kBrazil.Money(c.Value), c.Regional) << c.Value;
        EXPECT_EQ(TFormatSettings::Messages().Money(c.Value), c.Message) << c.Value;
    }
    const double largest = std::numeric_limits<double>::max();
    EXPECT_EQ(TFormatSettings::Messages().Money(largest).size(), 309U + 3U);
    EXPECT_EQ(kBrazil.Money(std::nan("")), "NaN");
    EXPECT_EQ(kBrazil.Money(-HUGE_VAL), "-INF");
}

TEST(FormatSettings, CountsAndOtherDecimals) {
    const struct {
        std::int64_t Value;
        const char* Text;
    } counts[] = {
        {0, "0"},          {999, "999"},
        {1000, "1.000"},   {-999, "-999"},
        {-1000, "-1.000"}, {std::numeric_limits<std::int64_t>::min(), "-9.223.372.036.854.775.808"}};
    for (const auto& c : counts)
        EXPECT_EQ(kBrazil.Count(c.Value), c.Text);
    EXPECT_EQ(TFormatSettings::Messages().Count(1234567), "1234567");
    EXPECT_EQ(kBrazil.Decimal(2.5, 0), "3");
    EXPECT_EQ(kBrazil.Decimal(-0.5, 0), "-1");
    EXPECT_EQ(kBrazil.Decimal(0.00005, 4), "0,0001");
    EXPECT_EQ(kBrazil.Decimal(1.25, 4), "1,2500");
}

TEST(FormatSettings, SeparatorsThatNoCountryUsesGiveThoseOfBrazil) {
    const struct {
        TRegionalSeparators Locale;
        const char* Text;
    } cases[] = {
        {{".", ","}, "1,234.50"}, {{",", "\u00A0"}, "1\u00A0234,50"},
        {{",", ""}, "1234,50"},   {{".", "\u2019"}, "1\u2019234.50"},
        {{".", ""}, "1.234,50"},  {{"", ""}, "1.234,50"},
        {{"", "."}, "1.234,50"},  {{",", ","}, "1.234,50"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(TFormatSettings::OfLocale(c.Locale).Money(1234.5), c.Text);
}

TEST(FormatSettings, SeparatorsAreThoseOfTheUsersLocale) {
    const std::pair<const char*, const char*> cases[] = {
        {"C", "-1.234.567,89"},
        {"POSIX", "-1.234.567,89"},
        {"C.UTF-8", "-1.234.567,89"},
        {"pt_BR.UTF-8", "-1.234.567,89"},
        {"pt_BR.ISO-8859-1", "-1.234.567,89"},
        {"en_US.UTF-8", "-1,234,567.89"},
        {"fr_FR.UTF-8", "-1\u202F234\u202F567,89"},
        {"nb_NO.ISO-8859-1", "-1\u00A0234\u00A0567,89"},
        {"xx_XX.UTF-8", "-1.234.567,89"}, // there is none of that name
    };
    for (const auto& [locale, text] : cases) {
        const locale_t installed = newlocale(LC_NUMERIC_MASK, locale, nullptr);
        if (installed == nullptr && !std::string_view(locale).starts_with("xx"))
            continue; // that of Brazil is, where the tests are set up
        if (installed != nullptr)
            freelocale(installed);
        const TEnvironment environment("LC_ALL", locale);
        EXPECT_EQ(TFormatSettings::OfLocale(RegionalSeparators()).Money(-1234567.891), text) << locale;
        EXPECT_STREQ(setlocale(LC_ALL, nullptr), "C") << "the locale of the process was changed";
    }
}

TEST(ParseDecimal, TakesTheLexicalFormOfADecimalAndNothingElse) {
    const struct {
        const char* Text;
        double Value;
    } good[] = {
        {"0", 0},      {"12.50", 12.5},
        {"+1.5", 1.5}, {"-.5", -.5},
        {"1.", 1},     {" \t\r\n7\n", 7},
        {"-0.00", 0},  {"000123.4", 123.4},
        {"0.1", 0.1},  {"1234567890123456789.5", 1234567890123456789.5},
    };
    for (const auto& c : good) {
        const auto value = ParseDecimal(c.Text);
        ASSERT_TRUE(value.has_value()) << c.Text;
        EXPECT_EQ(*value, c.Value) << c.Text;
    }
    for (const char* text : {"", "  ", ".", "+", "-", "+.", "1e3", "1,5", "1.5.0", "--1", "+-1", "1 0",
                             "0x10", "INF", "NaN", "1.5a", "\u00A01", "- 1", "1.2-"})
        EXPECT_FALSE(ParseDecimal(text).has_value()) << text;
    EXPECT_FALSE(ParseDecimal(std::string("1\0", 2)).has_value());
    EXPECT_FALSE(ParseDecimal(std::string(400, '9')).has_value()) << "beyond the range of a double";
    EXPECT_EQ(ParseDecimal("-0." + std::string(400, '0') + "1"), 0.0);
}

} // namespace
} // namespace conferix
