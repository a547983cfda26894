#include "data/import/cell_text.h"

#include "data/plain_text.h"
#include "platform/iso_date.h"

#include <charconv>
#include <chrono>
#include <cmath>

namespace conferix {

namespace {

constexpr std::string_view kDigits = "0123456789";

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

bool AllDigits(std::string_view text) {
    return !text.empty() && text.find_first_not_of(kDigits) == std::string_view::npos;
}

std::string WithLeadingZeros(const std::string& text, std::size_t digits) {
    return text.size() < digits ? std::string(digits - text.size(), '0') + text : text;
}

/// The whole number that a text of any notation ("22", "22.0", "7,0965676E7") stands for.
std::optional<std::uint64_t> WholeNumber(std::string text) {
    const std::size_t comma = text.find(',');
    if (comma != std::string::npos) {
        text[comma] = '.';
    }
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    constexpr double kMax = 1e15; // above it doubles skip whole numbers
    if (error != std::errc() || end != text.data() + text.size() || value < 0 || value > kMax ||
        value != std::floor(value)) {
        return std::nullopt;
    }
    return static_cast<std::uint64_t>(value);
}

/// Two digits at `at` that no further digit follows.
std::string TableAt(std::string_view text, std::size_t at) {
    const bool found = at + 2 <= text.size() && IsDigit(text[at]) && IsDigit(text[at + 1]) &&
                       (at + 2 == text.size() || !IsDigit(text[at + 2]));
    return found ? std::string(text.substr(at, 2)) : std::string();
}

std::optional<std::string> Iso(int year, unsigned month, unsigned day) {
    constexpr int kFirstYear = 1900;
    constexpr int kLastYear = 9999;
    const std::optional<TDate> date =
        year >= kFirstYear && year <= kLastYear ? MakeDate(year, month, day) : std::nullopt;
    return date ? std::optional(FormatIsoDate(*date)) : std::nullopt;
}

/// "13/02/2009", "1/2/2009".
std::optional<std::string> BrazilianDate(std::string_view text) {
    unsigned parts[3] = {};
    const char* next = text.data();
    const char* const end = text.data() + text.size();
    for (int i = 0; i < 3; ++i) {
        const auto [after, error] = std::from_chars(next, end, parts[i]);
        const bool last = i == 2;
        if (error != std::errc() ||
            (last ? after != end || after - next != 4 : after == end || *after != '/' || after - next > 2)) {
            return std::nullopt;
        }
        next = after + 1;
    }
    return Iso(static_cast<int>(parts[2]), parts[1], parts[0]);
}

std::optional<std::string> SerialDate(double serial) {
    constexpr double kFirst = 61;     // before it spreadsheets count a day that never was
    constexpr double kLast = 2958465; // 9999-12-31
    if (!(serial >= kFirst && serial <= kLast)) {
        return std::nullopt;
    }
    const std::chrono::sys_days zero = std::chrono::year(1899) / std::chrono::December / 30;
    return FormatIsoDate(TDate(zero + std::chrono::days(static_cast<int>(serial))));
}

} // namespace

std::string_view TrimBlanks(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r\n";
    constexpr std::string_view kNoBreak = "\xC2\xA0";
    for (;;) {
        if (!text.empty() && kBlanks.find(text.front()) != std::string_view::npos) {
            text.remove_prefix(1);
        } else if (text.starts_with(kNoBreak)) {
            text.remove_prefix(kNoBreak.size());
        } else if (!text.empty() && kBlanks.find(text.back()) != std::string_view::npos) {
            text.remove_suffix(1);
        } else if (text.ends_with(kNoBreak)) {
            text.remove_suffix(kNoBreak.size());
        } else {
            return text;
        }
    }
}

std::string TableInTitle(std::string_view title) {
    const std::string plain = PlainText(title);
    for (const std::string_view word : {"tuss", "tabela", "terminologia"}) {
        for (std::size_t at = plain.find(word); at != std::string::npos; at = plain.find(word, at + 1)) {
            std::size_t number = at + word.size();
            number += number < plain.size() && plain[number] == ' ' ? 1 : 0;
            if (std::string table = TableAt(plain, number); !table.empty()) {
                return table;
            }
        }
    }
    return {};
}

std::string TableInSheetName(std::string_view name) {
    const std::string fromTitle = TableInTitle(name);
    return fromTitle.empty() ? TableAt(PlainText(name), 0) : fromTitle;
}

std::string TableInCell(const TCell& cell) {
    if (const auto number = WholeNumber(cell.Text)) {
        constexpr std::uint64_t kLastTable = 99;
        return *number <= kLastTable ? WithLeadingZeros(std::to_string(*number), 2) : std::string();
    }
    return TableInSheetName(cell.Text);
}

bool IsNone(const TCell& cell) {
    return cell.Text.empty() || cell.Text == "-";
}

std::optional<std::string> CodeInCell(const TCell& cell, std::size_t digits) {
    if (cell.IsInvalid) {
        return std::nullopt;
    }
    if (cell.IsNumber || (!AllDigits(cell.Text) && cell.Text.find_first_of("eE") != std::string::npos)) {
        if (const auto number = WholeNumber(cell.Text)) {
            return WithLeadingZeros(std::to_string(*number), digits);
        }
    }
    constexpr std::size_t kMaxLength = 15;
    const bool isCode =
        cell.Text.size() <= kMaxLength && cell.Text.find_first_of(kDigits) != std::string::npos &&
        cell.Text.find_first_not_of("0123456789"
                                    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz.-") ==
            std::string::npos;
    return isCode ? std::optional(cell.Text) : std::nullopt;
}

std::optional<std::string> DateInCell(const TCell& cell) {
    if (IsNone(cell)) {
        return std::string();
    }
    if (cell.IsInvalid) {
        return std::nullopt;
    }
    std::string_view text = cell.Text;
    constexpr std::size_t kIsoLength = 10;
    constexpr std::size_t kSerialDigits = 5;
    if (cell.IsNumber || (text.size() == kSerialDigits && AllDigits(text))) {
        double serial = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), serial);
        return error == std::errc() && end == text.data() + text.size() ? SerialDate(serial) : std::nullopt;
    }
    // A time of the day may follow.
    const std::size_t time = text.find_first_of(" T");
    if (time != std::string_view::npos &&
        text.substr(time + 1).find_first_not_of("0123456789:.Z") == std::string_view::npos) {
        text = text.substr(0, time);
    }
    if (text.size() == kIsoLength) {
        if (const auto date = ParseIsoDate(text)) {
            return Iso(static_cast<int>(date->year()), static_cast<unsigned>(date->month()),
                       static_cast<unsigned>(date->day()));
        }
    }
    return BrazilianDate(text);
}

} // namespace conferix
