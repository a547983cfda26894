// Rows of cells, whatever the format of the file that holds them.
#pragma once

#include "data/import/byte_source.h"
#include "data/import/zip_archive.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace conferix {

/// A cell: its text in UTF-8, blanks at both ends left out. A number is as the file writes it
/// ("7.0965676E7").
struct TCell {
    std::string Text;
    bool IsNumber = false;
    bool IsInvalid = false; ///< an error or a truth value of a spreadsheet: neither code, date nor text
};

/// A row by column (0-based, gaps are empty cells), with the number under which the user finds it.
struct TRow {
    std::uint64_t Number = 0;
    std::vector<TCell> Cells;
    std::string Defect; ///< why the file does not tell the Cells; empty where it does
};

/// Takes a row; false when it wants no more of this sheet.
using TRowHandler = std::function<bool(const TRow&)>;
/// Whether a row names columns that are known; tells how the cells of a text are divided.
using TIsHeader = std::function<bool(const TRow&)>;

/// Text with cells divided by ";", tab, "," or "|", in UTF-8 or Windows-1252 (found out cell by cell) or
/// UTF-16. The divider is that with which one of the first lines is a header; without one, no row is
/// handed over. Raises EInvalidPublication.
void ReadTextRows(IByteSource& source, const std::filesystem::path& name, const TIsHeader& isHeader,
                  const TRowHandler& onRow);

/// The objects of JSON arrays, their inner objects taken flat: where an inner one has the name of a value of
/// the object itself, the object's own stays. A row of the names comes first, and again
/// when an object brings a new name. Raises EInvalidPublication.
void ReadJsonRows(IByteSource& source, const std::filesystem::path& name, const TRowHandler& onRow);

/// A sheet of a workbook.
struct TSheet {
    std::string Name;
    std::uint64_t Entry = 0; ///< of the archive
    std::uint64_t Bytes = 0; ///< unpacked
};

/// An XLSX workbook: the sheets are read one at a time, in constant memory but for the shared texts.
class TWorkbook {
  public:
    /// Reads the list of sheets and the shared texts. Raises EInvalidPublication.
    explicit TWorkbook(TZipArchive& archive);

    const std::vector<TSheet>& Sheets() const { return sheets_; }
    /// Hands over the rows that have a cell. `onBytes` is told how much of the sheet is read. Dates are
    /// numbers that count days from 1899-12-30.
    void ReadRows(const TSheet& sheet, const TRowHandler& onRow,
                  const std::function<void(std::uint64_t)>& onBytes) const;

    /// Whether an archive is a workbook.
    static bool IsWorkbook(const TZipArchive& archive);

  private:
    TZipArchive& archive_;
    std::vector<TSheet> sheets_;
    std::vector<std::string> blocks_; ///< shared texts one after another
    struct TPlace {
        std::uint32_t Block;
        std::uint32_t Offset;
        std::uint32_t Length;
    };
    std::vector<TPlace> shared_;

    void ReadSheetList();
    void ReadSharedTexts();
    void AddSharedText(std::string_view text);
    std::string_view SharedText(std::string_view index) const;
};

} // namespace conferix
