#include "listing/listing_writer.h"
#include "paper/pdf_writer.h"
#include "paper/text_metrics.h"
#include "platform/utf8.h"
#include "report/console.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <ctime>
#include <memory>
#include <ostream>
#include <utility>

namespace conferix {

namespace {

// Millimetres.
constexpr float kShort = 210;
constexpr float kLong = 297;
constexpr float kMargin = 12;
constexpr float kLine = 4.4F;
constexpr float kGap = 2;
constexpr float kFoot = 8;       ///< kept free at the bottom of a page
constexpr float kMostWide = 70;  ///< of a column, before what is left is shared out
constexpr float kSignature = 24; ///< height of the place for signatures

constexpr std::size_t kWideTable = 8; ///< columns from which on the paper lies on its side

/// How a line of text is set: sizes in points.
struct TLineStyle {
    TPaperFace Face = TPaperFace::Regular;
    float Size = 7.5F;
    float Smallest = 5.5F; ///< what does not fit in this size either is cut
    bool ToTheRight = false;
};
constexpr TLineStyle kPlain = {};
constexpr TLineStyle kStrong = {.Face = TPaperFace::Bold};
constexpr TLineStyle kHeading = {.Face = TPaperFace::Bold, .Size = 13, .Smallest = 9};
constexpr std::uint8_t kGrey = 225;
constexpr float kPen = 0.2F;

TLineStyle ToTheRight(TLineStyle style) {
    style.ToTheRight = true;
    return style;
}

/// Adds a line of text in the middle of an area, which it does not leave; answers it.
const TPaperText& AddText(TDrawing& drawing, const TPaperRect& area, std::string text,
                          const TLineStyle& style) {
    constexpr float kCapital = 0.72F; ///< height of capitals, in sizes
    float size = style.Size;
    float width = TextWidth(text, style.Face, size);
    if (width > area.Width) {
        size = std::max(style.Smallest, size * area.Width / width);
        width = TextWidth(text, style.Face, size);
        if (width > area.Width) {
            const std::string whole = text;
            const auto cut = [&](std::size_t kept) {
                text = whole.substr(0, BytesOfCharacters(whole, kept)) + "…";
                width = TextWidth(text, style.Face, size);
            };
            std::size_t fits = 0; // so many characters, or none
            for (std::size_t tooMany = CountCharacters(whole); tooMany - fits > 1;) {
                const std::size_t kept = (fits + tooMany) / 2;
                cut(kept);
                (width > area.Width ? tooMany : fits) = kept;
            }
            cut(fits);
        }
    }
    return drawing.Texts.emplace_back(
        TPaperText{style.ToTheRight ? area.Right() - width : area.X,
                   area.Y + (area.Height + kCapital * size * kMillimetresPerPoint) / 2, size, style.Face,
                   std::move(text)});
}

/// A cell as it is printed.
std::string PrintedCell(const TListingCell& cell, TCellKind kind) {
    std::string text = CellText(cell, kind);
    return IsNumeric(kind) ? text : Visible(text);
}

/// Sets a listing onto pages: once to count them, then to write each as soon as it is full.
class TListingPages {
  public:
    explicit TListingPages(const TListing& listing)
        : listing_(listing), title_(ListingTitle(listing.Kind)),
          made_(fmt::format("Conferix, {:%d/%m/%Y %H:%M}", fmt::localtime(std::time(nullptr)))) {}

    void Write(std::ostream& out) {
        SetAll();
        pages_ = std::exchange(number_, 0);
        TPdfWriter writer(out, title_);
        writer_ = &writer;
        SetAll();
        writer_ = nullptr;
        writer.Finish();
    }

  private:
    /// A column that is shown.
    struct TColumn {
        std::size_t Index; ///< in the listing
        TCellKind Kind;
        std::string_view Title;
        float Width = 0;
        // What was printed last, which the next cell may be again.
        const TListingCell* Above = nullptr;
        TPaperText Printed = {};
        float Y = 0; ///< where its line began

        TLineStyle StyleOf(const TLineStyle& style) const {
            return IsNumeric(Kind) ? ToTheRight(style) : style;
        }
    };

    void SetAll() {
        for (const TFileListing& file : listing_.Files)
            if (file.Failure.empty())
                AddFile(file);
        if (listing_.Files.size() > 1)
            AddSums();
        EndPage();
    }

