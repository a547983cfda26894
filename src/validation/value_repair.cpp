#include "validation/value_repair.h"

#include "model/unidade_federativa.h"
#include "xml/schema/compiled_schema.h"
#include "xml/xml_node.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <set>
#include <vector>

namespace conferix {

namespace {

using TReading = std::optional<std::string>;

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

bool AllDigits(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), IsDigit);
}

constexpr std::string_view kNoBreakSpace = "\xC2\xA0";

/// The text without white space and no-break spaces at its ends.
std::string_view TrimBlanks(std::string_view text) {
    for (std::size_t before = 0; before != text.size();) {
        before = text.size();
        text = TrimXmlSpace(text);
        if (text.starts_with(kNoBreakSpace))
            text.remove_prefix(kNoBreakSpace.size());
        if (text.ends_with(kNoBreakSpace))
            text.remove_suffix(kNoBreakSpace.size());
    }
    return text;
}

/// The text with a space for each blank of another kind.
std::string WithPlainBlanks(std::string_view text) {
    std::string plain;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const bool noBreak = text.substr(at).starts_with(kNoBreakSpace);
        plain += noBreak || IsXmlSpace(text[at]) ? ' ' : text[at];
        at += noBreak ? kNoBreakSpace.size() - 1 : 0;
    }
    return plain;
}

/// True for a text of the shape in which 9 stands for a digit, A for a digit or an upper-case letter.
bool HasShape(std::string_view text, std::string_view shape) {
    return std::equal(text.begin(), text.end(), shape.begin(), shape.end(), [](char c, char wanted) {
        const bool alphanumeric = IsDigit(c) || (c >= 'A' && c <= 'Z');
        return wanted == '9' ? IsDigit(c) : wanted == 'A' ? alphanumeric : c == wanted;
    });
}

// ---- numbers

std::vector<std::string_view> Split(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    for (std::size_t end = 0; end != std::string_view::npos; text.remove_prefix(end + 1)) {
        end = text.find(separator);
        parts.push_back(text.substr(0, end));
        if (end == std::string_view::npos)
            break;
    }
    return parts;
}

/// The digits of groups of thousands: "1.234.567" is 1234567.
TReading WithoutThousands(std::string_view text, char separator) {
    const std::vector<std::string_view> groups = Split(text, separator);
    std::string digits;
    for (std::size_t i = 0; i < groups.size(); ++i) {
        if (!AllDigits(groups[i]))
            return std::nullopt;
        const bool right = i == 0 ? groups[0].size() <= 3 && groups[0].front() != '0' : groups[i].size() == 3;
        if (!right)
            return std::nullopt;
        digits += groups[i];
    }
    return digits;
}

/// A number of digits and at most one decimal point. Nothing where a separator could be one of thousands as
/// well as the decimal one: "1,234", "1.500".
TReading NumberOf(std::string_view text) {
    const std::size_t points = static_cast<std::size_t>(std::count(text.begin(), text.end(), '.'));
    const std::size_t commas = static_cast<std::size_t>(std::count(text.begin(), text.end(), ','));
    if (points + commas == 0)
        return AllDigits(text) ? TReading(text) : std::nullopt;
    if (points + commas > 1 && (points == 0 || commas == 0))
        return WithoutThousands(text, points == 0 ? ',' : '.');
    const std::size_t decimal = text.find_last_of(".,");
    const std::string_view fraction = text.substr(decimal + 1);
    std::string_view whole = text.substr(0, decimal);
    if (!AllDigits(fraction) || whole.empty())
        return std::nullopt;
    TReading digits;
    if (points + commas == 1) {
        const bool thousands = fraction.size() == 3 && whole.size() <= 3 && whole.front() != '0';
        if (AllDigits(whole) && !thousands)
            digits = std::string(whole);
    } else {
        const char other = text[decimal] == ',' ? '.' : ',';
        if (whole.find(text[decimal]) == std::string_view::npos)
            digits = WithoutThousands(whole, other);
    }
    if (!digits)
        return std::nullopt;
    return *digits + '.' + std::string(fraction);
}

void AddNumber(const TSchemaSimpleType& type, std::string_view text, std::set<std::string>& readings) {
    const bool hasSign = text.starts_with('-') || text.starts_with('+');
    TReading number =
        text.size() > (hasSign ? 1U : 0U) ? NumberOf(text.substr(hasSign ? 1 : 0)) : std::nullopt;
    if (!number)
        return;
    if (hasSign)
        number->insert(0, 1, text.front());
    // Zeros at the end of the decimals go as far as the type demands it.
    while (type.Check(*number) && number->find('.') != std::string::npos &&
           (number->back() == '0' || number->back() == '.'))
        number->pop_back();
    readings.insert(*number);
}

// ---- days and times

