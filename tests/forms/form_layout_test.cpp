// Full guides on every form: what stands where.
#include "forms/form_printer.h"
#include "forms/form_values.h"
#include "paper/svg_page.h"
#include "paper/text_metrics.h"
#include "platform/utf8.h"
#include "support/parsed.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

namespace conferix {
namespace {

constexpr std::size_t kItems = 300;

/// An element of a guide that is being made.
struct TElement {
    std::string Name;
    std::string Text;
    std::vector<TElement> Children;

    TElement& Child(const std::string& name) {
        for (TElement& child : Children)
            if (child.Name == name)
                return child;
        return Children.emplace_back(TElement{name, {}, {}});
    }
    TElement& At(std::span<const std::string> path) {
        TElement* element = this;
        for (const std::string& step : path)
            element = &element->Child(step);
        return *element;
    }
    void Write(std::string& xml) const {
        xml += '<' + Name + '>' + Text;
        for (const TElement& child : Children)
            child.Write(xml);
        xml += "</" + Name + ">\n";
    }
};

/// The longest value that a box has to hold, unlike those of other boxes.
std::string LongValue(const TFormBox& box, std::size_t item) {
    const std::string mark = fmt::format("{}.{} ", box.Number, item);
    const auto size = static_cast<std::size_t>(box.Size);
    switch (box.Format) {
    case TFormFormat::Date:
        return "2024-02-29";
    case TFormFormat::Time:
        return "23:59:59";
    case TFormFormat::DateTime:
        return "2024-02-29T23:59:59";
    case TFormFormat::Money:
        return fmt::format("{}.99", 12345678 - item);
    case TFormFormat::Factor:
        return "9.99";
    case TFormFormat::Quantity:
        return fmt::format("{}.9999", 9999 - item);
    case TFormFormat::YesNo:
        return "N";
    case TFormFormat::Integer:
    case TFormFormat::Line:
        return std::to_string(item + 1);
    default:
        break;
    }
    if (size > 0 && size <= 20)
        return std::string(size, '9');
    std::string text = mark;
    for (const char* const word : {"REALIZAÇÃO ", "de ", "procedimento ", "ÀS ", "conforme "})
        text += word;
    while (text.size() < std::max<std::size_t>(size, 40))
        text += "OBSERVAÇÃO conforme ";
    text.resize(BytesOfCharacters(text, std::max<std::size_t>(size, 40)));
    return text;
}

void Fill(TElement& from, const TFormBox& box, std::size_t item) {
    std::size_t used = 0;
    for (const TFormPath& path : box.Paths) {
        if (box.Combination == TFormCombination::First && used++ > 0)
            return;
        TElement& parent = from.At(std::span(path).first(path.size() - 1));
        const std::size_t count = box.Occurrence == 0 ? 4 : static_cast<std::size_t>(box.Occurrence);
        while (static_cast<std::size_t>(std::ranges::count(parent.Children, path.back(), &TElement::Name)) <
               count)
            parent.Children.push_back({path.back(), LongValue(box, item), {}});
    }
}

/// A guide that has all that a form shows, with many items.
TElement FullGuide(const TFormVariant& variant, std::string_view version) {
    TElement guide{"guia", {}, {}};
    Fill(guide, variant.GuideNumber, 0);
    for (const TFormBlock& block : variant.Blocks) {
        if (const auto* row = std::get_if<TFormRow>(&block))
            for (const TFormBox& box : row->Boxes)
                if (box.Versions.Contains(version))
                    Fill(guide, box, 0);
        const auto* table = std::get_if<TFormTable>(&block);
        if (table == nullptr || table->Items.empty())
            continue;
        // Where the items stand in those of another table, each of these gets one.
        std::vector<TElement*> items = {&guide};
        for (std::size_t step = 0; step < table->Items.size(); ++step) {
            std::vector<TElement*> next;
            const bool last = step + 1 == table->Items.size();
            for (TElement* element : items) {
                const std::string& name = table->Items[step];
                if (last && items.size() == 1)
                    while (static_cast<std::size_t>(
                               std::ranges::count(element->Children, name, &TElement::Name)) < kItems)
                        element->Children.push_back({name, {}, {}});
                else
                    element->Child(name);
                for (TElement& child : element->Children)
                    if (child.Name == name)
                        next.push_back(&child);
            }
            items = std::move(next);
        }
        for (std::size_t item = 0; item < items.size(); ++item)
            for (const auto& band : table->Bands)
                for (const TFormBox& box : band)
                    if (!box.Paths.empty() && !box.Paths.front().empty() && box.Paths.front().front() != "..")
                        Fill(*items[item], box, item);
    }
    return guide;
}

TPaperRect RectOf(const TPaperText& text) {
    const float unit = text.Size * kMillimetresPerPoint;
    return {text.X, text.Baseline - kAscent * unit, TextWidth(text.Text, text.Face, text.Size),
            (kAscent + kDescent) * unit};
}

/// By how much two rectangles overlap in the direction where they do less, in millimetres.
float Overlap(const TPaperRect& a, const TPaperRect& b) {
    return std::min(std::min(a.Right(), b.Right()) - std::max(a.X, b.X),
                    std::min(a.Bottom(), b.Bottom()) - std::max(a.Y, b.Y));
}

std::string WithoutBlanks(std::string text) {
    std::erase(text, ' ');
    return text;
}

/// What is drawn on a page, back to front.
std::vector<const TDrawing*> DrawingsOf(const TPaperPage& page) {
    std::vector<const TDrawing*> drawings;
    for (const auto& common : page.Common)
        drawings.push_back(common.get());
    drawings.push_back(&page.Own);
    return drawings;
}

/// No text leaves the page, crosses the border of a box or meets another text.
void ExpectRoomForAll(const TPaperPage& page, const std::string& where) {
    constexpr float kTolerance = 0.08F; // letters seldom reach as far as their rectangles
    std::vector<std::pair<TPaperRect, std::string>> texts;
    std::vector<TPaperRect> frames;
    for (const TDrawing* drawing : DrawingsOf(page)) {
        for (const TPaperText& text : drawing->Texts)
            texts.emplace_back(RectOf(text), text.Text);
        for (const TPaperFrame& frame : drawing->Frames)
            frames.push_back(frame.Place);
    }
    for (std::size_t i = 0; i < texts.size(); ++i) {
        const auto& [rect, text] = texts[i];
        EXPECT_TRUE(rect.X >= 5 && rect.Y >= 5 && rect.Right() <= page.Width - 5 &&
                    rect.Bottom() <= page.Height - 3)
            << where << ": " << text;
        for (const TPaperRect& frame : frames) {
            const bool inside =
                rect.X >= frame.X - kTolerance && rect.Right() <= frame.Right() + kTolerance &&
                rect.Y >= frame.Y - kTolerance && rect.Bottom() <= frame.Bottom() + kTolerance;
            EXPECT_TRUE(inside || Overlap(rect, frame) <= kTolerance)
                << where << ": " << text << " crosses a border";
        }
        for (std::size_t j = i + 1; j < texts.size(); ++j)
            EXPECT_LE(Overlap(rect, texts[j].first), kTolerance)
                << where << ": " << text << " | " << texts[j].second;
    }
}

/// Each value stands whole in its box.
void ExpectValues(const TFormPage& page, const std::string& where) {
    for (const TFormPlace& place : page.Places) {
        std::string shown;
        const auto drawings = DrawingsOf(page.Paper);
        for (std::size_t i = 1; i < drawings.size(); ++i) // the first is the form itself
            for (const TPaperText& text : drawings[i]->Texts)
                if (Overlap(RectOf(text), place.Frame) > 0.2F)
                    shown += text.Text;
        const std::string value = FormatFormValue(place.Box->Format, place.Node->TextWithCData());
        if (place.Box->Format != TFormFormat::Line) {
            EXPECT_NE(WithoutBlanks(shown).find(WithoutBlanks(value)), std::string::npos)
                << where << ": " << place.Box->Number << ": " << shown << " for " << value;
        }
    }
}

/// Each label is there, whole.
void ExpectLabels(const TFormVariant& variant, std::string_view version, const TDrawing& form,
                  const std::string& where) {
    std::string texts;
    for (const TPaperText& text : form.Texts) {
        EXPECT_FALSE(text.Text.ends_with("...")) << where << ": " << text.Text;
        texts += WithoutBlanks(text.Text);
    }
    const auto expect = [&](const TFormBox& box) {
        if (!box.Label.empty() && box.Versions.Contains(version)) {
            EXPECT_NE(texts.find(WithoutBlanks((box.Number.empty() ? "" : box.Number + "-") + box.Label)),
                      std::string::npos)
                << where << ": " << box.Label;
        }
    };
    for (const TFormBlock& block : variant.Blocks) {
        if (const auto* row = std::get_if<TFormRow>(&block))
            std::ranges::for_each(row->Boxes, expect);
        if (const auto* table = std::get_if<TFormTable>(&block))
            for (const auto& band : table->Bands)
                std::ranges::for_each(band, expect);
    }
}

void ExpectSameAsSvg(const TPaperPage& page, const std::string& where) {
    const auto svg = Parsed(SvgPage(page));
    std::size_t rects = 1; // the paper
    std::vector<std::string> texts;
    for (const TDrawing* drawing : DrawingsOf(page)) {
        rects += drawing->Frames.size();
        for (const TPaperText& text : drawing->Texts)
            texts.push_back(text.Text);
    }
    std::vector<std::string> drawn;
    for (const TXmlNode* text : svg->Element()->Descendants("text"))
        drawn.push_back(text->TextWithCData());
    EXPECT_EQ(drawn, texts) << where;
    EXPECT_EQ(svg->Element()->Descendants("rect").size(), rects) << where;
}

class FullGuides : public testing::TestWithParam<const char*> {};

TEST_P(FullGuides, StandInTheirBoxes) {
    const std::string version = GetParam();
    for (const auto& form : InstalledForms()) {
        const TFormVariant& variant = *form->VariantFor(version);
        std::string xml;
        FullGuide(variant, version).Write(xml);
        const auto document = Parsed(xml);
        const std::vector<TFormGuide> guides = {{document->Element(), form->Guides.front(), "1"}};
        TFormPrinter printer(InstalledForms(), {.Only = form->Name, .Terms = {}, .Errors = 3});
        std::map<const TFormBox*, std::set<const TXmlNode*>> printed;
        std::size_t pages = 0;
        std::size_t most = 0;
        std::string footers;
        const std::size_t told = printer.Print(guides, version, [&](const TFormPage& page) {
            const std::string where = fmt::format("{} {} folha {}", form->Name, version, ++pages);
            if (pages == 1 || page.Places.size() > most) { // the last one has the totals too
                most = page.Places.size();
                ExpectRoomForAll(page.Paper, where);
                ExpectSameAsSvg(page.Paper, where);
                ExpectValues(page, where);
            }
            if (pages == 1)
                ExpectLabels(*page.Form->VariantFor(version), version, *page.Paper.Common.front(), where);
            for (const TFormPlace& place : page.Places)
                printed[place.Box].insert(place.Node);
            for (const TPaperText& text : page.Paper.Own.Texts)
                if (text.Text.starts_with("Folha") || text.Text.starts_with("Página") ||
                    text.Text.starts_with("Contém"))
                    footers += text.Text + ";";
        });
        EXPECT_EQ(told, pages);
        const std::string first = pages > 1 ? fmt::format("Folha 1/{};", pages) : "";
        EXPECT_TRUE(footers.starts_with(fmt::format("{}Contém erros: 3;Página 1 de {};", first, pages)))
            << footers;
        // Every box with a value was printed, those of tables with every item.
        const auto& shown = *printer.Forms()[static_cast<std::size_t>(
            std::ranges::find(printer.Forms(), form->Name, [](const auto& f) { return f->Name; }) -
            printer.Forms().begin())];
        for (const TFormBlock& block : shown.VariantFor(version)->Blocks) {
            if (const auto* row = std::get_if<TFormRow>(&block))
                for (const TFormBox& box : row->Boxes) {
                    const bool empty = box.Paths.empty() || box.Combination == TFormCombination::Sum ||
                                       !box.Versions.Contains(version);
                    EXPECT_EQ(printed[&box].size(), empty ? 0U : 1U)
                        << form->Name << ' ' << version << ": " << box.Label;
                }
            if (const auto* table = std::get_if<TFormTable>(&block))
                for (const auto& band : table->Bands)
                    for (const TFormBox& box : band)
                        if (!box.Paths.empty() && !box.Paths.front().empty() &&
                            box.Paths.front().front() != "..") {
                            EXPECT_EQ(printed[&box].size(), kItems)
                                << form->Name << ' ' << version << ": " << box.Label;
                        }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Versions, FullGuides,
                         testing::Values("2.02.03", "3.00.01", "3.02.00", "3.05.00", "4.01.00", "4.03.00"));

} // namespace
} // namespace conferix
