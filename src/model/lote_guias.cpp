#include "model/lote_guias.h"

#include "model/tiss_exceptions.h"
#include "xml/xml_document.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <unordered_set>

namespace conferix {

namespace {

/// Adds a child that is a guide. One whose name has a slip is still the guide that it was meant to be: the
/// schema rule tells of the name, the other rules judge the content.
void AppendGuia(std::vector<TGuiaTissBase>& guias, TXmlNode& child, const TLoteGuiasNames& names) {
    const TGuiaNames* nearest = nullptr;
    std::size_t tipoNearest = 0;
    std::size_t least = kNotAlike;
    for (std::size_t tipo = 0; tipo < kTiposGuia; ++tipo)
        for (const TGuiaNames& guia : names.Guias[tipo]) {
            if (child.LocalName() == guia.Elemento) {
                guias.emplace_back(&child, static_cast<TEnumTipoGuia>(tipo), guia);
                return;
            }
            if (const std::size_t slips = NameSlips(child.LocalName(), guia.Elemento); slips < least) {
                least = slips;
                nearest = &guia;
                tipoNearest = tipo;
            }
        }
    if (nearest != nullptr)
        guias.emplace_back(&child, static_cast<TEnumTipoGuia>(tipoNearest), *nearest);
}

void AppendGuias(std::vector<TGuiaTissBase>& guias, TXmlNode& parent, const TLoteGuiasNames& names) {
    for (TXmlNode& child : parent.ChildTags())
        AppendGuia(guias, child, names);
}

bool IsGroup(const TXmlNode& element, const TLoteGuiasNames& names) {
    return std::ranges::find(names.Grupos, element.LocalName()) != names.Grupos.end();
}

bool Holds(const TXmlNode& element, std::uint32_t offset) {
    return element.ByteStart() <= offset && offset < element.ByteEnd();
}

} // namespace

std::vector<TGuiaTissBase> TGuiasTiss::EmOrdemDoDocumento() const {
    std::vector<TGuiaTissBase> guias;
    if (!HasNode())
        return guias;
    if (names_->Grupos.empty())
        AppendGuias(guias, *Node(), *names_);
    else
        for (TXmlNode& grupo : Node()->ChildTags())
            if (IsGroup(grupo, *names_))
                AppendGuias(guias, grupo, *names_);
    return guias;
}

TEnumTipoGuia TLoteGuiasBase::TipoGuia() const {
    const std::vector<IGuiaTiss> guias = GuiasTiss().EmOrdemDoDocumento();
    if (guias.empty())
        throw ELoteGuiasNotFound();
    return std::ranges::min(guias, {}, &IGuiaTiss::TipoGuia).TipoGuia();
}

std::vector<IGuiaTiss> TLoteGuiasBase::Guias() const {
    std::vector<IGuiaTiss> guias = GuiasTiss().EmOrdemDoDocumento();
    std::ranges::stable_sort(guias, {}, &IGuiaTiss::TipoGuia);
    return guias;
}

std::int64_t TLoteGuiasBase::QtdGuias() const {
    return static_cast<std::int64_t>(GuiasTiss().EmOrdemDoDocumento().size());
}

TGuiasNaoLidas TLoteGuiasBase::GuiasNaoLidas() const {
    TGuiasNaoLidas naoLidas;
    if (!HasNode())
        return naoLidas;
    std::unordered_set<const TXmlNode*> read;
    for (const IGuiaTiss& guia : GuiasTiss().EmOrdemDoDocumento())
        read.insert(guia.Node());
    const TXmlNode* const container = GuiasTiss().Node();
    const auto append = [&](const TXmlNode& place) {
        for (const TXmlNode& child : place.ChildTags())
            // The lot itself has more than guides, where these stand in it by mistake.
            if (!read.contains(&child) && (&place != Node() || child.LocalName().starts_with("guia")))
                naoLidas.Estranhas.push_back(&child);
    };
    if (names_->Grupos.empty())
        append(*container);
    else
        for (const TXmlNode& grupo : container->ChildTags())
            if (IsGroup(grupo, *names_))
                append(grupo);
            else
                naoLidas.Estranhas.push_back(&grupo);
    for (TXmlNode& other : Node()->ChildTags())
        if (&other != container && other.LocalName() == names_->GuiasTiss) {
            std::erase(naoLidas.Estranhas, &other);
            for (const IGuiaTiss& guia : TGuiasTiss(&other, *names_).EmOrdemDoDocumento())
                naoLidas.ForaDoLugar.push_back(guia.Node());
        }
    if (const TXmlNode* const sender = Node()->Parent(); sender != nullptr && sender->Parent() != nullptr)
        for (TXmlNode& message : Node()->Parent()->Parent()->ChildTags())
            if (message.LocalName() == sender->LocalName())
                for (TXmlNode& lote : message.ChildTags())
                    if (&lote != Node() && lote.LocalName() == Node()->LocalName())
                        for (const IGuiaTiss& guia :
                             TLoteGuiasBase(&lote, *names_).GuiasTiss().EmOrdemDoDocumento())
                            naoLidas.ForaDoLugar.push_back(guia.Node());
    return naoLidas;
}

std::vector<std::string> TGuiasNaoLidas::Textos(std::string_view lido) const {
    std::vector<std::string> textos;
    const auto add = [&](const std::vector<const TXmlNode*>& nodes, std::string_view one,
                         std::string_view many) {
        if (!nodes.empty())
            textos.push_back(fmt::format(fmt::runtime(nodes.size() == 1 ? one : many), nodes.size(),
                                         nodes.front()->QualifiedName(), nodes.front()->Line(), lido));
    };
    add(Estranhas,
        "1 elemento no lugar de guia, <{1}> na linha {2}, não é uma guia que a versão do arquivo "
        "tenha, e não é {3}o.",
        "{0} elementos no lugar de guias, o primeiro <{1}> na linha {2}, não são guias que a versão do "
        "arquivo tenha, e não são {3}os.");
    add(ForaDoLugar,
        "1 guia, <{1}> na linha {2}, está em outro lote ou em uma segunda lista de guias, e não "
        "é {3}a.",
        "{0} guias, a primeira <{1}> na linha {2}, estão em outro lote ou em uma segunda lista de guias, e "
        "não "
        "são {3}as.");
    return textos;
}

std::optional<IGuiaTiss> TLoteGuiasBase::GuiaTissByPosition(std::int64_t line, std::int64_t linePos) const {
    if (!HasNode())
        return std::nullopt;
    const std::uint32_t offset = Node()->Document().OffsetOf(line, linePos);
    // Guides stand side by side, so that at most one holds a place and the order of search does not matter.
    for (const IGuiaTiss& guia : GuiasTiss().EmOrdemDoDocumento())
        if (Holds(*guia.Node(), offset))
            return guia;
    return std::nullopt;
}

double TLoteGuiasBase::ValorTotal() const {
    double sum = 0;
    for (const IGuiaTiss& guia : Guias())
        sum += guia.ValorTotalGuia();
    return sum;
}

TGuiaLocator::TGuiaLocator(const ILoteGuias& lote) : guias_(lote.GuiasTiss().EmOrdemDoDocumento()) {
    // Guides that a correction added have no place in the text.
    std::erase_if(guias_, [](const IGuiaTiss& guia) { return guia.Node()->ByteEnd() == 0; });
}

const IGuiaTiss* TGuiaLocator::ByOffset(std::uint32_t offset) const {
    const auto after = std::ranges::upper_bound(
        guias_, offset, {}, [](const IGuiaTiss& guia) { return guia.Node()->ByteStart(); });
    if (after == guias_.begin() || !Holds(*std::prev(after)->Node(), offset))
        return nullptr;
    return &*std::prev(after);
}

const IGuiaTiss* TGuiaLocator::ByNode(const TXmlNode& node) const {
    // A node that a correction added has no place of its own; its nearest ancestor in the text has.
    const TXmlNode* placed = &node;
    while (placed != nullptr && placed->ByteEnd() == 0)
        placed = placed->Parent();
    return placed != nullptr ? ByOffset(placed->ByteStart()) : nullptr;
}

} // namespace conferix
