#include "xml/schema/content_recovery.h"

namespace conferix {

namespace {

constexpr std::size_t kMaxCells = 2'000'000;

} // namespace

struct TContentRecovery::TCost {
    std::uint32_t Faults = kNone;
    std::uint32_t FirstDropped = kNone; ///< of equal costs, the one that keeps earlier children is taken

    bool operator<(const TCost& other) const {
        return Faults != other.Faults ? Faults < other.Faults : FirstDropped > other.FirstDropped;
    }
};

std::vector<TSchemaDecision> TContentRecovery::Run() {
    MakeItems();
    if (automaton_.IsAll) {
        PlaceAll();
    } else {
        FindSpare();
        Place();
        ReportCounts();
    }
    SummarizePlaced();
    FindMisplaced();
    ReportItems();
    ReportOrder();
    ReportMissing();
    Decide();
    return std::move(decisions_);
}

void TContentRecovery::MakeItems() {
    for (std::uint32_t p = 0; p < automaton_.Positions.size(); ++p)
        bySymbol_[automaton_.Positions[p].Symbol()].push_back(p);
    NoteNamesakes();
    items_.reserve(children_.size()); // growing step by step would hold millions twice
    const TXmlName* last = nullptr;
    for (std::uint32_t i = 0; i < children_.size(); ++i) {
        const TSchemaName& name = children_[i].Name;
        const TXmlName* written = &children_[i].Node->Name();
        const bool namesake = IsNamesake(children_[i]);
        if (written == last && children_[i - 1].Name == name && IsOneItem(items_.back(), name) &&
            namesake == IsNamesake(children_[i - 1])) {
            ++items_.back().Count;
            continue;
        }
        last = written;
        TItem item;
        item.First = i;
        if (namesake) {
            items_.push_back(item);
            continue;
        }
        item.TakenAt = PositionsFor(name);
        if (item.Candidates().empty()) {
            const TSchemaMeaning& meaning = owner_.MeaningOf(automaton_, children_[i], content_.Forgiven);
            item.TakenAt = &meaning.Positions;
            item.Misnaming = meaning.Misnaming;
        }
        items_.push_back(item);
    }
}

bool TContentRecovery::Exclude(std::uint32_t position, std::uint32_t other) {
    return position != other && !distances_.Reaches(position, other) && !distances_.Reaches(other, position);
}

void TContentRecovery::FindSpare() {
    const auto isEmpty = [](const TXmlNode& node) {
        return node.FirstChildTag() == nullptr && node.Attributes().empty() &&
               TrimXmlSpace(node.TextWithCData()).empty();
    };
    const auto isSure = [](const TItem& item) {
        return item.Candidates().size() == 1 && item.Misnaming == TSchemaMisnaming::None;
    };
    std::map<std::uint32_t, const TItem*> filled; // by position
    std::vector<TItem*> empty;
    for (TItem& item : items_)
        if (isSure(item)) {
            if (!isEmpty(NodeOf(item)))
                filled.try_emplace(item.Candidates().front(), &item);
            else if (item.Count == 1)
                empty.push_back(&item);
        }
    for (TItem* item : empty)
        for (const auto& [position, other] : filled)
            if (Exclude(item->Candidates().front(), position)) {
                RemoveFaultsOf(NodeOf(*item));
                TSchemaFault& fault =
                    Add(TSchemaFaultCode::ExclusiveElement, NodeOf(*item), NodeOf(*item).LocalName());
                fault.Expected = {std::string(NodeOf(*other).LocalName())};
                fault.Remedy = TSchemaRemedy::Remove;
                item->TakenAt = nullptr;
                item->Unjudged = true;
                item->Spare = true;
                break;
            }
}

void TContentRecovery::RemoveFaultsOf(const TXmlNode& element) {
    auto& faults = faults_.Latest();
    for (std::size_t i = faults.size(); i > 0 && faults[i - 1].FilePos >= element.FilePos(); --i)
        if (faults[i - 1].Node == &element)
            faults.erase(faults.begin() + static_cast<std::ptrdiff_t>(i - 1));
}

void TContentRecovery::NoteNamesakes() {
    std::map<const TXmlName*, std::pair<bool, bool>> kinds; // some can, some cannot
    for (const TSchemaChild& child : children_) {
        auto& [can, cannot] = kinds[&child.Node->Name()];
        (IsOfOtherKind(child) ? cannot : can) = true;
    }
    for (const auto& [name, kind] : kinds)
        if (kind.first && kind.second)
            namesakes_.insert(name);
}

bool TContentRecovery::IsOfOtherKind(const TSchemaChild& child) const {
    const auto known = bySymbol_.find(child.Name.Symbol);
    const TSchemaElement* element =
        known != bySymbol_.end() ? automaton_.Positions[known->second.front()].Element : nullptr;
    if (element == nullptr)
        return false;
    const bool holdsElements = child.Node->FirstChildTag() != nullptr;
    return ContainerType(element) == nullptr ? holdsElements && element->ComplexType == nullptr
                                             : !holdsElements && !TrimXmlSpace(child.Node->Value()).empty();
}

bool TContentRecovery::IsNamesake(const TSchemaChild& child) const {
    return namesakes_.count(&child.Node->Name()) != 0 && IsOfOtherKind(child);
}

bool TContentRecovery::IsOneItem(const TItem& item, const TSchemaName& name) const {
    return item.Candidates().empty() ? name.Symbol == kSchemaNoSymbol
                                     : item.Candidates().size() == 1 && !automaton_.IsAll;
}

const std::vector<std::uint32_t>* TContentRecovery::PositionsFor(const TSchemaName& name) {
    const auto known = bySymbol_.find(name.Symbol);
    const bool isKnown = name.Symbol != kSchemaNoSymbol && known != bySymbol_.end();
    if (!automaton_.HasWildcards || name.Undeclared)
        return isKnown ? &known->second : nullptr;
    const auto [all, added] = withWildcards_.try_emplace({name.Symbol, name.Namespace});
    if (added) {
        if (isKnown)
            all->second = known->second;
        for (const std::uint32_t p : bySymbol_[kSchemaWildcardSymbol])
            if (automaton_.Positions[p].Wildcard->Admits(name.Namespace))
                all->second.push_back(p);
    }
    return &all->second;
}

bool TContentRecovery::Repeats(std::uint32_t position) {
    return automaton_.Positions[position].Max > 1 || distances_.Between(position + 1, position) == 0;
}

void TContentRecovery::Place() {
    std::vector<TItem*> known;
    std::vector<std::uint32_t> states = {0};
    for (TItem& item : items_) {
        if (item.Candidates().empty())
            continue;
        known.push_back(&item);
        for (const std::uint32_t p : item.Candidates())
            states.push_back(p + 1);
    }
    std::sort(states.begin(), states.end());
    states.erase(std::unique(states.begin(), states.end()), states.end());
    const std::size_t window = std::max<std::size_t>(16, kMaxCells / states.size());
    std::size_t startState = 0;
    std::size_t done = 0;
    do {
        const std::size_t count = std::min(window, known.size() - done);
        startState = PlaceWindow(std::span(known).subspan(done, count), states, startState,
                                 done + count == known.size());
        done += count;
    } while (done < known.size());
    CollectMissing(known);
}

std::size_t TContentRecovery::PlaceWindow(std::span<TItem*> items, const std::vector<std::uint32_t>& states,
                                          std::size_t startState, bool last) {
    constexpr std::uint32_t kDropped = kNone;
    const std::size_t width = states.size();
    std::vector<TCost> cost(width);
    std::vector<TCost> next(width);
    std::vector<std::uint32_t> back(items.size() * width, kDropped);
    cost[startState] = {0, kNone};
    for (std::uint32_t i = 0; i < items.size(); ++i) {
        for (std::size_t s = 0; s < width; ++s)
            next[s] = cost[s].Faults == kNone ? TCost{}
                                              : TCost{cost[s].Faults + 1, std::min(cost[s].FirstDropped, i)};
        for (const std::uint32_t p : items[i]->Candidates()) {
            const auto at = static_cast<std::size_t>(std::lower_bound(states.begin(), states.end(), p + 1) -
                                                     states.begin());
            const std::uint32_t surplus =
                (items[i]->Count > 1 && !Repeats(p) ? 1U : 0U) + (IsGuess(items[i]->Misnaming) ? 1U : 0U);
            TCost kept;
            std::uint32_t from = kDropped;
            for (std::uint32_t s = 0; s < width; ++s) {
                const std::uint32_t gap = cost[s].Faults == kNone ? kNone : Gap(states[s], p);
                if (gap == kNone)
                    continue;
                if (const TCost total{cost[s].Faults + gap + surplus, cost[s].FirstDropped}; total < kept) {
                    kept = total;
                    from = s;
                }
            }
            if (from != kDropped && !(next[at] < kept)) {
                next[at] = kept;
                back[i * width + at] = from;
            }
        }
        std::swap(cost, next);
    }
    std::size_t best = startState;
    TCost bestCost;
    for (std::size_t s = 0; s < width; ++s) {
        const std::uint32_t end = last ? distances_.ToEnd(states[s]) : 0;
        if (cost[s].Faults == kNone || end == kNone)
            continue;
        if (const TCost total{cost[s].Faults + end, cost[s].FirstDropped}; total < bestCost) {
            bestCost = total;
            best = s;
        }
    }
    std::size_t state = best;
    for (std::size_t i = items.size(); i > 0; --i) {
        const std::uint32_t from = back[(i - 1) * width + state];
        if (from == kDropped)
            continue;
        items[i - 1]->Position = states[state] - 1;
        state = from;
    }
    return best;
}

std::uint32_t TContentRecovery::Gap(std::uint32_t state, std::uint32_t position) {
    const bool again = state == position + 1 && automaton_.Positions[position].Max > 1;
    return again ? 0 : distances_.Between(state, position);
}

void TContentRecovery::CollectMissing(const std::vector<TItem*>& known) {
    std::uint32_t state = 0;
    for (const TItem* item : known) {
        if (item->Position == kNone)
            continue;
        if (Gap(state, item->Position) > 0)
            AddMissing(state, item->Position, static_cast<std::uint32_t>(item - items_.data()));
        state = item->Position + 1;
    }
    AddMissing(state, std::nullopt, kNone);
}

void TContentRecovery::AddMissing(std::uint32_t state, std::optional<std::uint32_t> target,
                                  std::uint32_t beforeItem) {
    for (const std::uint32_t p : distances_.Path(state, target)) {
        missing_.push_back({p, beforeItem, AlternativesOf(p, state, target)});
        state = p + 1;
    }
}

std::vector<std::uint32_t> TContentRecovery::AlternativesOf(std::uint32_t position, std::uint32_t state,
                                                            std::optional<std::uint32_t> target) {
    const auto rest = [&](std::uint32_t p) {
        return target ? distances_.Between(p + 1, *target) : distances_.ToEnd(p + 1);
    };
    std::vector<std::uint32_t> result;
    for (const std::uint32_t p : automaton_.Follow(state))
        if (p == position || rest(p) == rest(position) ||
            (!distances_.Reaches(p, position) && !distances_.Reaches(position, p)))
            result.push_back(p);
    return result;
}

void TContentRecovery::PlaceAll() {
    std::vector<bool> seen(automaton_.Positions.size());
    for (TItem& item : items_) {
        if (item.Candidates().empty() || seen[item.Candidates().front()])
            continue;
        item.Position = item.Candidates().front();
        seen[item.Position] = true;
    }
    for (std::uint32_t p = 0; p < automaton_.Positions.size(); ++p)
        if (!seen[p] && automaton_.Positions[p].Required)
            missing_.push_back({p, kNone, {p}});
}

std::string TContentRecovery::NameOf(std::uint32_t position) const {
    const TSchemaElement* element = automaton_.Positions[position].Element;
    return element != nullptr ? element->Name : std::string("*");
}

std::vector<std::string> TContentRecovery::NamesOf(std::span<const std::uint32_t> positions) const {
    std::vector<std::string> names;
    for (const std::uint32_t p : positions)
        if (std::string name = NameOf(p); std::find(names.begin(), names.end(), name) == names.end())
            names.push_back(std::move(name));
    return names;
}

TSchemaFault& TContentRecovery::Add(TSchemaFaultCode code, const TXmlNode& node, std::string_view name) {
    TSchemaFault& fault = faults_.Add(MakeSchemaFault(code, node));
    fault.Name = name;
    fault.Parent = content_.ParentName;
    return fault;
}

void TContentRecovery::ReportCounts() {
    std::uint32_t position = kNone;
    std::vector<const TItem*> stretch;
    const auto flush = [&] {
        if (position != kNone)
            ReportStretch(position, stretch);
        stretch.clear();
    };
    for (const TItem& item : items_) {
        if (item.Position == kNone)
            continue;
        if (item.Position != position)
            flush();
        position = item.Position;
        stretch.push_back(&item);
    }
    flush();
}

void TContentRecovery::ReportStretch(std::uint32_t position, const std::vector<const TItem*>& stretch) {
    const TSchemaPosition& particle = automaton_.Positions[position];
    const bool loops = distances_.Between(position + 1, position) == 0;
    std::uint32_t count = 0;
    const TXmlNode* surplus = nullptr;
    for (const TItem* item : stretch) {
        if (surplus == nullptr && particle.Max != kSchemaUnbounded && count + item->Count > particle.Max)
            surplus = children_[item->First + (particle.Max - count)].Node;
        count += item->Count;
    }
    if (surplus != nullptr && !loops) {
        TSchemaFault& fault = Add(TSchemaFaultCode::TooMany, *surplus, surplus->LocalName());
        fault.Count = count;
        fault.Limit = particle.Max;
    }
}

void TContentRecovery::SummarizePlaced() {
    std::uint32_t last = kNone;
    for (std::uint32_t i = 0; i < items_.size(); ++i) {
        TItem& item = items_[i];
        item.Before = last;
        if (item.Position == kNone)
            continue;
        item.Stretch = item.Count;
        if (last != kNone && items_[last].Position == item.Position)
            item.Stretch += items_[last].Stretch;
        last = i;
        TPlaced& placed = placed_[item.Position];
        if (placed.First == nullptr)
            placed.First = &item;
        placed.Count += item.Count;
    }
    std::uint32_t following = kNone;
    for (auto i = static_cast<std::uint32_t>(items_.size()); i > 0; --i) {
        items_[i - 1].After = following;
        if (items_[i - 1].Position != kNone)
            following = i - 1;
    }
}

} // namespace conferix
