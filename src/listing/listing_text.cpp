#include "listing/listing_writer.h"
#include "platform/utf8.h"
#include "report/console.h"

#include <fmt/format.h>

#include <algorithm>
#include <ostream>

namespace conferix {

namespace {

constexpr std::size_t kWidestText = 40; ///< characters of a column; what is longer is cut
constexpr std::string_view kByHand = "______________________";

/// A text from a file in at most so many characters.
std::string Short(std::string_view text) {
    std::string visible = Visible(text);
    if (CountCharacters(visible) <= kWidestText)
        return visible;
    return visible.substr(0, BytesOfCharacters(visible, kWidestText - 1)) + "…";
}

/// The table of a file: widths hold for all groups, so that columns stand under each other.
class TTextTable {
  public:
    TTextTable(const TFileListing& file, const TPalette& palette)
        : file_(file), palette_(palette), columns_(ShownColumns(file)) {
        for (const std::size_t column : columns_)
            widths_.push_back(CountCharacters(file.Columns[column].Title));
        for (const TListingGroup& group : file.Groups) {
            for (const TListingRow& row : group.Rows)
                SetTexts(row);
            if (group.Sum)
                SetTexts(*group.Sum);
        }
    }

    void Write(std::ostream& out) const {
        const TText* next = texts_.data();
        for (const TListingGroup& group : file_.Groups) {
            if (!group.Title.empty())
                out << '\n' << palette_.Bold(Visible(group.Title)) << '\n';
            if (group.Rows.empty())
                continue;
            std::string line;
            for (std::size_t i = 0; i < columns_.size(); ++i)
                Put(line, i,
                    {std::string(file_.Columns[columns_[i]].Title),
                     CountCharacters(file_.Columns[columns_[i]].Title)});
            out << palette_.Bold(Trimmed(line)) << '\n';
            for (const TListingRow& row : group.Rows)
                out << Line(row, next) << '\n';
            if (group.Sum)
                out << palette_.Bold(Line(*group.Sum, next)) << '\n';
        }
    }

  private:
    struct TText {
        std::string Text;
        std::size_t Characters;
    };

    void SetTexts(const TListingRow& row) {
        for (std::size_t i = 0; i < columns_.size(); ++i) {
            std::string text = Short(CellText(row.Cells[columns_[i]], file_.Columns[columns_[i]].Kind));
            const std::size_t characters = CountCharacters(text);
            widths_[i] = std::max(widths_[i], characters);
            texts_.push_back({std::move(text), characters});
        }
    }
    /// Adds a cell to a line, numbers to the right.
    void Put(std::string& line, std::size_t i, const TText& cell) const {
        const bool number = IsNumeric(file_.Columns[columns_[i]].Kind);
        const std::size_t blanks = widths_[i] - cell.Characters;
        line.append(line.empty() ? "" : "  ").append(number ? blanks : 0, ' ');
        line.append(cell.Text).append(number ? 0 : blanks, ' ');
    }
    static std::string Trimmed(std::string line) {
        line.erase(line.find_last_not_of(' ') + 1);
        return line;
    }
    /// `next`: the texts of the row; those of the next one afterwards.
    std::string Line(const TListingRow& row, const TText*& next) const {
        std::string line;
        for (std::size_t i = 0; i < columns_.size(); ++i)
            Put(line, i, *next++);
        return row.Differs ? palette_.Severity(TMessageType::mtError, line + " *") : Trimmed(line);
    }

    const TFileListing& file_;
    const TPalette& palette_;
    std::vector<std::size_t> columns_;
    std::vector<std::size_t> widths_;
    std::vector<TText> texts_; ///< of the shown cells, row by row
};

/// Labels and values, one a line.
void WriteTotals(std::ostream& out, const std::vector<TListingTotal>& totals, const TPalette& palette) {
    std::size_t widest = 0;
    for (const TListingTotal& total : totals)
        widest = std::max(widest, CountCharacters(total.Label));
    for (const TListingTotal& total : totals) {
        if (!total.Value)
            continue;
        const std::string value = CellText({.Number = total.Value}, total.Kind);
        out << total.Label << ": " << std::string(widest - CountCharacters(total.Label), ' ')
            << (total.Differs ? palette.Severity(TMessageType::mtError, value + " *") : value) << '\n';
    }
}

void WriteFile(std::ostream& out, const TFileListing& file, const TPalette& palette) {
    out << palette.Bold(file.Arquivo == "-" ? "entrada padrão" : Visible(file.Arquivo)) << '\n';
    std::size_t widest = 0;
    for (const TListingLine& line : file.Head)
        widest = std::max(widest, CountCharacters(line.Label));
    for (const TListingLine& line : file.Head)
        if (line.IsShown())
            out << line.Label << ": " << std::string(widest - CountCharacters(line.Label), ' ')
                << (line.ByHand ? std::string(kByHand) : Visible(line.Value)) << '\n';
    if (!file.Groups.empty() && file.Groups.front().Title.empty())
        out << '\n';
    TTextTable(file, palette).Write(out);
    out << '\n';
    WriteTotals(out, file.Totals, palette);
    if (file.HasDifferences())
        out << "* Um total não é a soma dos itens.\n";
    for (const std::string& note : file.Notes)
        out << note << '\n';
    if (file.Signatures)
        out << fmt::format("\n\nEntregue por: {0}{0}  Data: ___/___/______\n\n\nRecebido por: {0}{0}  Data: "
                           "___/___/______\n",
                           kByHand);
}

} // namespace

void WriteListingText(std::ostream& out, const TListing& listing, bool colours) {
    const TPalette palette(colours);
    bool first = true;
    for (const TFileListing& file : listing.Files) {
        if (!file.Failure.empty())
            continue; // told on standard error
        out << (first ? "" : "\n") << palette.Bold(ListingTitle(listing.Kind)) << ": ";
        WriteFile(out, file, palette);
        first = false;
    }
    if (listing.Files.size() < 2 || first)
        return;
    const std::vector<TListingSums> all = listing.Sums();
    for (const TListingSums& sums : all) {
        out << '\n' << palette.Bold(SumsTitle(sums, all.size() == 1)) << '\n';
        WriteTotals(out, sums.Totals, palette);
    }
    if (listing.Failures() != 0)
        out << OutOfTotalsText(listing.Failures()) << '\n';
}

} // namespace conferix
