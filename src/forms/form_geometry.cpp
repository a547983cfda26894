#include "forms/form_geometry.h"

#include "paper/text_metrics.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

namespace conferix {

namespace {

// Millimetres.
constexpr float kMargin = 6;
constexpr float kHeader = 12;
constexpr float kBar = 3;
constexpr float kTableHead = 4.6F;
constexpr float kFooter = 4;
constexpr float kPen = 0.15F;
constexpr float kThinPen = 0.08F;
constexpr float kPadding = 0.7F;
constexpr float kTopPadding = 0.35F;
constexpr float kValueHeight = 2.4F; ///< what a label leaves to the value at least
constexpr float kTallBox = 9;        ///< from here on values begin at the top
constexpr float kTallGap = 0.6F;     ///< there, between label and value
constexpr int kMostPlaces = 20;      ///< longer texts are written freely
constexpr float kWidestComb = 4;
constexpr float kNarrowestComb = 1;
constexpr float kCombHeight = 1.8F;

constexpr std::uint8_t kBarGround = 204;
constexpr std::uint8_t kGreyGround = 236;

constexpr TTextStyle kLabel{TPaperFace::Regular, 5.25F, 4.5F, 3, TAcross::Left, TDown::Top};
constexpr TTextStyle kHeadLabel{TPaperFace::Regular, 5, 4.5F, 3, TAcross::Left, TDown::Top};
constexpr TTextStyle kBarTitle{TPaperFace::Regular, 6, 5, 4, TAcross::Left, TDown::Middle};
constexpr TTextStyle kTitle{TPaperFace::Bold, 11, 9, 6, TAcross::Centre, TDown::Middle};
constexpr TTextStyle kOperator{TPaperFace::Bold, 10, 7, 5, TAcross::Left, TDown::Middle};
constexpr TTextStyle kNumberLabel{TPaperFace::Regular, 7, 6, 5, TAcross::Left, TDown::Top};
constexpr TTextStyle kNumber{TPaperFace::Bold, 11, 7, 5, TAcross::Left, TDown::Top};
constexpr TTextStyle kText{TPaperFace::Regular, 6, 5, 4, TAcross::Left, TDown::Middle};
constexpr TTextStyle kValue{TPaperFace::Regular, 8, 6, 3.5F, TAcross::Left, TDown::Bottom};
constexpr TTextStyle kCell{TPaperFace::Regular, 7, 5.5F, 3.5F, TAcross::Left, TDown::Middle};

bool IsNumber(TFormFormat format) {
    constexpr std::array kNumbers = {TFormFormat::Integer, TFormFormat::Quantity, TFormFormat::Factor,
                                     TFormFormat::Money};
    return std::ranges::find(kNumbers, format) != kNumbers.end();
}

TPaperRect Inside(const TPaperRect& place) {
    return {place.X + kPadding, place.Y + kTopPadding, place.Width - 2 * kPadding,
            place.Height - 2 * kTopPadding};
}

/// How far the last text of a drawing reaches down.
float BottomOfLast(const TDrawing& drawing) {
    const TPaperText& text = drawing.Texts.back();
    return text.Baseline + kDescent * text.Size * kMillimetresPerPoint;
}

class TGeometer {
  public:
    TGeometer(const TFormVariant& variant, std::string_view version, bool blank)
        : variant_(variant), version_(version), blank_(blank) {
        geometry_.Width = variant.Landscape ? 297 : 210;
        geometry_.Height = variant.Landscape ? 210 : 297;
        width_ = geometry_.Width - 2 * kMargin;
    }

    TFormGeometry LayOut(const TFormTemplate& form) {
        AddHeader();
        for (const TFormBlock& block : variant_.Blocks)
            std::visit([this](const auto& known) { Add(known); }, block);
        if (y_ + kFooter > geometry_.Height - kMargin / 2)
            throw EInvalidForm(form.FileName, variant_.SourceLine,
                               fmt::format("o leiaute tem {:.0f} mm de altura; na folha cabem {:.0f} mm",
                                           y_ - kMargin, geometry_.Height - kMargin * 1.5F - kFooter));
        form_->Frames.push_back({{kMargin, kMargin, width_, y_ - kMargin}, 2 * kPen, 255});
        geometry_.Footer = {kMargin, y_ + 0.5F, width_, kFooter - 0.5F};
        geometry_.Form = form_;
        return std::move(geometry_);
    }

