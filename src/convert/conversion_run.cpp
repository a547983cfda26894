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
    int line = at->Line();
    while (line == 0 && at->Parent() != nullptr) {
        at = at->Parent();
        line = at->Line();
    }
    return line;
}

void TConversionRun::StartStep(std::string_view from, std::string_view to) {
    steps_.push_back(fmt::format("{} -> {}", from, to));
}

TConversionNote TConversionRun::MakeNote(TConversionNoteType type, const TXmlNode& node) const {
    TConversionNote note;
    note.Type = type;
    if (!steps_.empty())
        note.Step = steps_.back();
    if (const TXmlNode* guide = GuideOf(node))
        note.Guia = GuideNumber(*guide);
    note.Line = SourceLine(node);
    note.Element = ElementPath(node);
    note.Node = &node;
    return note;
}

void TConversionRun::Add(TConversionNoteType type, const TXmlNode& node, std::string text) {
    Add(type, node, node.TextWithCData(), std::move(text));
}

TConversionNote& TConversionRun::Add(TConversionNoteType type, const TXmlNode& node, std::string value,
                                     std::string text) {
    TConversionNote note = MakeNote(type, node);
    note.Value = std::move(value);
    note.Text = std::move(text);
    return notes_.emplace_back(std::move(note));
}

void TConversionRun::AddBelow(TConversionNoteType type, const TXmlNode& parent, std::string_view name,
                              std::string value, std::string text) {
    TConversionNote note = MakeNote(type, parent);
    if (parent.Parent() == nullptr || !parent.Parent()->IsTag() || GuideOf(parent) == &parent)
        note.Element = name;
    else
        note.Element.append("/").append(name);
    note.Value = std::move(value);
    note.Text = std::move(text);
    notes_.push_back(std::move(note));
}

void TConversionRun::AddLosses(const TXmlNode& element, const std::string& text, bool ownText) {
    for (const TXmlNode* node = &element; node != nullptr; node = node->NextInWalk(&element)) {
        if (!node->IsTag())
            continue;
        const std::string value = node->TextWithCData();
        const bool leaf = node->FirstChildTag() == nullptr;
        if ((ownText || node != &element) && (leaf || !TrimXmlSpace(value).empty()))
            Add(TConversionNoteType::ntLoss, *node, leaf ? value : std::string(TrimXmlSpace(value)), text);
        for (const TXmlAttribute& attribute : node->Attributes())
            if (attribute.QualifiedName() != "xmlns" && attribute.Name().Prefix != "xmlns")
                AddBelow(TConversionNoteType::ntLoss, *node, fmt::format("@{}", attribute.QualifiedName()),
                         std::string(attribute.Value()), text);
    }
}

} // namespace conferix
