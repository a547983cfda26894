#include "report/csv_cell.h"

#include "report/console.h"

#include <algorithm>

namespace conferix {

namespace {

/// Spreadsheets keep so many digits of a number.
constexpr std::size_t kKeptDigits = 15;

/// True for a text that a spreadsheet would not show as it is.
bool IsChangedBySpreadsheets(std::string_view text) {
    if (text.empty())
        return false;
    if (std::string_view("=+-@'").find(text.front()) != std::string_view::npos)
        return true;
    // Figures with signs between may be an amount, a date or a time, and "1E5" is a number.
    const auto ofNumber = [](char c) {
        return (c >= '0' && c <= '9') || std::string_view(".,/:-eE ").find(c) != std::string_view::npos;
    };
    if (!std::ranges::all_of(text, ofNumber) || text.find_first_of("0123456789") == std::string_view::npos)
        return false;
    const bool digits = text.find_first_not_of("0123456789") == std::string_view::npos;
    return !digits || text.size() > kKeptDigits || (text.front() == '0' && text.size() > 1);
}

} // namespace

void AppendCsvCell(std::string& to, std::string_view text) {
    const auto isPlain = [](char c) { return c >= ' ' && c <= '~' && c != '"'; };
    if (std::ranges::all_of(text, isPlain)) { // as nearly all texts are
        to.append(IsChangedBySpreadsheets(text) ? "\"'" : "\"").append(text).append(1, '"');
        return;
    }
    const std::string visible = Visible(OneLine(text));
    to += IsChangedBySpreadsheets(visible) ? "\"'" : "\"";
    for (const char c : visible)
        to.append(c == '"' ? 2 : 1, c);
    to += '"';
}

std::string CsvCell(std::string_view text) {
    std::string cell;
    AppendCsvCell(cell, text);
    return cell;
}

} // namespace conferix
