#include "listing/listing_writer.h"
#include "paper/pdf_writer.h"
#include "paper/text_metrics.h"
#include "platform/utf8.h"
#include "report/console.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <ctime>
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

/// Adds a line of text in the middle of an area, which it does not leave.
void AddText(TDrawing& drawing, const TPaperRect& area, std::string_view whole, const TLineStyle& style) {
    constexpr float kCapital = 0.72F; ///< height of capitals, in sizes
    std::string text(whole);
    float size = style.Size;
    float width = TextWidth(text, style.Face, size);
    if (width > area.Width) {
        size = std::max(style.Smallest, size * area.Width / width);
        width = TextWidth(text, style.Face, size);
    }
    for (std::size_t kept = CountCharacters(text); width > area.Width && kept != 0;) {
        text = std::string(whole.substr(0, BytesOfCharacters(whole, --kept))) + "…";
        width = TextWidth(text, style.Face, size);
    }
    drawing.Texts.push_back({style.ToTheRight ? area.Right() - width : area.X,
                             area.Y + (area.Height + kCapital * size * kMillimetresPerPoint) / 2, size,
                             style.Face, std::move(text)});
}

/// Sets a listing onto pages.
class TListingPages {
  public:
    explicit TListingPages(const TListing& listing) : title_(ListingTitle(listing.Kind)) {
        for (const TFileListing& file : listing.Files)
            if (file.Failure.empty())
                AddFile(file);
        if (listing.Files.size() > 1) {
            const std::vector<TListingSums> all = listing.Sums();
            for (const TListingSums& sums : all) {
                NewPage(SumsTitle(sums, all.size() == 1));
                AddTotals(sums.Totals);
            }
            if (listing.Failures() != 0)
                AddLine(fmt::format("Fora dos totais: {}, por não poder ser listado.",
                                    Counted(listing.Failures(), "arquivo", "arquivos")),
                        kPlain);
        }
    }

    void Write(std::ostream& out) {
        TPdfWriter writer(out, title_);
        const std::string made =
            fmt::format("Conferix, {:%d/%m/%Y %H:%M}", fmt::localtime(std::time(nullptr)));
        for (std::size_t i = 0; i < pages_.size(); ++i) {
            TPaperPage& page = pages_[i].Page;
            const TPaperRect foot = {kMargin, page.Height - kMargin - kLine, page.Width - 2 * kMargin, kLine};
            AddText(page.Own, foot, made, kPlain);
            AddText(page.Own, foot, fmt::format("Página {} de {}", i + 1, pages_.size()), ToTheRight(kPlain));
            if (!pages_[i].Bookmark.empty())
                writer.AddBookmark(pages_[i].Bookmark);
            writer.AddPage(page);
        }
        writer.Finish();
    }

  private:
    struct TPage {
        TPaperPage Page;
        std::string Bookmark; ///< empty where a file goes on
    };

    TPaperPage& Page() { return pages_.back().Page; }
    float Width() { return Page().Width - 2 * kMargin; }
    bool Fits(float height) { return y_ + height <= Page().Height - kMargin - kFoot; }

    void NewPage(const std::string& name, bool goesOn = false) {
        TPage& page = pages_.emplace_back();
        if (!goesOn)
            page.Bookmark = Visible(name);
        page.Page.Width = lying_ ? kLong : kShort;
        page.Page.Height = lying_ ? kShort : kLong;
        y_ = kMargin;
        AddText(Page().Own, {kMargin, y_, Width() / 2 - kGap, 2 * kLine}, title_, kHeading);
        AddText(Page().Own, {kMargin + Width() / 2, y_, Width() / 2, 2 * kLine}, Visible(name),
                ToTheRight(kPlain));
        y_ += 2 * kLine + kGap;
    }

    /// A line over the whole width; on a further page where this one is full.
    void AddLine(const std::string& text, const TLineStyle& style) {
        if (!Fits(kLine))
            NewPage(name_, true);
        AddText(Page().Own, {kMargin, y_, Width(), kLine}, text, style);
        y_ += kLine;
    }

    void AddFile(const TFileListing& file) {
        columns_ = ShownColumns(file);
        lying_ = columns_.size() >= kWideTable;
        name_ = file.Arquivo == "-" ? "entrada padrão" : file.Arquivo;
        NewPage(name_);
        for (const TListingLine& line : file.Head)
            if (line.IsShown())
                AddPair(line.Label, Visible(line.Value), line.ByHand, false);
        Measure(file);
        for (const TListingGroup& group : file.Groups)
            AddGroup(file, group);
        AddTotals(file.Totals);
        if (file.HasDifferences())
            AddLine("* O total informado não é a soma dos itens.", kPlain);
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
            NewPage(name_, true);
        AddText(Page().Own, {kMargin, y_, kLabel, kLine}, label, kPlain);
        AddText(Page().Own, {kMargin + kLabel, y_, Width() - kLabel, kLine}, differs ? value + " *" : value,
                kStrong);
        if (byHand)
            Page().Own.Lines.push_back(
                {kMargin + kLabel, y_ + kLine - 1, kMargin + kLabel + kByHand, y_ + kLine - 1, kPen});
        y_ += kLine;
    }

