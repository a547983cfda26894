#include "app/guide_pages.h"

#include "model/mensagem_tiss.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace conferix {

namespace {

/// The innermost element around a byte of the text; null for none.
const TXmlNode* ElementAt(const TXmlDocument& document, std::uint32_t offset) {
    const TXmlNode* around = nullptr;
    const TXmlNode* inside = document.Element();
    while (inside != nullptr) {
        if (offset < inside->ByteStart() || offset >= inside->ByteEnd()) {
            inside = inside->NextSiblingTag();
            continue;
        }
        around = inside;
        inside = inside->FirstChildTag();
    }
    return around;
}

/// The place in the text that somebody means who points at a byte of it: between elements that of the one
/// which begins behind it in the line, else of the one that ends before it.
std::uint32_t MeantPlace(std::string_view text, std::uint32_t offset) {
    constexpr std::string_view kBlanks = " \t";
    const std::size_t behind = text.find_first_not_of(kBlanks, offset);
    if (behind != std::string_view::npos && text.substr(behind).starts_with('<') &&
        !text.substr(behind).starts_with("</"))
        return static_cast<std::uint32_t>(behind);
    const bool ends = behind == std::string_view::npos ||
                      std::string_view("<\r\n").find(text[behind]) != std::string_view::npos;
    const std::size_t before = text.substr(0, offset).find_last_not_of(kBlanks);
    return ends && before != std::string_view::npos && text[before] == '>'
               ? static_cast<std::uint32_t>(before)
               : offset;
}

bool IsWithin(const TXmlNode* node, const TXmlNode& around) {
    while (node != nullptr && node != &around)
        node = node->Parent();
    return node != nullptr;
}

std::string NumberOf(const TFormGuide& guide) {
    return guide.Number.empty() ? "sem número" : guide.Number;
}

/// The boxes of a page whose values are those of an element, or stand in it.
TBoxPlace BoxesOf(const TFormPage& page, const TXmlNode& element) {
    TBoxPlace place;
    const TFormPlace* last = nullptr; // those of one box stand together
    for (const TFormPlace& value : page.Places)
        if (IsWithin(value.Node, element)) {
            if (last != nullptr && last->Box == value.Box && last->Frame.Y == value.Frame.Y)
                continue;
            last = &value;
            place.Frames.push_back(value.Frame);
            const TFormBox& box = *value.Box;
            place.Text = box.Number.empty() ? box.Label : fmt::format("{} - {}", box.Number, box.Label);
        }
    if (place.Frames.size() > 1)
        place.Text = fmt::format("{} caixas de <{}>", place.Frames.size(), element.LocalName());
    else if (place.Text.empty()) // the number of a line
        place.Text = fmt::format("<{}>", element.LocalName());
    return place;
}

} // namespace

TGuidePages::TGuidePages(std::shared_ptr<const IArquivoTiss> file, std::optional<std::size_t> errors,
                         std::filesystem::path terminology)
    : file_(std::move(file)), errors_(errors), terminology_(std::move(terminology)),
      templates_(InstalledForms()), guides_(FormGuidesOf(*file_)), printer_(templates_, {}),
      all_(printer_.Sheets(guides_, file_->Versao())) {
    Choose({});
    for (const auto& form : templates_)
        if (std::ranges::find(sheets_, form.get(), &TFormSheet::Form) != sheets_.end())
            forms_.emplace_back(form->Name, form->Title);
}

std::vector<std::string> TGuidePages::NotPrinted() const {
    const auto* message = dynamic_cast<const TMensagemTiss*>(file_.get());
    return message != nullptr ? message->LoteGuias().GuiasNaoLidas().Textos("impress")
                              : std::vector<std::string>();
}

std::string TGuidePages::GuideTitle(std::size_t guide) const {
    const TFormGuide& told = guides_[guide];
    const auto form = std::ranges::find_if(templates_, [&](const auto& other) {
        return !other->IsAnnex() && std::ranges::find(other->Guides, told.Kind) != other->Guides.end();
    });
    return fmt::format("{} - {}", NumberOf(told), form != templates_.end() ? (*form)->Title : told.Kind);
}

