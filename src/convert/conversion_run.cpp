#include "convert/conversion_run.h"

#include <fmt/format.h>

#include <algorithm>

namespace conferix {

namespace {

constexpr std::string_view kGuiasTiss = "guiasTISS";

bool IsGuide(const TXmlNode& node) {
    return node.Parent() != nullptr && node.Parent()->LocalName() == kGuiasTiss;
}

} // namespace

const TXmlNode* GuideOf(const TXmlNode& node) {
    const TXmlNode* at = &node;
    while (at != nullptr && !IsGuide(*at))
        at = at->Parent();
    return at;
}

std::string_view GuideNumber(const TXmlNode& guide) {
    // Stands in the header, which comes first, so that this is no walk through the guide.
    return ValueOf(guide.FirstDescendant("numeroGuiaPrestador"));
}

std::string ElementPath(const TXmlNode& node) {
    std::vector<std::string_view> names;
    for (const TXmlNode* at = &node; at != nullptr && at->IsTag(); at = at->Parent()) {
        names.push_back(at->LocalName());
        if (IsGuide(*at))
            break;
    }
    if (names.size() > 1)
        names.pop_back();
    std::reverse(names.begin(), names.end());
    std::string path;
    for (const std::string_view name : names)
        path.append(path.empty() ? "" : "/").append(name);
    return path;
}

int SourceLine(const TXmlNode& node) {
    const TXmlNode* at = &node;
    while (at->Line() == 0 && at->Parent() != nullptr)
        at = at->Parent();
    return at->Line();
}

void TConversionRun::StartStep(std::string_view from, std::string_view to) {
    steps_.push_back(fmt::format("{} -> {}", from, to));
}

TConversionNote TConversionRun::MakeNote(TConversionNoteType tipo, const TXmlNode& node) const {
    TConversionNote note;
    note.Tipo = tipo;
    if (!steps_.empty())
        note.Passo = steps_.back();
    if (const TXmlNode* guide = GuideOf(node))
        note.Guia = GuideNumber(*guide);
    note.Linha = SourceLine(node);
    note.Elemento = ElementPath(node);
    note.No = &node;
    return note;
}

void TConversionRun::Add(TConversionNoteType tipo, const TXmlNode& node, std::string texto) {
    Add(tipo, node, node.TextWithCData(), std::move(texto));
}

TConversionNote& TConversionRun::Add(TConversionNoteType tipo, const TXmlNode& node, std::string valor,
                                     std::string texto) {
    TConversionNote note = MakeNote(tipo, node);
    note.Valor = std::move(valor);
    note.Texto = std::move(texto);
    return notes_.emplace_back(std::move(note));
}

void TConversionRun::AddBelow(TConversionNoteType tipo, const TXmlNode& parent, std::string_view name,
                              std::string valor, std::string texto) {
    TConversionNote note = MakeNote(tipo, parent);
    if (parent.Parent() == nullptr || !parent.Parent()->IsTag() || GuideOf(parent) == &parent)
        note.Elemento = name;
    else
        note.Elemento.append("/").append(name);
    note.Valor = std::move(valor);
    note.Texto = std::move(texto);
    notes_.push_back(std::move(note));
}

void TConversionRun::AddLosses(const TXmlNode& element, const std::string& texto, bool ownText) {
    for (const TXmlNode* node = &element; node != nullptr; node = node->NextInWalk(&element)) {
        if (!node->IsTag())
            continue;
        const std::string value = node->TextWithCData();
        const bool leaf = node->FirstChildTag() == nullptr;
        if ((ownText || node != &element) && (leaf || !TrimXmlSpace(value).empty()))
            Add(TConversionNoteType::ntPerda, *node, leaf ? value : std::string(TrimXmlSpace(value)), texto);
        for (const TXmlAttribute& attribute : node->Attributes())
            if (attribute.QualifiedName() != "xmlns" && attribute.Name().Prefix != "xmlns")
                AddBelow(TConversionNoteType::ntPerda, *node, fmt::format("@{}", attribute.QualifiedName()),
                         std::string(attribute.Value()), texto);
    }
}

} // namespace conferix
