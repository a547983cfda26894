#include "listing/listing_table.h"

#include "listing/listing_writer.h"
#include "report/console.h"

#include <fmt/format.h>

#include <string_view>
#include <utility>

namespace conferix {

namespace {

/// A cell that stays one cell of one row, and no formula, wherever it is pasted.
std::string PastedCell(const std::string& text, TCellKind kind) {
    std::string cell = Visible(OneLine(text));
    if (!IsNumeric(kind) && !cell.empty() &&
        std::string_view("=+-@").find(cell.front()) != std::string_view::npos)
        cell.insert(cell.begin(), '\'');
    return cell;
}

} // namespace

TListingTable::TListingTable(TFileListing listing)
    : listing_(std::move(listing)), columns_(ShownColumns(listing_)) {
    for (std::size_t group = 0; group < listing_.Groups.size(); ++group) {
        const TListingGroup& rows = listing_.Groups[group];
        if (!rows.Title.empty())
            rows_.push_back({TRowKind::Title, group, 0});
        for (std::size_t row = 0; row < rows.Rows.size(); ++row)
            rows_.push_back({TRowKind::Row, group, row});
        if (rows.Sum)
            rows_.push_back({TRowKind::Sum, group, 0});
    }
}

const TListingRow* TListingTable::RowAt(const TPlace& place) const {
    const TListingGroup& group = listing_.Groups[place.Group];
    switch (place.Kind) {
    case TRowKind::Row:
        return &group.Rows[place.Row];
    case TRowKind::Sum:
        return &*group.Sum;
    case TRowKind::Title:
        break;
    }
    return nullptr;
}

bool TListingTable::Differs(std::size_t row) const {
    const TListingRow* const cells = RowAt(rows_[row]);
    return cells != nullptr && cells->Differs;
}

std::string TListingTable::Text(std::size_t row, std::size_t column) const {
    const TListingRow* const cells = RowAt(rows_[row]);
    if (cells == nullptr)
        return column == 0 ? listing_.Groups[rows_[row].Group].Title : std::string();
    return CellText(cells->Cells[columns_[column]], Column(column).Kind);
}

std::vector<std::string> TListingTable::HeadLines() const {
    std::vector<std::string> lines;
    for (const TListingLine& line : listing_.Head)
        if (!line.Value.empty())
            lines.push_back(fmt::format("{}: {}", line.Label, line.Value));
    return lines;
}

std::vector<std::string> TListingTable::FootLines() const {
    std::vector<std::string> lines;
    for (const TListingTotal& total : listing_.Totals)
        if (total.Value)
            lines.push_back(fmt::format("{}: {}{}", total.Label, NumberText(*total.Value, total.Kind),
                                        total.Differs ? " *" : ""));
    if (listing_.HasDifferences())
        lines.emplace_back("* Um total não é a soma dos itens.");
    lines.insert(lines.end(), listing_.Notes.begin(), listing_.Notes.end());
    return lines;
}

std::string TListingTable::CopyText(std::span<const std::size_t> rows) const {
    std::string text;
    for (std::size_t column = 0; column < ColumnCount(); ++column)
        text.append(column == 0 ? "" : "\t").append(Column(column).Title);
    text += '\n';
    for (const std::size_t row : rows) {
        for (std::size_t column = 0; column < ColumnCount(); ++column)
            text.append(column == 0 ? "" : "\t").append(PastedCell(Text(row, column), Column(column).Kind));
        text += '\n';
    }
    return text;
}

} // namespace conferix