void TGuidePages::Choose(TGuideChoice choice) {
    TFormOptions options;
    if (choice.Terms)
        options.Terms = FormTermsOf(terminology_);
    if (choice.ErrorsBelow)
        options.Errors = errors_;
    printer_.SetOptions(std::move(options));
    choice_ = std::move(choice);
    sheets_.clear();
    printed_ = 0;
    const TFormGuide* last = nullptr; // pages of a guide stand together
    for (const TFormSheet& sheet : all_) {
        const auto guide = static_cast<std::size_t>(sheet.Guide - guides_.data());
        if ((!choice_.Guides.empty() && !choice_.Guides[guide]) ||
            (!choice_.Form.empty() && choice_.Form != sheet.Form->Name))
            continue;
        sheets_.push_back(sheet);
        printed_ += std::exchange(last, sheet.Guide) == sheet.Guide ? 0 : 1;
    }
}

const TFormPage& TGuidePages::Page(std::size_t page) {
    return printer_.PrintSheet(sheets_[page], page + 1, sheets_.size());
}

std::size_t TGuidePages::GuideOf(std::size_t page) const {
    return static_cast<std::size_t>(sheets_[page].Guide - guides_.data());
}

std::optional<std::size_t> TGuidePages::FirstPageOf(std::size_t guide) const {
    const auto sheet = std::ranges::find(sheets_, &guides_[guide], &TFormSheet::Guide);
    if (sheet == sheets_.end())
        return std::nullopt;
    return static_cast<std::size_t>(sheet - sheets_.begin());
}

std::size_t TGuidePages::NearestPageOf(std::size_t guide) const {
    const std::uint32_t start = guides_[guide].Node->ByteStart();
    const auto sheet = std::ranges::find_if(
        sheets_, [&](const TFormSheet& other) { return other.Guide->Node->ByteStart() >= start; });
    if (sheet == sheets_.end())
        return sheets_.empty() ? 0 : sheets_.size() - 1;
    return static_cast<std::size_t>(sheet - sheets_.begin());
}

std::string TGuidePages::PageTitle(std::size_t page) const {
    const TFormSheet& sheet = sheets_[page];
    std::string title = fmt::format("Guia {}, {}", NumberOf(*sheet.Guide), sheet.Form->Title);
    if (sheet.Sheets > 1)
        title += fmt::format(", folha {} de {}", sheet.Sheet, sheet.Sheets);
    return title;
}

TBoxPlace TGuidePages::FindBox(std::int64_t line, std::int64_t linePos) {
    const TXmlDocument& document = *file_->Xml();
    const TXmlNode* const element =
        line > 0 ? ElementAt(document, MeantPlace(document.Text(), document.OffsetOf(line, linePos)))
                 : nullptr;
    if (element == nullptr)
        throw ENoBox("Este lugar não está em uma guia; só o que está em uma guia tem caixa no formulário.");
    const auto guide = std::ranges::find_if(
        guides_, [&](const TFormGuide& other) { return IsWithin(element, *other.Node); });
    if (guide == guides_.end())
        throw ENoBox(
            fmt::format("O elemento <{}> está fora das guias; só o que está em uma guia tem caixa no "
                        "formulário.",
                        element->LocalName()));
    if (element == guide->Node)
        throw ENoBox(fmt::format("Este lugar é a guia {} por inteiro, não um elemento que tem caixa no "
                                 "formulário.",
                                 NumberOf(*guide)));
    TGuideChoice all = choice_;
    all.Guides.clear();
    all.Form.clear();
    Choose(std::move(all));
    for (std::size_t page = 0; page < sheets_.size(); ++page) {
        if (sheets_[page].Guide != &*guide)
            continue;
        TBoxPlace place = BoxesOf(Page(page), *element);
        if (!place.Frames.empty()) {
            place.Page = page;
            return place;
        }
    }
    throw ENoBox(fmt::format("O elemento <{}> da guia {} não tem caixa no formulário.", element->LocalName(),
                             NumberOf(*guide)));
}

} // namespace conferix
