#include "xml/schema/schema_recovery.h"

#include "xml/lower_case.h"
#include "xml/name_likeness.h"
#include "xml/schema/content_recovery.h"
#include "xml/xml_node.h"

#include <algorithm>
#include <deque>

namespace conferix {

namespace {

/// What identifies a provider, under whatever name a version and a place have for it.
enum class TIdentifier : std::uint8_t { None, Cnpj, Cpf, CodeAtHealthPlan };

TIdentifier IdentifierOf(std::string_view name) {
    const std::string lower = LowerCase(name);
    if (lower.find("cnpj") != std::string::npos)
        return TIdentifier::Cnpj;
    if (lower.find("cpf") != std::string::npos)
        return TIdentifier::Cpf;
    return lower.starts_with("codigo") && lower.ends_with("naoperadora") ? TIdentifier::CodeAtHealthPlan
                                                                         : TIdentifier::None;
}

} // namespace

bool IsGuess(TSchemaMisnaming misnaming) {
    return misnaming == TSchemaMisnaming::Spelling || misnaming == TSchemaMisnaming::Content ||
           misnaming == TSchemaMisnaming::SameThing || misnaming == TSchemaMisnaming::Renamed;
}

const TSchemaComplexType* ContainerType(const TSchemaElement* element) {
    const TSchemaComplexType* type = element != nullptr ? element->ComplexType : nullptr;
    return type != nullptr && type->Content == TSchemaContent::ElementOnly ? type : nullptr;
}

const TSchemaPosition* PositionOf(const TSchemaComplexType& type, std::uint32_t symbol) {
    if (symbol == kSchemaNoSymbol)
        return nullptr;
    const auto& positions = type.Automaton.Positions;
    const auto found = std::find_if(positions.begin(), positions.end(), [symbol](const TSchemaPosition& p) {
        return p.Element != nullptr && p.Element->Symbol == symbol;
    });
    return found != positions.end() ? &*found : nullptr;
}

const TSchemaPosition* PositionOf(const TSchemaComplexType& type, const TSchemaChild& child) {
    if (const TSchemaPosition* exact = PositionOf(type, child.Name.Symbol))
        return exact;
    const auto& positions = type.Automaton.Positions;
    const auto found = std::ranges::find_if(positions, [&child](const TSchemaPosition& p) {
        return p.Element != nullptr && SameButForCase(p.Element->Name, child.Node->LocalName());
    });
    return found != positions.end() ? &*found : nullptr;
}

bool Resembles(const TSchemaElement& element, const TXmlNode& node) {
    const TXmlNode* first = node.FirstChildTag();
    const TSchemaComplexType* type = ContainerType(&element);
    if (type == nullptr || first == nullptr)
        return (type == nullptr) == (first == nullptr);
    return std::ranges::any_of(node.ChildTags(), [type](const TXmlNode& child) {
        return std::ranges::any_of(type->Automaton.Positions, [&child](const TSchemaPosition& position) {
            return position.Element != nullptr && position.Element->Name == child.LocalName();
        });
    });
}

namespace {

/// True when a container knows every child of an element, which has at least one.
bool KnowsContentOf(const TSchemaElement& element, const TXmlNode& node) {
    const TSchemaComplexType* type = ContainerType(&element);
    return type != nullptr && node.FirstChildTag() != nullptr &&
           std::ranges::all_of(node.ChildTags(), [type](const TXmlNode& child) {
               return std::ranges::any_of(type->Automaton.Positions, [&child](const TSchemaPosition& p) {
                   return p.Element != nullptr && p.Element->Name == child.LocalName();
               });
           });
}

} // namespace

TSchemaDistances::TSchemaDistances(const TSchemaAutomaton& automaton)
    : automaton_(automaton), rows_(automaton.Positions.size() + 1) {}

const TSchemaDistances::TRow& TSchemaDistances::Row(std::uint32_t state) {
    if (rows_[state] != nullptr)
        return *rows_[state];
    auto row = std::make_unique<TRow>();
    row->Steps.assign(automaton_.Positions.size(), kUnreachable);
    row->Previous.assign(automaton_.Positions.size(), kUnreachable);
    if (automaton_.Accepting[state] != 0)
        row->EndSteps = 0;
    std::deque<std::uint32_t> queue;
    const auto visit = [&](std::uint32_t from, std::uint32_t steps, std::uint32_t previous) {
        for (const std::uint32_t p : automaton_.Follow(from))
            if (row->Steps[p] == kUnreachable) {
                row->Steps[p] = steps;
                row->Previous[p] = previous;
                queue.push_back(p);
            }
    };
    visit(state, 0, kUnreachable);
    while (!queue.empty()) {
        const std::uint32_t p = queue.front();
        queue.pop_front();
        if (row->EndSteps == kUnreachable && automaton_.Accepting[p + 1] != 0) {
            row->EndSteps = row->Steps[p] + 1;
            row->EndPrevious = p;
        }
        visit(p + 1, row->Steps[p] + 1, p);
    }
    rows_[state] = std::move(row);
    return *rows_[state];
}

std::vector<std::uint32_t> TSchemaDistances::Path(std::uint32_t state,
                                                  std::optional<std::uint32_t> position) {
    const TRow& row = Row(state);
    std::vector<std::uint32_t> path;
    for (std::uint32_t p = position ? row.Previous[*position] : row.EndPrevious; p != kUnreachable;
         p = row.Previous[p])
        path.push_back(p);
    std::reverse(path.begin(), path.end());
    return path;
}

std::vector<TSchemaDecision> TSchemaRecovery::Recover(const TSchemaComplexType& type, const TXmlNode& parent,
                                                      std::span<const TSchemaChild> children,
                                                      std::optional<std::uint32_t> forgiven,
                                                      const TSchemaComplexType* outer,
                                                      TSchemaFaultList& faults) {
    return TContentRecovery(*this, {type, parent.LocalName(), parent, children, forgiven, outer}, faults)
        .Run();
}

bool TSchemaRecovery::CanGo(const TSchemaAutomaton& automaton, std::uint32_t position) {
    if (automaton.IsAll)
        return !automaton.Positions[position].Required;
    const auto [known, added] = canGo_.try_emplace({&automaton, position}, true);
    if (!added)
        return known->second;
    // From every place before it, the content goes on as it does after it.
    const auto goesOn = [&](std::uint32_t state) {
        const auto follow = automaton.Follow(state);
        const auto after = automaton.Follow(position + 1);
        return (automaton.Accepting[position + 1] == 0 || automaton.Accepting[state] != 0) &&
               std::all_of(after.begin(), after.end(), [&](std::uint32_t next) {
                   return std::find(follow.begin(), follow.end(), next) != follow.end();
               });
    };
    for (std::uint32_t state = 0; state <= automaton.Positions.size() && known->second; ++state) {
        const auto follow = automaton.Follow(state);
        if (std::find(follow.begin(), follow.end(), position) != follow.end())
            known->second = goesOn(state);
    }
    return known->second;
}

const TSchemaMeaning& TSchemaRecovery::MeaningOf(const TSchemaAutomaton& automaton, const TSchemaChild& child,
                                                 std::optional<std::uint32_t> forgiven) {
    const bool silent = child.Name.Undeclared || (forgiven && *forgiven == child.Name.Namespace);
    const auto [known, added] =
        meanings_.try_emplace(TMeaningKey{&automaton, &child.Node->Name(), child.Name.Namespace, silent});
    if (added)
        known->second = FindMeaning(automaton, child, silent);
    return known->second;
}

TSchemaMeaning TSchemaRecovery::FindMeaning(const TSchemaAutomaton& automaton, const TSchemaChild& child,
                                            bool silent) const {
    TSchemaMeaning meaning;
    const std::string_view local = child.Node->LocalName();
    const auto collect = [&](TSchemaMisnaming misnaming, const auto& fits) {
        meaning.Misnaming = misnaming;
        for (std::uint32_t p = 0; p < automaton.Positions.size(); ++p)
            if (const TSchemaElement* element = automaton.Positions[p].Element;
                element != nullptr && fits(*element))
                meaning.Positions.push_back(p);
        return !meaning.Positions.empty();
    };
    if (collect(silent ? TSchemaMisnaming::Silent : TSchemaMisnaming::Namespace,
                [&](const TSchemaElement& element) {
                    return element.Name == local && (silent || element.Namespace != child.Name.Namespace);
                }))
        return meaning;
    if (collect(TSchemaMisnaming::Case,
                [&](const TSchemaElement& element) { return SameButForCase(element.Name, local); }))
        return meaning;
    using TRelation = ISchemaOtherVersions::TRelation;
    const auto relation = [&](const TSchemaElement& element) {
        return others_ != nullptr ? others_->Relate(*child.Node, element.Name) : TRelation::None;
    };
    if (collect(TSchemaMisnaming::Renamed, [&](const TSchemaElement& element) {
            return Resembles(element, *child.Node) && relation(element) == TRelation::Renamed;
        }))
        return meaning;
    std::size_t least = kNotAlike;
    for (const TSchemaPosition& position : automaton.Positions)
        if (position.Element != nullptr && Resembles(*position.Element, *child.Node))
            least = std::min(least, NameSlips(position.Element->Name, local));
    if (least != kNotAlike && collect(TSchemaMisnaming::Spelling, [&](const TSchemaElement& element) {
            return NameSlips(element.Name, local) == least && Resembles(element, *child.Node) &&
                   relation(element) != TRelation::Distinct;
        }))
        return meaning;
    // What one of the elements expected here holds under this very name lacks that element around it.
    const auto holdsIt = [&](const TSchemaPosition& position) {
        const TSchemaComplexType* type = ContainerType(position.Element);
        return type != nullptr &&
               std::ranges::any_of(type->Automaton.Positions, [&](const TSchemaPosition& inner) {
                   return inner.Element != nullptr && inner.Element->Name == local;
               });
    };
    const TIdentifier identifier =
        std::ranges::any_of(automaton.Positions, holdsIt) ? TIdentifier::None : IdentifierOf(local);
    if (identifier != TIdentifier::None &&
        collect(TSchemaMisnaming::SameThing, [&](const TSchemaElement& element) {
            return IdentifierOf(element.Name) == identifier && Resembles(element, *child.Node);
        }))
        return meaning;
    meaning.Positions.clear();
    if (std::ranges::none_of(automaton.Positions, holdsIt) &&
        collect(TSchemaMisnaming::Content,
                [&](const TSchemaElement& element) {
                    return KnowsContentOf(element, *child.Node) && relation(element) != TRelation::Distinct;
                }) &&
        std::ranges::all_of(meaning.Positions, [&](std::uint32_t position) {
            return automaton.Positions[position].Element->Name ==
                   automaton.Positions[meaning.Positions.front()].Element->Name;
        }))
        return meaning;
    return {};
}

TSchemaFault MakeSchemaFault(TSchemaFaultCode code, const TXmlNode& node) {
    TSchemaFault fault;
    fault.Code = code;
    fault.Node = &node;
    const TXmlPlace place = node.Place();
    fault.Line = place.Line;
    fault.LinePos = place.LinePos;
    fault.FilePos = place.FilePos;
    return fault;
}

} // namespace conferix
