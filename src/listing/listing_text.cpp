#include "listing/listing_writer.h"
#include "platform/utf8.h"
#include "report/console.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <ostream>

namespace conferix {

namespace {

constexpr std::size_t kWidestText = 40; ///< characters of a column; what is longer is cut
constexpr std::string_view kByHand = "______________________";

/// Appends a text from a file in at most so many characters, and answers how many.
std::size_t AppendShort(std::string& to, std::string_view text) {
    const bool plain = std::ranges::all_of(text, [](char c) { return c >= ' ' && c <= '~'; });
    if (plain && text.size() <= kWidestText) { // as nearly all texts are
        to += text;
        return text.size();
    }
    const std::string visible = Visible(text);
    const std::size_t characters = CountCharacters(visible);
    if (characters <= kWidestText) {
        to += visible;
        return characters;
    }
    to.append(visible, 0, BytesOfCharacters(visible, kWidestText - 1)).append("…");
    return kWidestText;
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
        TNext next;
        std::string line;
        for (const TListingGroup& group : file_.Groups) {
            if (!group.Title.empty())
                out << '\n' << palette_.Bold(Visible(group.Title)) << '\n';
            if (group.Rows.empty())
                continue;
            line.clear();
            for (std::size_t i = 0; i < columns_.size(); ++i) {
                const std::string_view title = file_.Columns[columns_[i]].Title;
                Put(line, i, title, CountCharacters(title));
            }
            Trim(line);
            out << palette_.Bold(line) << '\n';
            for (const TListingRow& row : group.Rows) {
                SetLine(line, row, next);
                line += '\n';
                out.write(line.data(), static_cast<std::streamsize>(line.size()));
            }
            if (group.Sum) {
                SetLine(line, *group.Sum, next);
                if (!line.empty()) // as where no item tells its amount
                    out << palette_.Bold(line) << '\n';
            }
        }
    }

  private:
    /// How long the text of a cell is.
    struct TLength {
        std::uint8_t Bytes;
        std::uint8_t Characters;
    };
    static_assert(kWidestText * 4 <= std::numeric_limits<std::uint8_t>::max());
    /// Where the next cell stands among the texts.
    struct TNext {
        std::size_t Cell = 0;
        std::size_t Byte = 0;
    };

    void SetTexts(const TListingRow& row) {
        for (std::size_t i = 0; i < columns_.size(); ++i) {
            cell_.clear();
            AppendCellText(cell_, row.Cells[columns_[i]], file_.Columns[columns_[i]].Kind);
            const std::size_t before = texts_.size();
            const std::size_t characters = AppendShort(texts_, cell_);
            widths_[i] = std::max(widths_[i], characters);
            lengths_.push_back(
                {static_cast<std::uint8_t>(texts_.size() - before), static_cast<std::uint8_t>(characters)});
        }
    }
    /// Adds a cell to a line, numbers to the right.
    void Put(std::string& line, std::size_t i, std::string_view text, std::size_t characters) const {
        const bool number = IsNumeric(file_.Columns[columns_[i]].Kind);
        const std::size_t blanks = widths_[i] - characters;
        line.append(line.empty() ? "" : "  ").append(number ? blanks : 0, ' ');
        line.append(text).append(number ? 0 : blanks, ' ');
    }
    static void Trim(std::string& line) { line.erase(line.find_last_not_of(' ') + 1); }
    /// `next`: where the row begins; where the one after it does afterwards.
    void SetLine(std::string& line, const TListingRow& row, TNext& next) const {
        line.clear();
        for (std::size_t i = 0; i < columns_.size(); ++i) {
            const TLength& length = lengths_[next.Cell++];
            Put(line, i, std::string_view(texts_).substr(next.Byte, length.Bytes), length.Characters);
            next.Byte += length.Bytes;
        }
        if (row.Differs)
            line = palette_.Severity(TMessageType::mtError, line + " *");
        else
            Trim(line);
    }

    const TFileListing& file_;
    const TPalette& palette_;
    std::vector<std::size_t> columns_;
    std::vector<std::size_t> widths_;
    std::string texts_; ///< of the shown cells, row by row
    std::vector<TLength> lengths_;
    std::string cell_;
};

/// Labels and values, one a line.
void WriteTotals(std::ostream& out, const std::vector<TListingTotal>& totals, const TPalette& palette) {
    std::size_t widest = 0;
    for (const TListingTotal& total : totals)
        widest = std::max(widest, CountCharacters(total.Label));
    for (const TListingTotal& total : totals) {
        if (!total.Value)
            continue;
        const std::string value = NumberText(*total.Value, total.Kind);
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
    for (const std::string& note : SumsNotes(listing))
        out << note << '\n';
}

} // namespace conferix