  private:
    static std::string LabelOf(const std::string& number, const std::string& label, const char* between) {
        return number.empty() ? label : number + between + label;
    }

    void AddHeader() {
        const float left = width_ * 0.25F;
        const float right = width_ * 0.25F;
        TPaperRect operatorPlace = Inside({kMargin, y_, left, kHeader});
        if (variant_.Logo != nullptr) {
            const TPaperRect logo = AddImage(variant_.Logo, operatorPlace, TAcross::Left);
            operatorPlace.Width -= logo.Width + kPadding;
            operatorPlace.X = logo.Right() + kPadding;
        }
        if (operatorPlace.Width > 0)
            AddText(*form_, operatorPlace, variant_.Operator, kOperator);
        AddText(*form_, Inside({kMargin + left, y_, width_ - left - right, kHeader}), variant_.Title, kTitle);
        const TFormBox& box = variant_.GuideNumber;
        const TPaperRect place = Inside({kMargin + width_ - right, y_, right, kHeader});
        if (!box.Label.empty()) {
            AddText(*form_, place, LabelOf(box.Number, box.Label, " - "), kNumberLabel);
            const float top = BottomOfLast(*form_) + 0.3F;
            const TPaperRect value{place.X, top, place.Width, 4.2F};
            geometry_.Boxes.push_back({&box, place, value, kNumber, false});
            AddComb(box, value);
        }
        geometry_.Sheet = {place.X, place.Bottom() - 3, place.Width, 3};
        y_ += kHeader;
    }

    void Add(const TFormSection& section) {
        const TPaperRect bar{kMargin, y_, width_, kBar};
        form_->Frames.push_back({bar, kPen, kBarGround});
        AddText(*form_, {bar.X + kPadding, bar.Y, bar.Width - 2 * kPadding, bar.Height}, section.Title,
                kBarTitle);
        y_ += kBar;
    }

    void Add(const TFormRow& row) {
        float x = kMargin;
        for (const TFormBox& box : row.Boxes) {
            if (!box.Versions.Contains(version_))
                continue;
            const TPaperRect frame{x, y_, width_ * box.Width / 100, row.Height};
            form_->Frames.push_back({frame, kPen, row.Grey ? kGreyGround : std::uint8_t{255}});
            TPaperRect inside = Inside(frame);
            if (!box.Label.empty()) {
                TPaperRect label = inside;
                if (box.Format != TFormFormat::Signature)
                    label.Height -= kValueHeight;
                AddText(*form_, label, LabelOf(box.Number, box.Label, " - "), kLabel);
                const float top = BottomOfLast(*form_) + (row.Height >= kTallBox ? kTallGap : 0);
                inside.Height -= top - inside.Y;
                inside.Y = top;
            }
            TTextStyle style = kValue;
            if (row.Height >= kTallBox)
                style.Down = TDown::Top;
            if (IsNumber(box.Format))
                style.Across = TAcross::Right;
            geometry_.Boxes.push_back({&box, frame, inside, style, row.LastPage});
            AddComb(box, inside);
            x += frame.Width;
        }
        y_ += row.Height;
    }