    void AddSums() {
        const std::vector<TListingSums> all = listing_.Sums();
        for (const TListingSums& sums : all) {
            name_ = SumsTitle(sums, all.size() == 1);
            NewPage();
            AddTotals(sums.Totals);
        }
        for (const std::string& note : SumsNotes(listing_))
            AddLine(note, kPlain);
    }

    float Width() const { return page_.Width - 2 * kMargin; }
    bool Fits(float height) const { return y_ + height <= page_.Height - kMargin - kFoot; }

    void Text(const TPaperRect& area, std::string text, const TLineStyle& style) {
        if (writer_ != nullptr && !text.empty())
            AddText(page_.Own, area, std::move(text), style);
    }

    void NewPage(bool goesOn = false) {
        EndPage();
        ++number_;
        page_.Width = lying_ ? kLong : kShort;
        page_.Height = lying_ ? kShort : kLong;
        y_ = kMargin;
        if (!goesOn && writer_ != nullptr)
            writer_->AddBookmark(Visible(name_));
        Text({kMargin, y_, Width() / 2 - kGap, 2 * kLine}, title_, kHeading);
        Text({kMargin + Width() / 2, y_, Width() / 2, 2 * kLine}, Visible(name_), ToTheRight(kPlain));
        y_ += 2 * kLine + kGap;
    }

    /// Writes the page that was begun, if one was, and empties it.
    void EndPage() {
        if (writer_ != nullptr && number_ != 0)
            WritePage();
        page_.Own.Clear();
    }

    void WritePage() {
        const TPaperRect foot = {kMargin, page_.Height - kMargin - kLine, Width(), kLine};
        Text(foot, made_, kPlain);
        Text(foot, fmt::format("Página {} de {}", number_, pages_), ToTheRight(kPlain));
        // The rules of full pages are the same.
        if (ruled_ == nullptr || ruled_->Lines != page_.Own.Lines) {
            ruled_ = std::make_shared<TDrawing>();
            ruled_->Lines = page_.Own.Lines;
        }
        page_.Own.Lines.clear();
        page_.Common = {ruled_};
        writer_->AddPage(page_);
    }

    /// A line over the whole width; on a further page where this one is full.
    void AddLine(const std::string& text, const TLineStyle& style) {
        if (!Fits(kLine))
            NewPage(true);
        Text({kMargin, y_, Width(), kLine}, text, style);
        y_ += kLine;
    }

    void AddFile(const TFileListing& file) {
        columns_.clear();
        for (const std::size_t index : ShownColumns(file))
            columns_.push_back({index, file.Columns[index].Kind, file.Columns[index].Title});
        lying_ = columns_.size() >= kWideTable;
        name_ = file.Arquivo == "-" ? "entrada padrão" : file.Arquivo;
        NewPage();
        for (const TListingLine& line : file.Head)
            if (line.IsShown())
                AddPair(line.Label, Visible(line.Value), line.ByHand, false);
        if (writer_ != nullptr)
            Measure(file);
        for (const TListingGroup& group : file.Groups)
            AddGroup(group);
        AddTotals(file.Totals);
        if (file.HasDifferences())
            AddLine("* Um total não é a soma dos itens.", kPlain);
        for (const std::string& note : file.Notes)
            AddLine(note, kPlain);
        if (file.Signatures)
            AddSignatures();
    }

    /// A label and its value, or a line to write the value on.
    void AddPair(std::string_view label, const std::string& value, bool byHand, bool differs) {
        constexpr float kLabel = 45;
        constexpr float kByHand = 80;
        if (!Fits(kLine))
            NewPage(true);
        Text({kMargin, y_, kLabel, kLine}, std::string(label), kPlain);
        Text({kMargin + kLabel, y_, Width() - kLabel, kLine}, differs ? value + " *" : value, kStrong);
        if (byHand)
            page_.Own.Lines.push_back(
                {kMargin + kLabel, y_ + kLine - 1, kMargin + kLabel + kByHand, y_ + kLine - 1, kPen});
        y_ += kLine;
    }

    void AddTotals(const std::vector<TListingTotal>& totals) {
        y_ += kGap;
        for (const TListingTotal& total : totals)
            if (total.Value)
                AddPair(total.Label, NumberText(*total.Value, total.Kind), false, total.Differs);
    }

