#include "forms/form_printer.h"

#include "forms/form_values.h"
#include "model/money.h"
#include "paper/text_fit.h"
#include "platform/format_settings.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>

namespace conferix {

namespace {

constexpr TTextStyle kSheet{TPaperFace::Regular, 7, 7, 5, TAcross::Right, TDown::Bottom};
constexpr TTextStyle kFooterLeft{TPaperFace::Regular, 6.5F, 6, 5, TAcross::Left, TDown::Top};
constexpr TTextStyle kFooterRight{TPaperFace::Regular, 6.5F, 6, 5, TAcross::Right, TDown::Top};
constexpr float kFooterShare = 0.5F;
constexpr float kLegible = 4.5F; ///< size of type, in points

const TXmlNode* Step(const TXmlNode& node, const std::string& step) {
    return step == ".." ? node.Parent() : node.Child(step);
}

const TXmlNode* First(const TXmlNode& from, std::span<const std::string> path) {
    const TXmlNode* node = &from;
    for (const std::string& step : path) {
        node = Step(*node, step);
        if (node == nullptr)
            return nullptr;
    }
    return node;
}

/// Every node at a path, in document order.
void Collect(const TXmlNode& from, std::span<const std::string> path, std::vector<const TXmlNode*>& nodes) {
    if (path.empty()) {
        nodes.push_back(&from);
        return;
    }
    if (path.front() == "..") {
        if (from.Parent() != nullptr)
            Collect(*from.Parent(), path.subspan(1), nodes);
        return;
    }
    for (const TXmlNode& child : from.ChildTags())
        if (child.LocalName() == path.front())
            Collect(child, path.subspan(1), nodes);
}

std::vector<const TXmlNode*> All(const TXmlNode& from, const TFormPath& path) {
    std::vector<const TXmlNode*> nodes;
    if (!path.empty())
        Collect(from, path, nodes);
    return nodes;
}

/// Text of an element without child elements.
std::string TextOf(const TXmlNode& node) {
    if (node.FirstChildTag() != nullptr)
        return {};
    return node.FirstChild() != nullptr ? node.TextWithCData() : std::string(node.Value());
}

/// The place among the siblings of its name, from 1 on.
std::size_t PositionOf(const TXmlNode& node) {
    std::size_t position = 0;
    if (node.Parent() != nullptr)
        for (const TXmlNode& sibling : node.Parent()->ChildTags()) {
            position += sibling.LocalName() == node.LocalName() ? 1 : 0;
            if (&sibling == &node)
                break;
        }
    return position;
}

std::string SumOf(const TFormBox& box, const TXmlNode& node) {
    long double sum = 0;
    bool any = false;
    for (const TFormPath& path : box.Paths)
        if (const TXmlNode* part = First(node, path); part != nullptr) {
            const auto value = ParseDecimal(TextOf(*part));
            if (!value)
                return {}; // without one of its amounts a sum would be wrong
            sum += *value;
            any = true;
        }
    return any ? TFormatSettings::Messages().Money(RoundMoney(sum)) : std::string();
}

} // namespace

const TFormGeometry& TFormPrinter::Geometry(const TFormTemplate& form, const TFormVariant& variant,
                                            std::string_view version) {
    const auto key = std::pair(&variant, std::string(version));
    const auto found = geometries_.find(key);
    return found != geometries_.end()
               ? found->second
               : geometries_.emplace(key, LayOutForm(form, variant, version, false)).first->second;
}

std::vector<TFormSheet> TFormPrinter::Sheets(std::span<const TFormGuide> guides, std::string_view version) {
    common_ = {}; // guides of another file may lie where those of the last one did
    std::vector<TFormSheet> sheets;
    for (const TFormGuide& guide : guides)
        for (const auto& form : forms_) {
            const TFormVariant* variant = form->VariantFor(version);
            if (variant == nullptr || (!options_.Only.empty() && form->Name != options_.Only) ||
                std::ranges::find(form->Guides, guide.Kind) == form->Guides.end() ||
                (form->IsAnnex() && First(*guide.Node, form->Needs) == nullptr))
                continue;
            const TFormGeometry& geometry = Geometry(*form, *variant, version);
            std::size_t pages = 1;
            for (const TPlacedTable& placed : geometry.Tables) {
                const auto lines = static_cast<std::size_t>(placed.Table->Lines);
                pages = std::max(pages, (All(*guide.Node, placed.Table->Items).size() + lines - 1) / lines);
            }
            for (std::size_t sheet = 1; sheet <= pages; ++sheet)
                sheets.push_back({&guide, form.get(), &geometry, sheet, pages});
        }
    return sheets;
}

std::vector<const TFormGuide*> GuidesWithoutPages(std::span<const TFormGuide> guides,
                                                  std::span<const TFormSheet> sheets) {
    std::vector<const TFormGuide*> without;
    auto sheet = sheets.begin();
    for (const TFormGuide& guide : guides) {
        if (sheet == sheets.end() || sheet->Guide != &guide)
            without.push_back(&guide);
        while (sheet != sheets.end() && sheet->Guide == &guide)
            ++sheet;
    }
    return without;
}

TFormPrinted TFormPrinter::Print(std::span<const TFormGuide> guides, std::string_view version,
                                 const TFormSink& sink) {
    const std::vector<TFormSheet> sheets = Sheets(guides, version);
    std::size_t number = 0;
    for (const TFormSheet& sheet : sheets)
        sink(PrintSheet(sheet, ++number, sheets.size()));
    return {sheets.size(), GuidesWithoutPages(guides, sheets)};
}

void TFormPrinter::PrintBlank(const TFormTemplate& form, const TFormVariant& variant,
                              std::string_view version, const TFormSink& sink) {
    const TFormGeometry geometry = LayOutForm(form, variant, version, true);
    TFormPage page;
    page.Paper = {geometry.Width, geometry.Height, {geometry.Form}, {}};
    page.Form = &form;
    page.Sheet = 1;
    sink(page);
}

const TFormPrinter::TCommon& TFormPrinter::CommonOf(const TFormSheet& sheet) {
    if (common_.Guide == sheet.Guide && common_.Geometry == sheet.Geometry)
        return common_;
    common_ = {sheet.Guide, sheet.Geometry, std::make_shared<TDrawing>(), {}, {}};
    AddValues(sheet.Geometry->Boxes, *sheet.Guide->Node, false, *common_.Head, common_.Places);
    for (const TPlacedTable& placed : sheet.Geometry->Tables)
        common_.Rows.push_back(All(*sheet.Guide->Node, placed.Table->Items));
    return common_;
}

const TFormPage& TFormPrinter::PrintSheet(const TFormSheet& sheet, std::size_t number, std::size_t pages) {
    const TFormGeometry& geometry = *sheet.Geometry;
    const TCommon& common = CommonOf(sheet);
    page_.Paper.Width = geometry.Width;
    page_.Paper.Height = geometry.Height;
    page_.Paper.Common = {geometry.Form};
    page_.Paper.Own.Clear();
    page_.Places = common.Places;
    page_.Guide = sheet.Guide;
    page_.Form = sheet.Form;
    page_.Sheet = sheet.Sheet;
    if (sheet.Sheets == 1) {
        page_.Paper.Own = *common.Head;
    } else { // what all pages of a guide have in common is drawn once
        page_.Paper.Common.push_back(common.Head);
        AddText(page_.Paper.Own, geometry.Sheet, fmt::format("Folha {}/{}", sheet.Sheet, sheet.Sheets),
                kSheet);
    }
    for (std::size_t i = 0; i < common.Rows.size(); ++i) {
        const TPlacedTable& placed = geometry.Tables[i];
        AddLines(placed, common.Rows[i], (sheet.Sheet - 1) * static_cast<std::size_t>(placed.Table->Lines),
                 page_);
    }
    if (sheet.Sheet == sheet.Sheets)
        AddValues(geometry.Boxes, *sheet.Guide->Node, true, page_.Paper.Own, page_.Places);
    AddFooter(geometry, number, pages, page_.Paper.Own);
    return page_;
}

void TFormPrinter::AddValues(const std::vector<TPlacedBox>& boxes, const TXmlNode& guide, bool lastPage,
                             TDrawing& drawing, std::vector<TFormPlace>& places) const {
    for (const TPlacedBox& placed : boxes) {
        if (placed.LastPage != lastPage)
            continue;
        const TBoxValue value = ValueOfBox(*placed.Box, guide, options_.Terms);
        AddValue(*placed.Box, guide, placed.Value, placed.Style, value.Text, drawing);
        AddPlaces(*placed.Box, placed.Frame, value, places);
    }
}

void TFormPrinter::AddPlaces(const TFormBox& box, const TPaperRect& frame, const TBoxValue& value,
                             std::vector<TFormPlace>& places) {
    if (value.Node != nullptr)
        places.push_back({&box, frame, value.Node});
    for (const TXmlNode* node : value.Others)
        places.push_back({&box, frame, node});
}

void TFormPrinter::AddLines(const TPlacedTable& placed, std::span<const TXmlNode* const> rows,
                            std::size_t first, TFormPage& page) const {
    if (placed.Table->Items.empty())
        return;
    for (std::size_t line = 0; line < static_cast<std::size_t>(placed.Table->Lines); ++line) {
        const TXmlNode* row = first + line < rows.size() ? rows[first + line] : nullptr;
        const float down = static_cast<float>(line) * placed.ItemHeight;
        for (const TPlacedBox& column : placed.Columns) {
            const bool numbering = column.Box->Format == TFormFormat::Line && column.Box->Label.empty();
            if (row == nullptr && !numbering)
                continue;
            TBoxValue value;
            if (row != nullptr)
                value = ValueOfBox(*column.Box, *row, options_.Terms);
            if (numbering) {
                if (row == nullptr)
                    value.Text = std::to_string(NumberOfEmptyLine(*column.Box, rows, first + line));
                else if (value.Node == nullptr) // no number in the file: that of the line
                    value.Text = std::to_string(first + line + 1);
                value.Text += " -";
            }
            TPaperRect area = column.Value;
            area.Y += down;
            if (row != nullptr)
                AddValue(*column.Box, *row, area, column.Style, value.Text, page.Paper.Own);
            else
                AddText(page.Paper.Own, area, value.Text, column.Style);
            TPaperRect frame = column.Frame;
            frame.Y += down;
            AddPlaces(*column.Box, frame, value, page.Places);
        }
    }
}

std::size_t TFormPrinter::NumberOfEmptyLine(const TFormBox& box, std::span<const TXmlNode* const> rows,
                                            std::size_t line) {
    std::size_t last = rows.size();
    if (!rows.empty()) {
        const std::string text = ValueOfBox(box, *rows.back(), {}).Text;
        std::from_chars(text.data(), text.data() + text.size(), last);
    }
    return last + (line - rows.size()) + 1;
}

void TFormPrinter::AddFooter(const TFormGeometry& geometry, std::size_t number, std::size_t pages,
                             TDrawing& drawing) const {
    TPaperRect half = geometry.Footer;
    half.Width *= kFooterShare;
    if (options_.Errors.value_or(0) > 0)
        AddText(drawing, half, fmt::format("Contém erros: {}", *options_.Errors), kFooterLeft);
    half.X += half.Width;
    AddText(drawing, half, fmt::format("Página {} de {}", number, pages), kFooterRight);
}

void TFormPrinter::AddValue(const TFormBox& box, const TXmlNode& node, const TPaperRect& area,
                            const TTextStyle& style, std::string_view text, TDrawing& drawing) const {
    if (!options_.Terms || box.Codes.empty()) {
        AddText(drawing, area, text, style);
        return;
    }
    TTextStyle legible = style;
    legible.Smallest = kLegible;
    const auto before = static_cast<std::ptrdiff_t>(drawing.Texts.size());
    if (AddText(drawing, area, text, legible))
        return;
    drawing.Texts.erase(drawing.Texts.begin() + before, drawing.Texts.end());
    AddText(drawing, area, ValueOfBox(box, node, {}).Text, style);
}

TFormPrinter::TBoxValue TFormPrinter::ValueOfBox(const TFormBox& box, const TXmlNode& node,
                                                 const TTermText& terms) {
    TBoxValue told;
    if (box.Combination == TFormCombination::Sum) {
        told.Text = FormatFormValue(box.Format, SumOf(box, node));
        return told;
    }
    std::string& text = told.Text;
    const TXmlNode*& found = told.Node;
    const auto note = [&](const TXmlNode* value) {
        if (found == nullptr)
            found = value;
        else
            told.Others.push_back(value);
    };
    const auto shown = [&](const TXmlNode& value) {
        std::string shownText = FormatFormValue(box.Format, TextOf(value));
        if (terms && !shownText.empty())
            for (const std::string& table : box.Codes)
                if (const std::string term = terms(table, shownText); !term.empty())
                    return shownText.append(" - ").append(term);
        return shownText;
    };
    for (const TFormPath& path : box.Paths) {
        if (box.Occurrence == 1) {
            if (const TXmlNode* part = First(node, path); part != nullptr) {
                const std::string partText = shown(*part);
                text += text.empty() || partText.empty() ? "" : " - ";
                text += partText;
                note(part);
            }
        } else {
            const auto nodes = All(node, path);
            const auto wanted = static_cast<std::size_t>(box.Occurrence);
            if (wanted == 0)
                for (const TXmlNode* value : nodes) {
                    text += text.empty() ? "" : "; ";
                    text += shown(*value);
                    note(value);
                }
            else if (nodes.size() >= wanted)
                text = shown(*(found = nodes[wanted - 1]));
        }
        if (found != nullptr && box.Combination == TFormCombination::First)
            break;
    }
    if (box.Format == TFormFormat::Line && found != nullptr && found->FirstChildTag() != nullptr)
        text = std::to_string(PositionOf(*found));
    if (found == nullptr && box.Format == TFormFormat::Line && !box.Label.empty() && !box.Paths.empty()) {
        const TFormPath& path = box.Paths.front(); // the item that the line belongs to goes by its place
        if (const TXmlNode* item = First(node, std::span(path).first(path.size() - 1)); item != nullptr)
            text = std::to_string(PositionOf(*item));
    }
    if (text.empty() && terms && box.Term.size() == 2) {
        const TXmlNode* table = First(node, box.Term[0]);
        const TXmlNode* code = First(node, box.Term[1]);
        if (table != nullptr && code != nullptr)
            text = terms(TextOf(*table), TextOf(*code));
    }
    return told;
}

} // namespace conferix
