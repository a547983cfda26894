#pragma once

#include <string>
#include <string_view>

namespace conferix {

/// A text as a cell of a table for spreadsheets, in quotation marks. One that a spreadsheet would take for a
/// formula, a date or a number, and by that change, stands behind an apostrophe.
std::string CsvCell(std::string_view text);
/// Appends it.
void AppendCsvCell(std::string& to, std::string_view text);

} // namespace conferix
