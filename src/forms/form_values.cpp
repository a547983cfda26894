#include "forms/form_values.h"

#include "xml/xml_node.h"

#include <algorithm>

namespace conferix {

namespace {

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

/// Whether a text has the form of a pattern, in which 0 stands for a digit; more may follow.
bool HasForm(std::string_view text, std::string_view pattern) {
    return text.size() >= pattern.size() &&
           std::equal(pattern.begin(), pattern.end(), text.begin(),
                      [](char wanted, char c) { return wanted == '0' ? IsDigit(c) : wanted == c; });
}

std::string Date(std::string_view value) {
    if (!HasForm(value, "0000-00-00"))
        return std::string(value);
    std::string text(value.substr(8, 2));
    text += '/';
    text += value.substr(5, 2);
    text += '/';
    text += value.substr(0, 4);
    return text;
}

/// Hours and minutes.
std::string Time(std::string_view value) {
    if (!HasForm(value, "00:00"))
        return std::string(value);
    return std::string(value.substr(0, 5));
}

/// A decimal with a comma; no digit that is not 0 is lost. `thousands`: in groups of three digits.
std::string Decimal(std::string_view value, std::size_t decimals, bool thousands) {
    std::string_view digits = value;
    const bool negative = digits.starts_with('-');
    if (negative || digits.starts_with('+'))
        digits.remove_prefix(1);
    const std::size_t point = std::min(digits.find('.'), digits.size());
    std::string_view whole = digits.substr(0, point);
    std::string_view rest = digits.substr(std::min(point + 1, digits.size()));
    if ((whole.empty() && rest.empty()) || !std::ranges::all_of(whole, IsDigit) ||
        !std::ranges::all_of(rest, IsDigit))
        return std::string(value);
    while (whole.size() > 1 && whole.front() == '0')
        whole.remove_prefix(1);
    while (rest.size() > decimals && rest.back() == '0')
        rest.remove_suffix(1);
    std::string text = negative ? "-" : "";
    for (std::size_t i = 0; i < whole.size(); ++i) {
        if (thousands && i > 0 && (whole.size() - i) % 3 == 0)
            text += '.';
        text += whole[i];
    }
    if (whole.empty())
        text += '0';
    if (decimals == 0 && rest.empty())
        return text;
    text += ',';
    text += rest;
    if (rest.size() < decimals)
        text.append(decimals - rest.size(), '0');
    return text;
}

} // namespace

std::string FormatFormValue(TFormFormat format, std::string_view value) {
    value = TrimXmlSpace(value);
    switch (format) {
    case TFormFormat::Date:
        return Date(value);
    case TFormFormat::Time:
        return Time(value);
    case TFormFormat::DateTime:
        if (HasForm(value, "0000-00-00T00:00"))
            return Date(value.substr(0, 10)) + ' ' + Time(value.substr(11));
        return Date(value);
    case TFormFormat::Money:
        return Decimal(value, 2, true);
    case TFormFormat::Factor:
        return Decimal(value, 2, false);
    case TFormFormat::Integer:
    case TFormFormat::Quantity:
        return Decimal(value, 0, false);
    case TFormFormat::YesNo:
        if (value == "true" || value == "1")
            return "S";
        if (value == "false" || value == "0")
            return "N";
        break;
    case TFormFormat::Text:
    case TFormFormat::Code:
    case TFormFormat::Line:
    case TFormFormat::Signature:
        break;
    }
    return std::string(value);
}

} // namespace conferix