TReading IsoDate(std::string_view text) {
    if (HasShape(text, "9999-99-99"))
        return std::string(text);
    // Another century is a slip.
    if (!HasShape(text, "99/99/9999") || (text.substr(6, 2) != "19" && text.substr(6, 2) != "20"))
        return std::nullopt;
    return std::string(text.substr(6)) + '-' + std::string(text.substr(3, 2)) + '-' +
           std::string(text.substr(0, 2));
}

TReading IsoTime(std::string_view text) {
    if (HasShape(text, "99:99:99"))
        return std::string(text);
    return HasShape(text, "99:99") ? TReading(std::string(text) + ":00") : std::nullopt;
}

void AddDateTime(std::string_view text, std::set<std::string>& readings) {
    constexpr std::size_t kDateLength = 10;
    if (text.size() <= kDateLength || (text[kDateLength] != ' ' && text[kDateLength] != 'T'))
        return;
    const TReading date = IsoDate(text.substr(0, kDateLength));
    const TReading time = IsoTime(text.substr(kDateLength + 1));
    if (date && time)
        readings.insert(*date + 'T' + *time);
}

// ---- documents and codes

bool IsPunctuation(char c) {
    return c == '.' || c == '-' || c == '/';
}

/// True for two long numbers with a blank or a sign between them, which may be one each.
bool IsSeveralNumbers(std::string_view text) {
    constexpr std::ptrdiff_t kLong = 6;
    std::string groups(text);
    std::ranges::replace(groups, '/', ' ');
    std::ranges::replace(groups, '-', ' ');
    return std::ranges::count_if(Split(groups, ' '), [](std::string_view group) {
               return std::ranges::count_if(group, IsDigit) >= kLong;
           }) > 1;
}

/// True for three short groups, which may be a day.
bool MayBeDay(const std::vector<std::string_view>& groups) {
    const auto isShort = [](std::string_view group) { return group.size() <= 2; };
    return groups.size() == 3 && std::ranges::count_if(groups, isShort) >= 2 &&
           std::ranges::all_of(groups,
                               [&](std::string_view group) { return isShort(group) || group.size() == 4; });
}

/// True for a long number in groups as cards have it: of the same size of three to five digits, of which the
/// first and the last may have fewer, where there are so many that they are no number of a telephone.
bool IsInEqualGroups(const std::vector<std::string_view>& groups, std::size_t digits) {
    constexpr std::size_t kShortest = 8;
    constexpr std::size_t kOfCard = 12;
    const auto size = [](std::string_view group) { return group.size(); };
    const std::size_t most = std::ranges::max(groups, {}, size).size();
    return digits >= kShortest && most >= 3 && most <= 5 &&
           std::ranges::min(groups, {}, size).size() >= (digits >= kOfCard ? 2 : 3) &&
           std::all_of(groups.begin() + 1, groups.end() - 1,
                       [&](std::string_view group) { return group.size() == most; });
}

/// True for digits in groups as people write a code: the check digits behind a hyphen, a register of the
/// regulator, long numbers in groups; not what may be a day, an amount or several numbers. `text`: with plain
/// blanks.
bool IsCodeNotation(const std::string& text) {
    if (text.find('/') != std::string::npos || IsSeveralNumbers(text))
        return false;
    for (const char* shape : {"99.999-9", "999.999-9", "9.999.999", "999 999", "999 9999", "9999 99",
                              "999 999 999 99", "999 999 999-99", "99 999 999 9999 99"})
        if (HasShape(text, shape))
            return true;
    std::string separated(text);
    std::ranges::replace_if(separated, IsPunctuation, ' ');
    std::vector<std::string_view> groups = Split(separated, ' ');
    std::erase_if(groups, [](std::string_view group) { return group.empty(); });
    const auto digits = static_cast<std::size_t>(std::ranges::count_if(text, IsDigit));
    constexpr std::size_t kLong = 8;
    if (groups.size() < 2 || MayBeDay(groups))
        return false;
    if (text.find(' ') != std::string::npos)
        return IsInEqualGroups(groups, digits);
    if (groups.size() == 2 && text.find('-') != std::string::npos)
        return groups[0].size() >= 3 && (groups[1].size() == 1 || (digits >= 6 && groups[1].size() == 2) ||
                                         (digits >= kLong && groups[1].size() <= 4));
    if (groups.size() == 2)
        return false; // an amount
    return digits >= kLong && groups.size() <= digits / 2 + 1;
}

/// The digits of a document or code written with punctuation or in groups; nothing for what is none.
TReading WithoutPunctuation(std::string_view raw) {
    const std::string text = WithPlainBlanks(raw);
    std::string bare;
    std::copy_if(text.begin(), text.end(), std::back_inserter(bare),
                 [](char c) { return !IsPunctuation(c) && c != ' '; });
    if (bare.size() == text.size())
        return std::nullopt;
    if (HasShape(text, "AA.AAA.AAA/AAAA-99") || HasShape(text, "AAAAAAAA/AAAA-99"))
        return bare;
    if (!AllDigits(bare) || !IsDigit(text.front()) || !IsDigit(text.back()) || !IsCodeNotation(text))
        return std::nullopt;
    return bare;
}

