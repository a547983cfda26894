#include "rules/monitoring/guia_reader.h"

#include "rules/tuss_validation.h"

#include <algorithm>

namespace conferix {

namespace {

constexpr std::uint8_t kUnknown = 255; ///< a name that was not met yet
constexpr std::uint8_t kNoField = 254;

/// Sets what an entry of a table stands for.
template<class Fields>
struct TSetter {
    Fields& Into;
    TXmlNode& Node;

    void operator()(TXmlField Fields::*field) const { Into.*field = TXmlField(&Node); }
    void operator()(TNumberField Fields::*field) const {
        const TXmlField found(&Node);
        Into.*field = {found, found.Number()};
    }
    void operator()(TDateField Fields::*field) const {
        const TXmlField found(&Node);
        Into.*field = {found, ParseXsDate(found.Text())};
    }
    void operator()(bool Fields::*present) const { Into.*present = true; }
    void operator()(TNamedFields<Fields>* below) const { below->Read(Node, Into); }
    void operator()(const std::function<void(Fields&, TXmlNode&)>& each) const { each(Into, Node); }
};

} // namespace

template<class Fields>
std::uint8_t TNamedFields<Fields>::EntryOf(const TXmlName& name) {
    if (name.Id >= byName_.size())
        byName_.resize(name.Id + std::size_t{1}, kUnknown);
    std::uint8_t& known = byName_[name.Id];
    if (known == kUnknown) {
        const auto found = std::ranges::find(entries_, name.Local, &TEntry::Name);
        known = found == entries_.end() ? kNoField : static_cast<std::uint8_t>(found - entries_.begin());
    }
    return known;
}

template<class Fields>
void TNamedFields<Fields>::Read(TXmlNode& parent, Fields& fields) {
    std::uint64_t seen = 0;
    for (TXmlNode* child = parent.FirstChildTag(); child != nullptr; child = child->NextSiblingTag()) {
        const std::uint8_t index = EntryOf(child->Name());
        if (index == kNoField || ((seen >> index) & 1U) != 0)
            continue;
        const TTarget& target = entries_[index].Target;
        if (!std::holds_alternative<std::function<void(Fields&, TXmlNode&)>>(target))
            seen |= std::uint64_t{1} << index;
        std::visit(TSetter<Fields>{fields, *child}, target);
    }
}

template class TNamedFields<TItemFields>;
template class TNamedFields<TGuiaFields>;

void TGuiaReader::Read(const TGuiaMonitoramento& guia, TGuiaFields& fields) {
    std::vector<TItemFields> itens = std::move(fields.Itens); // for its memory
    itens.clear();
    fields = {};
    fields.Itens = std::move(itens);
    fields.Guia = guia;
    fields.Beneficiario = guia.DadosBeneficiario();
    if (guia.HasNode())
        guia_.Read(*guia.Node(), fields);
}

} // namespace conferix
