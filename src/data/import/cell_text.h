// What the texts of cells, labels and file names say.
#pragma once

#include "data/import/row_reader.h"

#include <optional>
#include <string>
#include <string_view>

namespace conferix {

/// A text without blanks (also no-break ones) at both ends.
std::string_view TrimBlanks(std::string_view text);

/// The TUSS table that a title or a file name speaks of ("Tabela_22_...", "TUSS 64 - ..."); "" for none.
std::string TableInTitle(std::string_view title);
/// The TUSS table that a sheet's name speaks of, which may also be the number alone ("63 - Grupos").
std::string TableInSheetName(std::string_view name);
/// The TUSS table in a cell of a column of tables: "22", "tuss-22", the number 0; "" for none.
std::string TableInCell(const TCell& cell);

/// True for a cell that says that there is no value: empty, or "-".
bool IsNone(const TCell& cell);

/// A code as text: a number, also as 7.0965676E7, gets its leading zeros up to `digits`. Nothing for a
/// cell that holds no code.
std::optional<std::string> CodeInCell(const TCell& cell, std::size_t digits);

/// A date as AAAA-MM-DD, from that form, dd/mm/aaaa or a count of days since 1899-12-30; empty for a cell
/// without value, nothing for one that cannot be read.
std::optional<std::string> DateInCell(const TCell& cell);

} // namespace conferix
