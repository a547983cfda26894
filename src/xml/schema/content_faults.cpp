#include "xml/schema/content_recovery.h"

namespace conferix {

namespace {

/// From so many elements out of order on, the right order is told instead of each place.
constexpr std::size_t kOrderTold = 3;

} // namespace

void TContentRecovery::ReportItems() {
    for (TItem& item : items_) {
        if (item.Unjudged)
            continue;
        if (item.Position != kNone)
            ReportNames(item);
        else if (item.Misnaming != TSchemaMisnaming::None && !item.Candidates().empty())
            ReportDisplacedMisnamed(item);
        else if (item.Candidates().empty() ||
                 automaton_.Positions[item.Candidates().front()].Element == nullptr)
            ReportUnknown(item);
        else
            ReportDisplaced(item);
    }
}

void TContentRecovery::ReportNames(const TItem& item) {
    if (item.Misnaming == TSchemaMisnaming::None || item.Misnaming == TSchemaMisnaming::Silent)
        return;
    const TSchemaElement& element =
        *automaton_.Positions[item.Position != kNone ? item.Position : item.Candidates().front()].Element;
    for (std::uint32_t i = item.First; i < item.First + item.Count; ++i) {
        const TXmlNode& node = *children_[i].Node;
        TSchemaFault& fault = Add(CodeOf(item.Misnaming), node, node.LocalName());
        const bool elsewhere = item.Misnaming == TSchemaMisnaming::Namespace;
        fault.Bound = elsewhere ? owner_.Set().NamespaceUri(element.Namespace) : element.Name;
        if (elsewhere)
            fault.Found = NamespaceOf(node);
        if (item.Misnaming == TSchemaMisnaming::Spelling || item.Misnaming == TSchemaMisnaming::Content ||
            NamesOf(item.Candidates()).size() != 1)
            continue;
        fault.Remedy = TSchemaRemedy::Rename;
        if (!elsewhere && IsInOtherNamespace(children_[i], element))
            fault.Namespace = owner_.Set().NamespaceUri(element.Namespace);
        if (item.Position == kNone && !content_.Missing && HasOnePlace(item))
            fault.Content = &content_.Type;
    }
}

bool TContentRecovery::IsInOtherNamespace(const TSchemaChild& child, const TSchemaElement& element) const {
    return child.Name.Namespace != element.Namespace && !child.Name.Undeclared &&
           !(content_.Forgiven && *content_.Forgiven == child.Name.Namespace);
}

TSchemaFaultCode TContentRecovery::CodeOf(TSchemaMisnaming misnaming) {
    switch (misnaming) {
    case TSchemaMisnaming::Namespace:
        return TSchemaFaultCode::WrongNamespace;
    case TSchemaMisnaming::Case:
        return TSchemaFaultCode::WrongCase;
    case TSchemaMisnaming::Spelling:
    case TSchemaMisnaming::Content:
        return TSchemaFaultCode::Misspelled;
    default:
        return TSchemaFaultCode::RenamedElement;
    }
}

void TContentRecovery::ReportDisplacedMisnamed(TItem& item) {
    const TMissing* missing = TakeMissingOf(item);
    if (missing == nullptr && IsGuess(item.Misnaming)) {
        item.Unjudged = true;
        ReportUnknown(item);
    } else {
        ReportNames(item);
    }
}

const TContentRecovery::TMissing* TContentRecovery::TakeMissingOf(const TItem& item) {
    return TakeMissing([&](std::uint32_t p) {
        return std::find(item.Candidates().begin(), item.Candidates().end(), p) != item.Candidates().end();
    });
}

void TContentRecovery::ReportDisplaced(const TItem& item) {
    const std::uint32_t own = item.Candidates().front();
    const TSchemaPosition& particle = automaton_.Positions[own];
    const std::string& name = particle.Element->Name;
    // A displaced element is not missing at its right place too.
    if (const TMissing* missing = TakeMissingOf(item))
        return ReportOutOfOrder(item, name,
                                missing->BeforeItem != kNone ? &items_[missing->BeforeItem] : nullptr);
    const TItem* excluder = nullptr;
    const TItem* before = nullptr;
    for (const auto& [position, placed] : placed_) {
        if (position == own)
            continue;
        if (position > own && (before == nullptr || placed.First < before))
            before = placed.First;
        if (!automaton_.IsAll && (excluder == nullptr || placed.First < excluder) && Exclude(own, position))
            excluder = placed.First;
    }
    const auto placed = placed_.find(own);
    if (placed != placed_.end() && particle.Max != kSchemaUnbounded &&
        placed->second.Count + item.Count > particle.Max) {
        TSchemaFault& fault = Add(TSchemaFaultCode::TooMany, NodeOf(item), name);
        fault.Count = placed->second.Count + item.Count;
        fault.Limit = particle.Max;
    } else if (excluder != nullptr) {
        Add(TSchemaFaultCode::ExclusiveElement, NodeOf(item), name).Expected = {
            std::string(NodeOf(*excluder).LocalName())};
    } else {
        ReportOutOfOrder(item, name, before);
    }
}

void TContentRecovery::ReportOutOfOrder(const TItem& item, const std::string& name, const TItem* before) {
    outOfOrder_.push_back({&item, &name, before});
}

void TContentRecovery::ReportOrder() {
    if (outOfOrder_.size() >= kOrderTold) {
        TSchemaFault& fault = Add(TSchemaFaultCode::WrongSequence, NodeOf(*outOfOrder_.front().Item),
                                  *outOfOrder_.front().Name);
        std::set<std::uint32_t> present;
        for (const TItem& item : items_)
            if (item.Position != kNone)
                present.insert(item.Position);
            else if (!item.Candidates().empty() && !item.Unjudged)
                present.insert(item.Candidates().front());
        fault.Expected = NamesOf(std::vector<std::uint32_t>(present.begin(), present.end()));
        if (std::ranges::all_of(outOfOrder_,
                                [this](const TOutOfOrder& entry) { return HasOnePlace(*entry.Item); }))
            PlaceBy(fault, TSchemaRemedy::Sort);
        return;
    }
    for (const TOutOfOrder& entry : outOfOrder_) {
        TSchemaFault& fault = Add(TSchemaFaultCode::OutOfOrder, NodeOf(*entry.Item), *entry.Name);
        if (HasOnePlace(*entry.Item))
            PlaceBy(fault, TSchemaRemedy::Place);
        if (entry.Before != nullptr)
            fault.Before = NodeOf(*entry.Before).LocalName();
    }
}

void TContentRecovery::PlaceBy(TSchemaFault& fault, TSchemaRemedy remedy) const {
    if (content_.Missing)
        return;
    fault.Remedy = remedy;
    fault.Content = &content_.Type;
}

void TContentRecovery::FindLevel(TSchemaFault& fault, std::uint32_t index) {
    const TSchemaChild& child = children_[index];
    const TXmlNode& node = *child.Node;
    const TXmlNode& parent = *node.Parent();
    if (content_.Missing)
        return;
    if (content_.Outer != nullptr && PositionOf(*content_.Outer, child.Name.Symbol) != nullptr &&
        parent.Parent()->Child(node.LocalName()) == nullptr) {
        fault.Remedy = TSchemaRemedy::MoveOut;
        fault.Content = content_.Outer;
        fault.Other = &parent;
        decisions_[index] = {PositionOf(*content_.Outer, child.Name.Symbol)->Element, nullptr};
    } else if (node.Attributes().empty() && node.FirstChildTag() != nullptr &&
               std::ranges::all_of(node.ChildTags(), [&](const TXmlNode& inner) {
                   return inner.Prefix() == node.Prefix() && Knows(inner.LocalName());
               })) {
        fault.Remedy = TSchemaRemedy::Unwrap;
    }
}

bool TContentRecovery::Knows(std::string_view name) const {
    return std::ranges::any_of(automaton_.Positions, [name](const TSchemaPosition& position) {
        return position.Element != nullptr && position.Element->Name == name;
    });
}

void TContentRecovery::ReportUnknown(const TItem& item) {
    const std::vector<std::string> expected = NamesOf(ExpectedPositions(item));
    for (std::uint32_t i = item.First; i < item.First + item.Count; ++i) {
        if (children_[i].Name.Undeclared)
            continue; // its prefix is the fault
        const TXmlNode& node = *children_[i].Node;
        TSchemaFault& fault = Add(TSchemaFaultCode::UnknownElement, node, node.LocalName());
        fault.Expected = expected;
        FindLevel(fault, i);
    }
}

std::vector<std::uint32_t> TContentRecovery::ExpectedPositions(const TItem& item) {
    if (automaton_.IsAll)
        return ExpectedOfAll();
    const TItem* previous = item.Before != kNone ? &items_[item.Before] : nullptr;
    const TItem* following = item.After != kNone ? &items_[item.After] : nullptr;
    // A missing element to which the items before were given stands between.
    const auto at = static_cast<std::size_t>(&item - items_.data());
    const std::uint32_t wrapper = at > 0 ? items_[at - 1].Wrapper : kNone;
    const std::uint32_t state = wrapper != kNone      ? wrapper + 1
                                : previous != nullptr ? previous->Position + 1
                                                      : 0;
    std::vector<std::uint32_t> expected;
    if (wrapper == kNone && previous != nullptr && automaton_.Positions[previous->Position].Max > 1 &&
        previous->Stretch < automaton_.Positions[previous->Position].Max)
        expected.push_back(previous->Position);
    if (wrapper != kNone && automaton_.Positions[wrapper].Max > 1)
        expected.push_back(wrapper);
    for (const std::uint32_t p : automaton_.Follow(state))
        if (following == nullptr || p == following->Position || distances_.Reaches(p, following->Position))
            expected.push_back(p);
    return expected;
}

std::vector<std::uint32_t> TContentRecovery::ExpectedOfAll() const {
    std::vector<std::uint32_t> expected;
    for (std::uint32_t p = 0; p < automaton_.Positions.size(); ++p)
        if (placed_.count(p) == 0)
            expected.push_back(p);
    return expected;
}

void TContentRecovery::ReportMissing() {
    for (std::size_t i = 0; i < missing_.size(); ++i) {
        const std::uint32_t beforeItem = missing_[i].BeforeItem;
        if (missing_[i].Explained)
            continue;
        std::vector<std::string> together;
        for (std::size_t j = i; j < missing_.size() && missing_[j].BeforeItem == beforeItem; ++j)
            if (!missing_[j].Explained && NamesOf(missing_[j].Alternatives).size() == 1) {
                missing_[j].Explained = true;
                if (std::string name = NameOf(missing_[j].Position); !owner_.IsExcused(content_.Place, name))
                    together.push_back(std::move(name));
            }
        if (!together.empty()) {
            TSchemaFault& fault = ReportMissingAt(together.size() > 1 ? TSchemaFaultCode::MissingSeveral
                                                                      : TSchemaFaultCode::MissingElement,
                                                  beforeItem, together.front());
            if (together.size() > 1)
                fault.Expected = std::move(together);
        }
        for (std::size_t j = i; j < missing_.size() && missing_[j].BeforeItem == beforeItem; ++j)
            if (!missing_[j].Explained) {
                missing_[j].Explained = true;
                std::vector<std::string> names = NamesOf(missing_[j].Alternatives);
                if (std::none_of(names.begin(), names.end(), [&](const std::string& name) {
                        return owner_.IsExcused(content_.Place, name);
                    }))
                    ReportMissingAt(TSchemaFaultCode::MissingChoice, beforeItem, NameOf(missing_[j].Position))
                        .Expected = std::move(names);
            }
    }
}

TSchemaFault& TContentRecovery::ReportMissingAt(TSchemaFaultCode code, std::uint32_t beforeItem,
                                                std::string_view name) {
    const bool atEnd = beforeItem == kNone;
    const TXmlNode& node = atEnd ? content_.Place : NodeOf(items_[beforeItem]);
    TSchemaFault& fault = Add(code, node, name);
    if (!atEnd)
        fault.Before = node.LocalName();
    return fault;
}

void TContentRecovery::Decide() {
    for (const TItem& item : items_) {
        const bool placed = item.Position != kNone;
        if (item.Candidates().empty() || item.Unjudged)
            continue;
        const TSchemaPosition& position =
            automaton_.Positions[placed ? item.Position : item.Candidates().front()];
        for (std::uint32_t i = item.First; i < item.First + item.Count; ++i)
            decisions_[i] = {position.Element, placed ? position.Wildcard : nullptr};
    }
}

} // namespace conferix