    void Add(const TFormTable& table) {
        const float top = y_;
        const auto hasLabel = [](const TFormBox& box) { return !box.Label.empty(); };
        if (!table.Bands.empty() && std::ranges::any_of(table.Bands.front(), hasLabel))
            y_ += kTableHead;
        TPlacedTable placed{&table, table.Height * static_cast<float>(table.Bands.size()), {}};
        float bandTop = y_;
        for (std::size_t band = 0; band < table.Bands.size(); ++band, bandTop += table.Height) {
            float x = kMargin;
            for (const TFormBox& box : table.Bands[band]) {
                const float width = width_ * box.Width / 100;
                if (!box.Versions.Contains(version_))
                    continue;
                const TPaperRect frame{x, bandTop, width, table.Height};
                if (band == 0) {
                    TTextStyle head = kHeadLabel;
                    head.Across = IsNumber(box.Format) ? TAcross::Right : TAcross::Left;
                    AddText(*form_, Inside({x, top, width, kTableHead}), LabelOf(box.Number, box.Label, "-"),
                            head);
                }
                placed.Columns.push_back(Column(box, frame, band > 0));
                x += width;
            }
        }
        for (int line = 0; line < table.Lines; ++line)
            AddItem(placed, static_cast<float>(line) * placed.ItemHeight, table.Bands.size() > 1 && line > 0,
                    line + 1);
        y_ += placed.ItemHeight * static_cast<float>(table.Lines);
        form_->Frames.push_back({{kMargin, top, width_, y_ - top}, kPen, 255});
        geometry_.Tables.push_back(std::move(placed));
    }

    static TPlacedBox Column(const TFormBox& box, const TPaperRect& frame, bool labelled) {
        TTextStyle style = kCell;
        TPaperRect value = Inside(frame);
        value.Y -= kTopPadding / 2; // the lines of a table have no rules between them
        value.Height += kTopPadding;
        if (IsNumber(box.Format))
            style.Across = TAcross::Right;
        if (labelled && !box.Label.empty()) {
            const float label =
                TextWidth(LabelOf(box.Number, box.Label, "-") + ":", kHeadLabel.Face, kHeadLabel.Preferred) +
                1;
            value.X += std::min(label, value.Width / 2);
            value.Width -= std::min(label, value.Width / 2);
            style.Across = TAcross::Left;
        }
        return {&box, frame, value, style, false};
    }

    /// What is printed in every item: labels, a rule above, on an empty form combs and the number.
    void AddItem(const TPlacedTable& placed, float down, bool rule, int number) {
        for (const TPlacedBox& column : placed.Columns) {
            const TFormBox& box = *column.Box;
            TPaperRect frame = column.Frame;
            frame.Y += down;
            const bool labelled = frame.Y > placed.Columns.front().Frame.Y + down + 0.1F;
            if (labelled) {
                TTextStyle style = kHeadLabel;
                style.Down = TDown::Middle;
                TPaperRect label = Inside(frame);
                label.Width = column.Value.X - label.X;
                AddText(*form_, label, LabelOf(box.Number, box.Label, "-") + ":", style);
            }
            TPaperRect value = column.Value;
            value.Y += down;
            if (box.Format == TFormFormat::Line && box.Label.empty() &&
                (blank_ || placed.Table->Items.empty()))
                AddText(*form_, value, fmt::format("{} -", number), column.Style);
            else if (box.Format == TFormFormat::Signature)
                form_->Lines.push_back({value.X, value.Bottom(), value.Right(), value.Bottom(), kThinPen});
            else
                AddComb(box, value);
        }
        if (rule) {
            const float y = placed.Columns.front().Frame.Y + down;
            form_->Lines.push_back({kMargin, y, kMargin + width_, y, kThinPen});
        }
    }

    void Add(const TFormSeries& series) {
        const TPaperRect frame{kMargin, y_, width_, series.Height};
        form_->Frames.push_back({frame, kPen, 255});
        TPaperRect inside = Inside(frame);
        AddText(*form_, inside, LabelOf(series.Number, series.Label, " - "), kLabel);
        const float top = BottomOfLast(*form_);
        const int columns = (series.Places + 1) / 2;
        const float height = (inside.Bottom() - top) / 2;
        const float width = inside.Width / static_cast<float>(columns);
        for (int place = 0; place < series.Places; ++place) { // odd ones above even ones
            const TPaperRect cell{inside.X + static_cast<float>(place / 2) * width,
                                  top + static_cast<float>(place % 2) * height, width - 1, height};
            TTextStyle style = kCell;
            style.Down = TDown::Bottom;
            AddText(*form_, cell, fmt::format("{} - ___/___/______", place + 1), style);
            const float from = cell.X + TextWidth("10 - ___/___/______", style.Face, style.Preferred) + 1.5F;
            form_->Lines.push_back(
                {from, cell.Bottom() - 0.3F, cell.Right(), cell.Bottom() - 0.3F, kThinPen});
        }
        y_ += series.Height;
    }