    void AddTotals(const std::vector<TListingTotal>& totals) {
        y_ += kGap;
        for (const TListingTotal& total : totals)
            if (total.Value)
                AddPair(total.Label, CellText({.Number = total.Value}, total.Kind), false, total.Differs);
    }

    /// The widths of the columns: what they need, and of what is left or missing each its share.
    void Measure(const TFileListing& file) {
        widths_.clear();
        float sum = 0;
        for (const std::size_t column : columns_) {
            float widest = TextWidth(file.Columns[column].Title, TPaperFace::Bold, kStrong.Size);
            const TListingCell* last = nullptr; // cells repeat the one above them more often than not
            for (const TListingGroup& group : file.Groups)
                for (const TListingRow& row : group.Rows)
                    if (const TListingCell* const above = std::exchange(last, &row.Cells[column]);
                        widest < kMostWide && (above == nullptr || *above != *last))
                        widest =
                            std::max(widest, TextWidth(Visible(CellText(*last, file.Columns[column].Kind)),
                                                       TPaperFace::Bold, kStrong.Size));
            widths_.push_back(std::min(widest, kMostWide) + kGap);
            sum += widths_.back();
        }
        for (float& width : widths_)
            width *= (Width() - kGap) / sum; // the mark of differences stands behind
    }

    template<class TextOf>
    void AddCells(const TFileListing& file, const TLineStyle& style, const TextOf& textOf) {
        float x = kMargin;
        for (std::size_t i = 0; i < columns_.size(); ++i) {
            const bool number = IsNumeric(file.Columns[columns_[i]].Kind);
            AddText(Page().Own, {x + kGap / 2, y_, widths_[i] - kGap, kLine}, textOf(columns_[i]),
                    number ? ToTheRight(style) : style);
            x += widths_[i];
        }
        y_ += kLine;
    }

    void AddHead(const TFileListing& file) {
        Page().Own.Frames.push_back({{kMargin, y_, Width(), kLine}, 0, kGrey});
        AddCells(file, kStrong, [&](std::size_t column) { return file.Columns[column].Title; });
    }

    void AddRow(const TFileListing& file, const TListingRow& row, const TLineStyle& style) {
        if (!Fits(kLine)) {
            NewPage(name_, true);
            AddHead(file);
        }
        if (row.Differs)
            AddText(Page().Own, {kMargin + Width() - kGap, y_, kGap, kLine}, "*", kStrong);
        AddCells(file, row.Differs ? kStrong : style, [&](std::size_t column) {
            return Visible(CellText(row.Cells[column], file.Columns[column].Kind));
        });
        Page().Own.Lines.push_back({kMargin, y_, kMargin + Width(), y_, kPen / 2});
    }

    void AddGroup(const TFileListing& file, const TListingGroup& group) {
        if (group.Rows.empty())
            return;
        y_ += kGap;
        if (!Fits(4 * kLine)) // no title at the foot of a page
            NewPage(name_, true);
        if (!group.Title.empty())
            AddLine(Visible(group.Title), kStrong);
        AddHead(file);
        for (const TListingRow& row : group.Rows)
            AddRow(file, row, kPlain);
        if (group.Sum)
            AddRow(file, *group.Sum, kStrong);
    }

    void AddSignatures() {
        if (!Fits(kSignature))
            NewPage(name_, true);
        y_ += kSignature - kLine;
        const float half = Width() / 2 - 2 * kGap;
        float x = kMargin;
        for (const char* who :
             {"Entregue por, em ____/____/________", "Recebido por, em ____/____/________"}) {
            Page().Own.Lines.push_back({x, y_, x + half, y_, kPen});
            AddText(Page().Own, {x, y_, half, kLine}, who, kPlain);
            x += half + 4 * kGap;
        }
        y_ += kLine;
    }

    std::string title_;
    std::vector<TPage> pages_;
    std::vector<std::size_t> columns_; ///< those shown of the present file
    std::vector<float> widths_;        ///< of these
    std::string name_;                 ///< of the present file
    bool lying_ = false;
    float y_ = 0; ///< where the next line begins
};

} // namespace

void WriteListingPdf(std::ostream& out, const TListing& listing) {
    TListingPages(listing).Write(out);
}

} // namespace conferix