std::string InCase(std::string_view text, int (*convert)(int)) {
    std::string converted(text);
    std::ranges::transform(converted, converted.begin(), [convert](char c) {
        return static_cast<unsigned char>(c) < 0x80 ? static_cast<char>(convert(c)) : c;
    });
    return converted;
}

void AddCodes(const TSchemaSimpleType& type, std::string_view text, std::set<std::string>& readings) {
    const auto& codes = type.CodeKeys;
    readings.insert(InCase(text, std::toupper));
    readings.insert(InCase(text, std::tolower));
    if (HasShape(text, "9999.99")) // as occupations are printed
        readings.insert(std::string(text.substr(0, 4)) + std::string(text.substr(5)));
    const auto addPadded = [&](std::string code) {
        readings.insert(code);
        const std::size_t longest = code.size() + 3;
        while (AllDigits(code) && code.size() < longest)
            readings.insert(code.insert(0, 1, '0'));
    };
    addPadded(std::string(text));
    if (const TReading bare = WithoutPunctuation(text))
        addPadded(*bare);
    if (const std::size_t zeros = text.find_first_not_of('0');
        AllDigits(text) && zeros != 0 && zeros != std::string_view::npos)
        readings.insert(std::string(text.substr(zeros)));
    // Other lists have codes that look like those of states, but none has all of them.
    const std::string_view other = OtherCodeOfUf(text);
    const bool letters = !other.empty() && !IsDigit(other.front());
    if (!other.empty() && std::ranges::all_of(kUnidadesFederativas, [&](const TUnidadeFederativa& uf) {
            return codes.find(letters ? uf.Sigla : uf.Ibge) != codes.end();
        }))
        readings.insert(std::string(other));
}

/// Year and month, AAAAMM, of a month written in another way; nothing for what is none.
TReading YearAndMonth(std::string_view text) {
    for (const char* shape : {"9999-99", "9999/99", "9999.99", "9999 99"})
        if (HasShape(text, shape))
            return std::string(text.substr(0, 4)) + std::string(text.substr(5));
    for (const char* shape : {"99/9999", "99-9999"})
        if (HasShape(text, shape))
            return std::string(text.substr(3)) + std::string(text.substr(0, 2));
    return std::nullopt;
}

void AddTexts(const TSchemaSimpleType& type, std::string_view text, std::set<std::string>& readings) {
    constexpr std::size_t kCpf = 11;
    constexpr std::size_t kCnpj = 14;
    constexpr std::string_view kOfMonths = "[0-9]{4}[0-9]{2}";
    const TReading month = YearAndMonth(text);
    const bool isMonth = month && (month->starts_with("19") || month->starts_with("20"));
    if (isMonth && std::ranges::count(type.Facets.Patterns, kOfMonths, &TSchemaPattern::Text) > 0)
        readings.insert(*month);
    else if (const TReading bare = WithoutPunctuation(text); bare && !isMonth)
        readings.insert(*bare);
    // A number of fixed length that lost its zero; of a CPF or CNPJ any digit may be the one that is missing.
    const std::string padded = '0' + std::string(text);
    if (AllDigits(text) && padded.size() != kCpf && padded.size() != kCnpj && type.Check('0' + padded))
        readings.insert(padded);
}

} // namespace

std::optional<std::string> DigitsOfDocument(std::string_view text) {
    text = TrimBlanks(text);
    std::string digits;
    std::ranges::copy_if(text, std::back_inserter(digits),
                         [](char c) { return !IsPunctuation(c) && c != ' '; });
    return AllDigits(digits) && digits.size() != text.size() ? std::optional(std::move(digits))
                                                             : std::nullopt;
}

std::optional<std::string> RepairedValue(const TSchemaSimpleType& type, std::string_view raw) {
    const std::string_view text = TrimBlanks(raw);
    if (text.empty())
        return std::nullopt;
    if (text != raw && !type.Check(text))
        return std::string(text);
    std::set<std::string> readings;
    switch (type.Kind) {
    case TSchemaValueKind::Decimal:
    case TSchemaValueKind::Integer:
        AddNumber(type, text, readings);
        break;
    case TSchemaValueKind::Date:
        if (const TReading date = IsoDate(text))
            readings.insert(*date);
        break;
    case TSchemaValueKind::Time:
        if (const TReading time = IsoTime(text))
            readings.insert(*time);
        break;
    case TSchemaValueKind::DateTime:
        AddDateTime(text, readings);
        break;
    case TSchemaValueKind::String:
        if (type.CodeKeys.empty())
            AddTexts(type, text, readings);
        else
            AddCodes(type, text, readings);
        break;
    default:
        break;
    }
    std::erase_if(readings,
                  [&](const std::string& reading) { return reading == raw || type.Check(reading); });
    return readings.size() == 1 ? std::optional(*readings.begin()) : std::nullopt;
}

} // namespace conferix
