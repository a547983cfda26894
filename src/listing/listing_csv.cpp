#include "listing/listing_writer.h"
#include "platform/format_settings.h"
#include "platform/iso_date.h"
#include "report/csv_cell.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <ostream>
#include <string>

namespace conferix {

namespace {

void AppendNumber(std::string& to, double number, TCellKind kind) {
    const std::size_t from = to.size();
    AppendCellText(to, TListingCell(number), kind);
    to.erase(std::remove(to.begin() + static_cast<std::ptrdiff_t>(from), to.end(), '.'),
             to.end()); // between thousands
}

void AppendCell(std::string& to, const TListingCell& cell, TCellKind kind) {
    if (cell.IsEmpty())
        return;
    if (IsNumeric(kind))
        AppendNumber(to, *cell.Number(), kind);
    else if (kind == TCellKind::Date && ParseIsoDate(cell.Text()))
        AppendCellText(to, cell, kind);
    else
        AppendCsvCell(to, cell.Text());
}

/// Why the files of a listing are not one table.
std::string OfSeveralKindsText(const TListing& listing) {
    std::string kinds;
    for (const TListingSums& sums : listing.Sums())
        kinds.append(kinds.empty() ? "" : " e ").append(CountedFiles(sums));
    return kinds +
           " têm colunas diferentes e não cabem em um só CSV; liste-os em separado, ou em outro formato";
}

/// Writes the table: the columns of the listing behind those that tell rows apart.
class TCsvTable {
  public:
    TCsvTable(std::ostream& out, const TListing& listing, const TFileListing& model)
        : out_(out), columns_(model.Columns),
          head_(listing.Kind == TListingKind::Capa ? &model.Head : nullptr),
          grouped_(std::ranges::any_of(listing.Files, [](const TFileListing& file) {
              return std::ranges::any_of(file.Groups,
                                         [](const TListingGroup& group) { return !group.Title.empty(); });
          })) {}

    void WriteHead() const {
        out_ << "\xEF\xBB\xBF" << CsvCell("Arquivo") << ';' << CsvCell("Registro");
        if (head_ != nullptr)
            for (const TListingLine& line : *head_)
                out_ << ';' << CsvCell(line.Label);
        if (grouped_)
            out_ << ';' << CsvCell("Agrupamento");
        for (const TListingColumn& column : columns_)
            out_ << ';' << CsvCell(column.Title);
        out_ << ';' << CsvCell("Ressalvas") << "\r\n";
    }

    void WriteFile(const TFileListing& file) const {
        for (const TListingGroup& group : file.Groups) {
            WriteRows(Begin(file.Arquivo, "linha", &file, group.Title), group.Rows);
            if (group.Sum)
                WriteRows(Begin(file.Arquivo, "subtotal", &file, group.Title), std::span(&*group.Sum, 1));
        }
        WriteTotals(file.Arquivo, "total do arquivo", &file, file.Totals,
                    fmt::to_string(fmt::join(file.Notes, " ")));
    }

    /// The totals of which the table has a column. `notes`: what they leave out.
    void WriteTotals(std::string_view name, std::string_view what, const TFileListing* file,
                     const std::vector<TListingTotal>& totals, const std::string& notes) const {
        std::string line = Begin(name, what, file, {});
        for (const TListingColumn& column : columns_) {
            const auto total = std::ranges::find(totals, column.TotalKey(), &TListingTotal::Key);
            line += ';';
            if (total != totals.end() && total->Value)
                AppendNumber(line, *total->Value, total->Kind);
        }
        out_ << line << ';' << (notes.empty() ? notes : CsvCell(notes)) << "\r\n";
    }

  private:
    /// `begin`: of each line.
    void WriteRows(const std::string& begin, std::span<const TListingRow> rows) const {
        std::string line;
        for (const TListingRow& row : rows) {
            line = begin;
            for (std::size_t i = 0; i < columns_.size(); ++i) {
                line += ';';
                AppendCell(line, row.Cells[i], columns_[i].Kind);
            }
            line += ";\r\n";
            out_.write(line.data(), static_cast<std::streamsize>(line.size()));
        }
    }
    std::string Begin(std::string_view name, std::string_view what, const TFileListing* file,
                      std::string_view group) const {
        std::string line = CsvCell(name) + ';' + CsvCell(what);
        if (head_ != nullptr)
            for (std::size_t i = 0; i < head_->size(); ++i) {
                line += ';';
                if (file != nullptr && !file->Head[i].Value.empty())
                    AppendCsvCell(line, file->Head[i].Value);
            }
        if (grouped_) {
            line += ';';
            if (!group.empty())
                AppendCsvCell(line, group);
        }
        return line;
    }

    std::ostream& out_;
    std::span<const TListingColumn> columns_;
    const std::vector<TListingLine>* head_; ///< its values stand in columns, too; null where they do not
    bool grouped_;
};

} // namespace

void WriteListingCsv(std::ostream& out, const TListing& listing) {
    const TFileListing* model = nullptr;
    for (const TFileListing& file : listing.Files) {
        if (!file.Failure.empty())
            continue;
        if (model == nullptr)
            model = &file;
        else if (model->Columns.data() != file.Columns.data())
            throw ENotListed(OfSeveralKindsText(listing));
    }
    if (model == nullptr)
        return;
    const TCsvTable table(out, listing, *model);
    table.WriteHead();
    for (const TFileListing& file : listing.Files)
        if (file.Failure.empty())
            table.WriteFile(file);
    if (listing.Files.size() <= 1)
        return;
    const std::vector<std::string> notes = SumsNotes(listing);
    table.WriteTotals({}, "total", nullptr, listing.Sums().front().Totals,
                      fmt::to_string(fmt::join(notes, " ")));
}

} // namespace conferix