    void Add(const TFormText& text) {
        const TPaperRect frame{kMargin, y_, width_, text.Height};
        form_->Frames.push_back({frame, kPen, 255});
        AddText(*form_, Inside(frame), text.Text, kText);
        y_ += text.Height;
    }

    void Add(const TFormImage& image) {
        AddImage(image.Image, Inside({kMargin, y_, width_, image.Height}), image.Across);
        y_ += image.Height;
    }

    /// Draws a picture as large as an area allows, and answers where.
    TPaperRect AddImage(const std::shared_ptr<const TPaperImage>& image, const TPaperRect& area,
                        TAcross across) {
        const auto width = static_cast<float>(image->Width);
        const auto height = static_cast<float>(image->Height);
        const float scale = std::min(area.Width / width, area.Height / height);
        TPaperRect place{area.X, area.Y, width * scale, height * scale};
        const float share = across == TAcross::Left ? 0.0F : across == TAcross::Centre ? 0.5F : 1.0F;
        place.X += (area.Width - place.Width) * share;
        place.Y += (area.Height - place.Height) / 2;
        form_->Pictures.push_back({place, image});
        return place;
    }

    /// Places for the characters of a box, on an empty form.
    void AddComb(const TFormBox& box, const TPaperRect& value) {
        if (!blank_)
            return;
        std::string pattern; // 0: a place
        switch (box.Format) {
        case TFormFormat::Date:
            pattern = "00/00/0000";
            break;
        case TFormFormat::Time:
            pattern = "00:00";
            break;
        case TFormFormat::DateTime:
            pattern = "00/00/0000 00:00";
            break;
        case TFormFormat::YesNo:
            pattern = "0";
            break;
        default:
            if (box.Size > kMostPlaces)
                return;
            pattern.assign(static_cast<std::size_t>(box.Size), '0');
            if (box.Format == TFormFormat::Money || box.Format == TFormFormat::Factor)
                pattern.insert(pattern.size() > 2 ? pattern.size() - 2 : 0, ",");
        }
        if (pattern.empty())
            return;
        const float width = std::min(kWidestComb, value.Width / static_cast<float>(pattern.size()));
        if (width < kNarrowestComb)
            return;
        const float bottom = value.Bottom() - 0.2F;
        const float top = bottom - std::min(kCombHeight, value.Height - 0.4F);
        for (std::size_t i = 0; i < pattern.size(); ++i) {
            const float x = value.X + static_cast<float>(i) * width;
            if (pattern[i] != '0') {
                AddText(*form_, {x, top, width, bottom - top}, std::string(1, pattern[i]),
                        {TPaperFace::Regular, 6, 6, 3, TAcross::Centre, TDown::Bottom});
                continue;
            }
            form_->Lines.push_back({x, bottom, x + width, bottom, kThinPen});
            form_->Lines.push_back({x, top, x, bottom, kThinPen});
            if (i + 1 == pattern.size() || pattern[i + 1] != '0')
                form_->Lines.push_back({x + width, top, x + width, bottom, kThinPen});
        }
    }

    const TFormVariant& variant_;
    std::string_view version_;
    bool blank_;
    float width_ = 0;
    float y_ = kMargin;
    std::shared_ptr<TDrawing> form_ = std::make_shared<TDrawing>();
    TFormGeometry geometry_;
};

} // namespace

TFormGeometry LayOutForm(const TFormTemplate& form, const TFormVariant& variant, std::string_view version,
                         bool blank) {
    return TGeometer(variant, version, blank).LayOut(form);
}

} // namespace conferix
