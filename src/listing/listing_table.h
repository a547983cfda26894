// A listing as it is looked at and copied.
#pragma once

#include "listing/listing.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace conferix {

/// The listing of a file as one table: titles of groups, rows and sums, one below the other, in the columns
/// that have something in them. Rows and columns are 0-based.
class TListingTable {
  public:
    enum class TRowKind : std::uint8_t { Title, Row, Sum };

    TListingTable() = default;
    explicit TListingTable(TFileListing listing);

    const TFileListing& Listing() const { return listing_; }
    std::size_t RowCount() const { return rows_.size(); }
    std::size_t ColumnCount() const { return columns_.size(); }
    const TListingColumn& Column(std::size_t column) const { return listing_.Columns[columns_[column]]; }
    TRowKind KindOf(std::size_t row) const { return rows_[row].Kind; }
    /// Whether a total that the row declares is not the sum that it stands for.
    bool Differs(std::size_t row) const;
    /// As people in Brazil write it. A title stands in the first column.
    std::string Text(std::size_t row, std::size_t column) const;

    /// What stands above the rows, a line each: "Lote: 12".
    std::vector<std::string> HeadLines() const;
    /// What stands below them: "Valor informado: 1.234,56 *", notes, and what the star means.
    std::vector<std::string> FootLines() const;
    /// Rows below the titles of the columns, cells separated by tabs, a line each.
    std::string CopyText(std::span<const std::size_t> rows) const;

  private:
    struct TPlace {
        TRowKind Kind;
        std::size_t Group;
        std::size_t Row; ///< in the group
    };
    const TListingRow* RowAt(const TPlace& place) const;

    TFileListing listing_;
    std::vector<std::size_t> columns_;
    std::vector<TPlace> rows_;
};

} // namespace conferix
