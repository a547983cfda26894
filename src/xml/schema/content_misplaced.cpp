#include "xml/schema/content_recovery.h"

namespace conferix {

namespace {

constexpr std::size_t kSiblingsSearched = 8;
/// Elements may be missing around children, and in each of them others, as deep as this.
constexpr int kLevelsMissing = 2;

} // namespace

void TContentRecovery::FindMisplaced() {
    for (std::size_t i = 0; i < items_.size();) {
        if (!items_[i].Candidates().empty() || items_[i].Spare) {
            ++i;
            continue;
        }
        std::size_t taken = TakeIntoWrapper(i, TWrapping::Missing);
        if (taken == 0)
            taken = TakeIntoWrapper(i, TWrapping::Whole);
        if (taken == 0)
            taken = TakeIntoSibling(i) ? 1 : 0;
        if (taken == 0)
            taken = TakeIntoWrapper(i, TWrapping::Possible);
        if (taken == 0)
            taken = TakeIntoWrapper(i, TWrapping::Missing, true);
        if (taken == 0)
            taken = TakeIntoWrapper(i, TWrapping::Whole, true);
        i += std::max<std::size_t>(1, taken);
    }
}

std::size_t TContentRecovery::RunKnownTo(const TSchemaComplexType& type, std::size_t first) const {
    std::size_t count = 0;
    while (first + count < items_.size() && items_[first + count].Position == kNone &&
           items_[first + count].Count == 1 &&
           PositionOf(type, children_[items_[first + count].First]) != nullptr)
        ++count;
    return count;
}

std::size_t TContentRecovery::WholeContentFrom(const TSchemaComplexType& type, std::size_t first,
                                               int levels) const {
    const TSchemaAutomaton& automaton = type.Automaton;
    std::uint32_t state = 0;
    std::size_t at = first;
    std::size_t complete = 0;
    const auto takeBelow = [&](std::uint32_t position) {
        const TSchemaComplexType* inner = ContainerType(automaton.Positions[position].Element);
        const std::size_t taken =
            inner != nullptr && levels > 0 ? WholeContentFrom(*inner, at, levels - 1) : 0;
        at += taken;
        state = taken > 0 ? position + 1 : state;
        return taken > 0;
    };
    while (at < items_.size() && items_[at].Position == kNone && items_[at].Count == 1) {
        const auto follow = automaton.Follow(state);
        if (const auto next = automaton.After(state, NodeOf(items_[at]).LocalName())) {
            state = *next;
            ++at;
        } else if (!(state > 0 && automaton.Positions[state - 1].Max > 1 && takeBelow(state - 1)) &&
                   std::none_of(follow.begin(), follow.end(), takeBelow)) {
            break;
        }
        if (automaton.Accepting[state] != 0)
            complete = at - first;
    }
    return complete;
}

bool TContentRecovery::BelongsIn(const TSchemaComplexType& type, std::size_t item) const {
    const TSchemaChild& child = children_[items_[item].First];
    return PositionOf(type, child) != nullptr ||
           std::ranges::any_of(type.Automaton.Positions, [&child](const TSchemaPosition& position) {
               const TSchemaComplexType* inner = ContainerType(position.Element);
               return inner != nullptr && PositionOf(*inner, child) != nullptr;
           });
}

std::size_t TContentRecovery::RunKnownBelow(const TSchemaComplexType& type, std::size_t first,
                                            bool whole) const {
    std::size_t count = 0;
    for (const TSchemaPosition& position : type.Automaton.Positions) {
        const TSchemaComplexType* inner = ContainerType(position.Element);
        const std::size_t run = inner != nullptr ? RunKnownTo(*inner, first) : 0;
        if (!whole || (run > 1 && IsContent(*inner, position.Max > 1, first, run)))
            count = std::max(count, run);
    }
    return count;
}

bool TContentRecovery::HasOnePlace(const TItem& item) {
    const std::uint32_t symbol = children_[item.First].Name.Symbol;
    if (std::ranges::none_of(automaton_.Positions, [symbol](const TSchemaPosition& position) {
            const TSchemaComplexType* type = ContainerType(position.Element);
            return type != nullptr && PositionOf(*type, symbol) != nullptr;
        }))
        return true;
    if (children_.size() > kMissingSearched)
        return false;
    const auto at = static_cast<std::size_t>(&item - items_.data());
    bool one = (at == 0 || !items_[at - 1].Candidates().empty()) &&
               (at + 1 == items_.size() || !items_[at + 1].Candidates().empty());
    for (const TItem& sibling : items_)
        ConsiderAll(sibling, true, [&](const TItem& other, std::uint32_t child) {
            one = one && (&other == &item || TakerAt(item, other, child).Child == nullptr);
        });
    return one;
}

bool TContentRecovery::IsOnlyWrapperOf(std::uint32_t wrapper, std::size_t item) const {
    if (placed_.count(wrapper) != 0)
        return false;
    const TSchemaChild& child = children_[items_[item].First];
    for (std::uint32_t p = 0; p < automaton_.Positions.size(); ++p)
        if (const TSchemaComplexType* type = ContainerType(automaton_.Positions[p].Element);
            p != wrapper && type != nullptr && PositionOf(*type, child) != nullptr)
            return false;
    const TSchemaComplexType& type = *automaton_.Positions[wrapper].Element->ComplexType;
    const TSchemaPosition* known = PositionOf(type, child);
    if (known == nullptr)
        return false;
    const TSchemaElement& element = *known->Element;
    const auto state = type.Automaton.After(0, element.Name);
    return (state && type.Automaton.Accepting[*state] != 0) ||
           (child.Node->FirstChildTag() != nullptr && Resembles(element, *child.Node));
}

bool TContentRecovery::IsContent(const TSchemaComplexType& wrapper, bool repeats, std::size_t first,
                                 std::size_t count) const {
    const TSchemaAutomaton& automaton = wrapper.Automaton;
    std::optional<std::uint32_t> state = 0;
    for (std::size_t i = first; i < first + count && state; ++i) {
        const std::string& name = PositionOf(wrapper, children_[items_[i].First])->Element->Name;
        const auto next = automaton.After(*state, name);
        const bool again = !next && automaton.Accepting[*state] != 0 && repeats;
        state = again ? automaton.After(0, name) : next;
    }
    return state && automaton.Accepting[*state] != 0;
}

std::size_t TContentRecovery::TakeIntoWrapper(std::size_t first, TWrapping wrapping, bool twice) {
    TMissing* missing = nullptr;
    std::uint32_t wrapper = kNone;
    std::size_t count = 0;
    bool sure = false;
    bool one = false; // the children are the content of one element
    const auto consider = [&](std::uint32_t p, TMissing* entry) {
        // One that is there, around others of its children, takes them; a second one would be too many.
        if (entry == nullptr && placed_.count(p) != 0 && !Repeats(p))
            return;
        const TSchemaComplexType* type = ContainerType(automaton_.Positions[p].Element);
        const bool whole = wrapping == TWrapping::Whole;
        std::size_t run = type == nullptr ? 0
                          : twice         ? RunKnownBelow(*type, first, whole)
                                          : RunKnownTo(*type, first);
        const std::size_t content =
            type != nullptr && !twice ? WholeContentFrom(*type, first, kLevelsMissing) : 0;
        const bool isOne = content > std::max<std::size_t>(run, 1);
        if (whole && !twice && !isOne && (run < 2 || !IsContent(*type, Repeats(p), first, run)))
            return;
        if (isOne)
            run = content;
        sure = sure && (run < count || p == wrapper);
        if (run <= count || (entry == nullptr && run < 2 && !IsOnlyWrapperOf(p, first)))
            return;
        sure = true;
        count = run;
        wrapper = p;
        missing = entry;
        one = isOne;
    };
    if (wrapping == TWrapping::Missing) {
        for (TMissing& entry : std::span(missing_).first(std::min(missing_.size(), kMissingSearched)))
            if (!entry.Explained)
                for (const std::uint32_t p : entry.Alternatives)
                    consider(p, &entry);
    } else {
        for (const std::uint32_t p : ExpectedPositions(items_[first]))
            consider(p, nullptr);
    }
    if (wrapper == kNone)
        return 0;
    if (missing != nullptr)
        missing->Explained = true;
    const TSchemaElement& element = *automaton_.Positions[wrapper].Element;
    // Around a part of its children it would help nobody; where they end is not sure then.
    const auto goesOn = [&] {
        const std::size_t next = first + count;
        return next < items_.size() && items_[next].Candidates().empty() && items_[next].Count == 1 &&
               BelongsIn(*element.ComplexType, next);
    };
    if (goesOn()) {
        const bool repeats = Repeats(wrapper);
        sure = sure && repeats && WholeContentFrom(*element.ComplexType, first + count, kLevelsMissing) > 0;
        while (!repeats && goesOn())
            ++count;
    }
    const std::uint32_t from = items_[first].First;
    const auto inside = children_.subspan(from, count);
    TSchemaFault& fault = Add(TSchemaFaultCode::MissingWrapper, NodeOf(items_[first]), element.Name);
    fault.Expected = {std::string(inside.front().Node->LocalName()),
                      std::string(inside.back().Node->LocalName())};
    fault.Count = static_cast<std::int64_t>(count);
    fault.Limit = one ? 1 : 0;
    if (sure && !content_.Missing) {
        fault.Remedy = TSchemaRemedy::Wrap;
        fault.Content = &content_.Type;
    }
    const std::vector<TSchemaDecision> decisions =
        TContentRecovery(owner_,
                         {*element.ComplexType, element.Name, *inside.front().Node, inside, content_.Forgiven,
                          nullptr, true},
                         faults_)
            .Run();
    std::copy(decisions.begin(), decisions.end(), decisions_.begin() + from);
    for (std::size_t i = first; i < first + count; ++i) {
        items_[i].Unjudged = true;
        items_[i].Wrapper = wrapper;
    }
    return count;
}

TContentRecovery::TTaker TContentRecovery::TakerAt(const TItem& item, const TItem& sibling,
                                                   std::uint32_t child) {
    TTaker taker;
    if (sibling.Position == kNone)
        return taker;
    taker.Content = ContainerType(automaton_.Positions[sibling.Position].Element);
    taker.Element = children_[child].Node;
    if (taker.Content != nullptr)
        taker.Child = PositionOf(*taker.Content, children_[item.First].Name.Symbol);
    if (taker.Child == nullptr || taker.Element->Child(taker.Child->Element->Name) != nullptr)
        return {};
    taker.Repeats = Repeats(sibling.Position);
    taker.Fits = IsRightWith(*taker.Content, *taker.Element, taker.Child->Element->Name);
    return taker;
}

bool TContentRecovery::IsRightWith(const TSchemaComplexType& type, const TXmlNode& element,
                                   std::string_view added) {
    const TSchemaAutomaton& automaton = type.Automaton;
    const auto end = [&automaton](std::optional<std::uint32_t> state, const TXmlNode* from) {
        for (; from != nullptr && state; from = from->NextSiblingTag())
            state = automaton.After(*state, from->LocalName());
        return state && automaton.Accepting[*state] != 0;
    };
    std::optional<std::uint32_t> state = 0;
    for (const TXmlNode* next = element.FirstChildTag(); state; next = next->NextSiblingTag()) {
        if (const auto with = automaton.After(*state, added); with && end(with, next))
            return true;
        if (next == nullptr)
            break;
        state = automaton.After(*state, next->LocalName());
    }
    return false;
}

bool TContentRecovery::TakeIntoSibling(std::size_t at) {
    TItem& item = items_[at];
    TTaker best;
    std::size_t fitting = 0;
    std::size_t lacking = 0;
    const auto consider = [&](const TItem& sibling, std::uint32_t child) {
        const TTaker taker = TakerAt(item, sibling, child);
        if (taker.Child == nullptr)
            return;
        ++lacking;
        fitting += taker.Fits ? 1 : 0;
        if (best.Child == nullptr || (taker.Fits && !best.Fits))
            best = taker;
    };
    const bool few = children_.size() <= kMissingSearched;
    const std::size_t steps = few ? items_.size() : kSiblingsSearched;
    for (std::size_t step = 1; step <= steps && fitting < 2; ++step) {
        if (step <= at)
            ConsiderAll(items_[at - step], false, consider);
        if (at + step < items_.size())
            ConsiderAll(items_[at + step], true, consider);
    }
    if (best.Child == nullptr)
        return false;
    TakeInto(item, best, few && (fitting == 1 || (fitting == 0 && lacking == 1)) && !HasCompany(at, best));
    return true;
}

bool TContentRecovery::HasCompany(std::size_t at, const TTaker& taker) {
    const auto same = [&](std::size_t other) {
        return items_[other].Candidates().empty() &&
               PositionOf(*taker.Content, children_[items_[other].First].Name.Symbol) != nullptr;
    };
    return taker.Repeats && ((at > 0 && same(at - 1)) || (at + 1 < items_.size() && same(at + 1)));
}

void TContentRecovery::TakeInto(TItem& item, const TTaker& taker, bool sure) {
    const TSchemaElement* element = taker.Child->Element;
    TSchemaFault& fault = Add(TSchemaFaultCode::OutsideElement, NodeOf(item), element->Name);
    fault.Bound = taker.Element->LocalName();
    if (sure && !content_.Missing) {
        fault.Remedy = TSchemaRemedy::MoveInto;
        fault.Content = taker.Content;
        fault.Other = taker.Element;
    }
    owner_.Excuse(*taker.Element, element->Name);
    RemoveMissing(*taker.Element, element->Name);
    decisions_[item.First] = {element, nullptr};
    item.Unjudged = true;
}

void TContentRecovery::RemoveMissing(const TXmlNode& element, const std::string& name) {
    auto& faults = faults_.Latest();
    for (std::size_t i = faults.size(); i > 0 && faults[i - 1].FilePos >= element.FilePos(); --i) {
        TSchemaFault& fault = faults[i - 1];
        if (fault.Node != &element && (fault.Node == nullptr || fault.Node->Parent() != &element))
            continue;
        const bool lists =
            fault.Code == TSchemaFaultCode::MissingSeveral || fault.Code == TSchemaFaultCode::MissingChoice;
        const bool listed =
            std::find(fault.Expected.begin(), fault.Expected.end(), name) != fault.Expected.end();
        const bool alone = fault.Code == TSchemaFaultCode::MissingElement && fault.Name == name;
        if (!alone && !(lists && listed))
            continue;
        std::erase(fault.Expected, name);
        if (fault.Code != TSchemaFaultCode::MissingSeveral) {
            faults.erase(faults.begin() + static_cast<std::ptrdiff_t>(i - 1));
        } else if (fault.Expected.size() == 1) {
            fault.Code = TSchemaFaultCode::MissingElement;
            fault.Name = fault.Expected.front();
            fault.Expected.clear();
        }
        return;
    }
}

} // namespace conferix
