#include "validation/finding_item.h"

#include "xml/cut_text.h"
#include "xml/xml_document.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace conferix {

namespace {

/// Elements that are one procedure or expense, in all versions.
constexpr std::array<std::string_view, 6> kItems = {"procedimentoExecutado", "procedimentoRealizado",
                                                    "procedimentosRevisao",  "despesa",
                                                    "procedimentos",         "procedimentosExecutados"};
constexpr std::array<std::string_view, 3> kCodes = {"codigoProcedimento", "codigo", "codProcedimento"};

template<std::size_t Size>
bool IsOneOf(const std::array<std::string_view, Size>& names, const TXmlNode& node) {
    return std::ranges::find(names, node.LocalName()) != names.end();
}

/// An item; the same name may be that of their container.
bool IsItem(const TXmlNode& node) {
    return IsOneOf(kItems, node) && node.Child("procedimentoExecutado") == nullptr;
}

} // namespace

std::string FindingItem(const TXmlNode& element) {
    if (!element.Document().HasLongLines())
        return {};
    const TXmlNode* item = &element;
    while (item != nullptr && !(item->IsTag() && IsItem(*item)))
        item = item->Parent();
    if (item == nullptr || item->Parent() == nullptr)
        return {};
    std::size_t number = 0;
    for (const TXmlNode& sibling : item->Parent()->ChildTags()) {
        number += sibling.LocalName() == item->LocalName() ? 1U : 0U;
        if (&sibling == item)
            break;
    }
    for (const TXmlNode* node = item; node != nullptr; node = node->NextInWalk(item))
        if (node->IsTag() && IsOneOf(kCodes, *node) && !node->Value().empty())
            return fmt::format("item {} (código {})", number, CutText(node->Value()));
    return fmt::format("item {}", number);
}

} // namespace conferix