    /// The columns that are shown, as wide as they need to be, and of what is left or missing each its share.
    void Measure(const TFileListing& file) {
        float sum = 0;
        for (TColumn& column : columns_) {
            float widest = TextWidth(column.Title, TPaperFace::Bold, kStrong.Size);
            const TListingCell* last = nullptr; // cells repeat the one above them more often than not
            for (const TListingGroup& group : file.Groups)
                for (const TListingRow& row : group.Rows)
                    if (const TListingCell* const above = std::exchange(last, &row.Cells[column.Index]);
                        widest < kMostWide && (above == nullptr || *above != *last))
                        widest = std::max(widest, TextWidth(PrintedCell(*last, column.Kind), TPaperFace::Bold,
                                                            kStrong.Size));
            column.Width = std::min(widest, kMostWide) + kGap;
            sum += column.Width;
        }
        for (TColumn& column : columns_)
            column.Width *= (Width() - kGap) / sum; // the mark of differences stands behind
    }

    void AddHead() {
        page_.Own.Frames.push_back({{kMargin, y_, Width(), kLine}, 0, kGrey});
        float x = kMargin;
        for (const TColumn& column : columns_) {
            Text({x + kGap / 2, y_, column.Width - kGap, kLine}, std::string(column.Title),
                 column.StyleOf(kStrong));
            x += column.Width;
        }
        y_ += kLine;
    }

    void AddRow(const TListingRow& row, const TLineStyle& style) {
        if (!Fits(kLine)) {
            NewPage(true);
            AddHead();
        }
        if (writer_ != nullptr) {
            AddCells(row, row.Differs ? kStrong : style);
            page_.Own.Lines.push_back({kMargin, y_ + kLine, kMargin + Width(), y_ + kLine, kPen / 2});
        }
        y_ += kLine;
    }

    void AddCells(const TListingRow& row, const TLineStyle& style) {
        if (row.Differs)
            Text({kMargin + Width() - kGap, y_, kGap, kLine}, "*", kStrong);
        float x = kMargin;
        for (TColumn& column : columns_) {
            const TListingCell& cell = row.Cells[column.Index];
            const TListingCell* const above = std::exchange(column.Above, &cell);
            const float left = std::exchange(x, x + column.Width);
            if (above == nullptr || column.Printed.Face != style.Face || *above != cell) {
                std::string text = PrintedCell(cell, column.Kind);
                column.Printed = {};
                if (!text.empty())
                    column.Printed = AddText(page_.Own, {left + kGap / 2, y_, column.Width - kGap, kLine},
                                             std::move(text), column.StyleOf(style));
            } else if (!column.Printed.Text.empty()) {
                column.Printed.Baseline += y_ - column.Y;
                page_.Own.Texts.push_back(column.Printed);
            }
            column.Y = y_;
        }
    }

    void AddGroup(const TListingGroup& group) {
        if (group.Rows.empty())
            return;
        y_ += kGap;
        if (!Fits(4 * kLine)) // no title at the foot of a page
            NewPage(true);
        if (!group.Title.empty())
            AddLine(Visible(group.Title), kStrong);
        AddHead();
        for (const TListingRow& row : group.Rows)
            AddRow(row, kPlain);
        if (group.Sum)
            AddRow(*group.Sum, kStrong);
    }

    void AddSignatures() {
        if (!Fits(kSignature))
            NewPage(true);
        y_ += kSignature - kLine;
        const float half = Width() / 2 - 2 * kGap;
        float x = kMargin;
        for (const char* who :
             {"Entregue por, em ____/____/________", "Recebido por, em ____/____/________"}) {
            page_.Own.Lines.push_back({x, y_, x + half, y_, kPen});
            Text({x, y_, half, kLine}, who, kPlain);
            x += half + 4 * kGap;
        }
        y_ += kLine;
    }

    const TListing& listing_;
    std::string title_;
    std::string made_;
    TPdfWriter* writer_ = nullptr; ///< null while pages are counted
    std::size_t pages_ = 0;        ///< as counted
    std::size_t number_ = 0;       ///< of the present page, 1-based; 0: none was begun
    TPaperPage page_;
    std::shared_ptr<TDrawing> ruled_; ///< the rules of the page before
    std::vector<TColumn> columns_;    ///< of the present file
    std::string name_;                ///< of the present file
    bool lying_ = false;
    float y_ = 0; ///< where the next line begins
};

} // namespace

void WriteListingPdf(std::ostream& out, const TListing& listing) {
    TListingPages(listing).Write(out);
}

} // namespace conferix
