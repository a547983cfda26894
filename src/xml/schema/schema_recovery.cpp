#include "xml/schema/schema_recovery.h"

#include "xml/xml_node.h"

#include <algorithm>
#include <deque>
#include <map>

namespace conferix {

namespace {

constexpr std::uint32_t kNone = 0xFFFFFFFF;
constexpr std::size_t kMaxCells = 2'000'000;
constexpr std::size_t kMaxComparedName = 64;
constexpr std::size_t kMissingSearched = 200;

char Lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool SameButForCase(std::string_view left, std::string_view right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return Lower(a) == Lower(b); });
}

/// True for names that differ by at most two typing slips.
bool LooksLike(std::string_view left, std::string_view right) {
    if (SameButForCase(left, right))
        return true;
    const std::size_t shorter = std::min(left.size(), right.size());
    const std::size_t longer = std::max(left.size(), right.size());
    const std::size_t slips = shorter < 6 ? 1 : 2;
    if (shorter < 4 || longer > kMaxComparedName || longer - shorter > slips)
        return false;
    std::vector<std::size_t> row(right.size() + 1);
    for (std::size_t j = 0; j < row.size(); ++j)
        row[j] = j;
    for (std::size_t i = 1; i <= left.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= right.size(); ++j) {
            const std::size_t changed = diagonal + (Lower(left[i - 1]) == Lower(right[j - 1]) ? 0 : 1);
            diagonal = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, changed});
        }
    }
    return row.back() <= slips;
}

/// A run of children of one name that a content model places together.
struct TItem {
    std::uint32_t First = 0; ///< index of the first child
    std::uint32_t Count = 1;
    std::vector<std::uint32_t> Candidates; ///< positions of the model that take it; empty: unknown
    std::uint32_t Position = kNone;        ///< the one chosen; none for a displaced item
    std::uint32_t Before = kNone;          ///< the nearest items in place around it
    std::uint32_t After = kNone;
    std::uint32_t Stretch =
        0; ///< occurrences in place up to this item without another element in place between
};

/// An element that has to be inserted.
struct TMissing {
    std::uint32_t Position;
    std::uint32_t BeforeItem;                ///< its item, kNone at the end
    std::vector<std::uint32_t> Alternatives; ///< positions of which one would do, `Position` included
    bool Explained = false;                  ///< a displaced or mistyped child stands for it
};

/// What is known of a position of which children are in place.
struct TPlaced {
    const TItem* First = nullptr;
    std::uint32_t Count = 0;
};

struct TCost {
    std::uint32_t Faults = kNone;
    std::uint32_t FirstDropped = kNone; ///< of equal costs, the one that keeps earlier children is taken

    bool operator<(const TCost& other) const {
        return Faults != other.Faults ? Faults < other.Faults : FirstDropped > other.FirstDropped;
    }
};

class TContentRecovery {
  public:
    TContentRecovery(const TSchemaSet& set, const TSchemaComplexType& type, TSchemaDistances& distances,
                     const TXmlNode& parent, std::span<const TSchemaChild> children,
                     std::vector<TSchemaFault>& faults)
        : set_(set), automaton_(type.Automaton), distances_(distances), parent_(parent), children_(children),
          faults_(faults) {}

    std::vector<TSchemaDecision> Run() {
        MakeItems();
        if (automaton_.IsAll) {
            PlaceAll();
        } else {
            Place();
            ReportCounts();
        }
        SummarizePlaced();
        ReportItems();
        ReportMissing();
        return Decisions();
    }

  private:
    // ---- items

    void MakeItems() {
        std::unordered_map<std::uint32_t, std::vector<std::uint32_t>> bySymbol;
        for (std::uint32_t p = 0; p < automaton_.Positions.size(); ++p)
            bySymbol[automaton_.Positions[p].Symbol()].push_back(p);
        std::uint32_t last = kSchemaNoSymbol;
        for (std::uint32_t i = 0; i < children_.size(); ++i) {
            const TSchemaName& name = children_[i].Name;
            if (name.Symbol != kSchemaNoSymbol && name.Symbol == last &&
                items_.back().Candidates.size() == 1 && !automaton_.IsAll) {
                ++items_.back().Count;
                continue;
            }
            TItem item;
            item.First = i;
            if (const auto known = bySymbol.find(name.Symbol);
                name.Symbol != kSchemaNoSymbol && known != bySymbol.end())
                item.Candidates = known->second;
            if (!name.Undeclared)
                for (const std::uint32_t p : bySymbol[kSchemaWildcardSymbol])
                    if (automaton_.Positions[p].Wildcard->Admits(name.Namespace))
                        item.Candidates.push_back(p);
            last = name.Symbol;
            items_.push_back(std::move(item));
        }
    }

    const TXmlNode& NodeOf(const TItem& item) const { return *children_[item.First].Node; }

    bool Repeats(std::uint32_t position) {
        return automaton_.Positions[position].Max > 1 || distances_.Between(position + 1, position) == 0;
    }

    // ---- placing the items of a sequence or choice

    /// Chooses which items stay in place, a shortest explanation by dynamic programming over the items and
    /// the places of the model that they can take. Very long contents are done piece by piece.
    void Place() {
        std::vector<TItem*> known;
        std::vector<std::uint32_t> states = {0};
        for (TItem& item : items_) {
            if (item.Candidates.empty())
                continue;
            known.push_back(&item);
            for (const std::uint32_t p : item.Candidates)
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

    std::size_t PlaceWindow(std::span<TItem*> items, const std::vector<std::uint32_t>& states,
                            std::size_t startState, bool last) {
        constexpr std::uint32_t kDropped = kNone;
        const std::size_t width = states.size();
        std::vector<TCost> cost(width);
        std::vector<TCost> next(width);
        std::vector<std::uint32_t> back(items.size() * width, kDropped);
        cost[startState] = {0, kNone};
        for (std::uint32_t i = 0; i < items.size(); ++i) {
            for (std::size_t s = 0; s < width; ++s)
                next[s] = cost[s].Faults == kNone
                              ? TCost{}
                              : TCost{cost[s].Faults + 1, std::min(cost[s].FirstDropped, i)};
            for (const std::uint32_t p : items[i]->Candidates) {
                const auto at = static_cast<std::size_t>(
                    std::lower_bound(states.begin(), states.end(), p + 1) - states.begin());
                const std::uint32_t surplus = items[i]->Count > 1 && !Repeats(p) ? 1 : 0;
                TCost kept;
                std::uint32_t from = kDropped;
                for (std::uint32_t s = 0; s < width; ++s) {
                    const std::uint32_t gap = cost[s].Faults == kNone ? kNone : Gap(states[s], p);
                    if (gap == kNone)
                        continue;
                    if (const TCost total{cost[s].Faults + gap + surplus, cost[s].FirstDropped};
                        total < kept) {
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

    std::uint32_t Gap(std::uint32_t state, std::uint32_t position) {
        const bool again = state == position + 1 && automaton_.Positions[position].Max > 1;
        return again ? 0 : distances_.Between(state, position);
    }

    void CollectMissing(const std::vector<TItem*>& known) {
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

    void AddMissing(std::uint32_t state, std::optional<std::uint32_t> target, std::uint32_t beforeItem) {
        for (const std::uint32_t p : distances_.Path(state, target)) {
            missing_.push_back({p, beforeItem, AlternativesOf(p, state, target)});
            state = p + 1;
        }
    }

    /// The positions that could stand where one is missing: as short a way on, or another branch of a choice.
    std::vector<std::uint32_t> AlternativesOf(std::uint32_t position, std::uint32_t state,
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

    // ---- xs:all

    void PlaceAll() {
        std::vector<bool> seen(automaton_.Positions.size());
        bool any = false;
        for (TItem& item : items_) {
            if (item.Candidates.empty() || seen[item.Candidates.front()])
                continue;
            item.Position = item.Candidates.front();
            seen[item.Position] = true;
            any = true;
        }
        if (automaton_.AllOptional && !any)
            return;
        for (std::uint32_t p = 0; p < automaton_.Positions.size(); ++p)
            if (!seen[p] && automaton_.Positions[p].Min > 0)
                missing_.push_back({p, kNone, {p}});
    }

    // ---- reporting

    std::string NameOf(std::uint32_t position) const {
        const TSchemaElement* element = automaton_.Positions[position].Element;
        return element != nullptr ? element->Name : std::string("*");
    }

    std::vector<std::string> NamesOf(const std::vector<std::uint32_t>& positions) const {
        std::vector<std::string> names;
        for (const std::uint32_t p : positions)
            if (std::string name = NameOf(p); std::find(names.begin(), names.end(), name) == names.end())
                names.push_back(std::move(name));
        return names;
    }

    TSchemaFault& Add(TSchemaFaultCode code, const TXmlNode& node, std::string_view name) {
        TSchemaFault& fault = faults_.emplace_back(MakeSchemaFault(code, node));
        fault.Name = name;
        fault.Parent = parent_.LocalName();
        return fault;
    }

    /// Occurrences against the limits, stretch by stretch of one position.
    void ReportCounts() {
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

    void ReportStretch(std::uint32_t position, const std::vector<const TItem*>& stretch) {
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
        } else if (count < particle.Min) {
            const TXmlNode& first = NodeOf(*stretch.front());
            TSchemaFault& fault = Add(TSchemaFaultCode::TooFew, first, first.LocalName());
            fault.Count = count;
            fault.Limit = particle.Min;
        }
    }

    void SummarizePlaced() {
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

    void ReportItems() {
        for (const TItem& item : items_) {
            if (item.Position != kNone)
                continue;
            if (item.Candidates.empty() || automaton_.Positions[item.Candidates.front()].Element == nullptr)
                ReportUnknown(item);
            else
                ReportDisplaced(item);
        }
    }

    /// The missing element of which one alternative fits, among those not explained yet; the search is
    /// bounded for contents with thousands of faults. Marks it as explained.
    template<class Fits>
    const TMissing* TakeMissing(const Fits& fits) {
        while (firstMissing_ < missing_.size() && missing_[firstMissing_].Explained)
            ++firstMissing_;
        const std::size_t end = std::min(missing_.size(), firstMissing_ + kMissingSearched);
        for (std::size_t i = firstMissing_; i < end; ++i) {
            TMissing& entry = missing_[i];
            if (entry.Explained || std::none_of(entry.Alternatives.begin(), entry.Alternatives.end(), fits))
                continue;
            entry.Explained = true;
            return &entry;
        }
        return nullptr;
    }

    void ReportDisplaced(const TItem& item) {
        const std::uint32_t own = item.Candidates.front();
        const TSchemaPosition& particle = automaton_.Positions[own];
        const std::string& name = particle.Element->Name;
        // A displaced element is not missing at its right place too.
        const TMissing* missing = TakeMissing([&](std::uint32_t p) {
            return std::find(item.Candidates.begin(), item.Candidates.end(), p) != item.Candidates.end();
        });
        if (missing != nullptr)
            return ReportOutOfOrder(item, name,
                                    missing->BeforeItem != kNone ? &items_[missing->BeforeItem] : nullptr);
        const TItem* excluder = nullptr;
        const TItem* before = nullptr;
        for (const auto& [position, placed] : placed_) {
            if (position == own)
                continue;
            if (position > own && (before == nullptr || placed.First < before))
                before = placed.First;
            if (!automaton_.IsAll && (excluder == nullptr || placed.First < excluder) &&
                !distances_.Reaches(own, position) && !distances_.Reaches(position, own))
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

    void ReportOutOfOrder(const TItem& item, const std::string& name, const TItem* before) {
        TSchemaFault& fault = Add(TSchemaFaultCode::OutOfOrder, NodeOf(item), name);
        if (before != nullptr)
            fault.Before = NodeOf(*before).LocalName();
    }

    void ReportUnknown(const TItem& item) {
        const std::string_view local = NodeOf(item).LocalName();
        const TSchemaElement* alike = nullptr;
        for (const TSchemaPosition& position : automaton_.Positions)
            if (position.Element != nullptr && SameButForCase(position.Element->Name, local) &&
                (alike == nullptr || position.Element->Name == local))
                alike = position.Element;
        const std::string likely = TakeLikelyMissing(local);
        const TSchemaName& name = children_[item.First].Name;
        if (name.Undeclared)
            return; // its prefix is the fault
        if (alike != nullptr && alike->Namespace != name.Namespace) {
            TSchemaFault& fault = Add(TSchemaFaultCode::WrongNamespace, NodeOf(item), local);
            fault.Bound = set_.NamespaceUri(alike->Namespace);
        } else if (alike != nullptr) {
            Add(TSchemaFaultCode::WrongCase, NodeOf(item), local).Bound = alike->Name;
        } else {
            TSchemaFault& fault = Add(TSchemaFaultCode::UnknownElement, NodeOf(item), local);
            fault.Expected = ExpectedAt(item);
            if (!likely.empty()) {
                std::erase(fault.Expected, likely);
                fault.Expected.insert(fault.Expected.begin(), likely);
            }
        }
    }

    /// An element whose name was mistyped is not missing too.
    std::string TakeLikelyMissing(std::string_view local) {
        if (missing_.empty())
            return {};
        const auto [known, added] = likely_.try_emplace(local);
        if (added)
            for (std::uint32_t p = 0; p < automaton_.Positions.size(); ++p)
                if (const TSchemaElement* element = automaton_.Positions[p].Element;
                    element != nullptr && LooksLike(element->Name, local))
                    known->second.push_back(p);
        const std::vector<std::uint32_t>& likely = known->second;
        const auto isLikely = [&](std::uint32_t p) {
            return std::find(likely.begin(), likely.end(), p) != likely.end();
        };
        const TMissing* missing = likely.empty() ? nullptr : TakeMissing(isLikely);
        if (missing == nullptr)
            return {};
        return NameOf(*std::find_if(missing->Alternatives.begin(), missing->Alternatives.end(), isLikely));
    }

    /// What the model takes at the place of an item, as far as the rest of the content can still follow.
    std::vector<std::string> ExpectedAt(const TItem& item) {
        if (automaton_.IsAll)
            return ExpectedOfAll();
        const TItem* previous = item.Before != kNone ? &items_[item.Before] : nullptr;
        const TItem* following = item.After != kNone ? &items_[item.After] : nullptr;
        std::vector<std::uint32_t> expected;
        if (previous != nullptr && automaton_.Positions[previous->Position].Max > 1 &&
            previous->Stretch < automaton_.Positions[previous->Position].Max)
            expected.push_back(previous->Position);
        for (const std::uint32_t p : automaton_.Follow(previous == nullptr ? 0 : previous->Position + 1))
            if (following == nullptr || p == following->Position ||
                distances_.Reaches(p, following->Position))
                expected.push_back(p);
        return NamesOf(expected);
    }

    std::vector<std::string> ExpectedOfAll() const {
        std::vector<std::uint32_t> expected;
        for (std::uint32_t p = 0; p < automaton_.Positions.size(); ++p)
            if (std::none_of(items_.begin(), items_.end(),
                             [p](const TItem& item) { return item.Position == p; }))
                expected.push_back(p);
        return NamesOf(expected);
    }

    void ReportMissing() {
        for (const TMissing& entry : missing_) {
            if (entry.Explained)
                continue;
            const bool atEnd = entry.BeforeItem == kNone;
            const std::vector<std::string> names = NamesOf(entry.Alternatives);
            const bool choice = names.size() > 1;
            const TXmlNode& node = atEnd ? parent_ : NodeOf(items_[entry.BeforeItem]);
            TSchemaFault& fault =
                Add(choice ? TSchemaFaultCode::MissingChoice : TSchemaFaultCode::MissingElement, node,
                    NameOf(entry.Position));
            if (choice)
                fault.Expected = names;
            if (!atEnd)
                fault.Before = node.LocalName();
        }
    }

    std::vector<TSchemaDecision> Decisions() const {
        std::vector<TSchemaDecision> decisions(children_.size());
        for (const TItem& item : items_) {
            const bool placed = item.Position != kNone;
            if (item.Candidates.empty())
                continue;
            const TSchemaPosition& position =
                automaton_.Positions[placed ? item.Position : item.Candidates.front()];
            for (std::uint32_t i = item.First; i < item.First + item.Count; ++i)
                decisions[i] = {position.Element, placed ? position.Wildcard : nullptr};
        }
        return decisions;
    }

    const TSchemaSet& set_;
    const TSchemaAutomaton& automaton_;
    TSchemaDistances& distances_;
    const TXmlNode& parent_;
    std::span<const TSchemaChild> children_;
    std::vector<TSchemaFault>& faults_;
    std::vector<TItem> items_;
    std::vector<TMissing> missing_;
    std::size_t firstMissing_ = 0;            ///< all before it are explained
    std::map<std::uint32_t, TPlaced> placed_; ///< by position
    std::unordered_map<std::string_view, std::vector<std::uint32_t>>
        likely_; ///< positions meant by a mistyped name
};

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
                                                      std::vector<TSchemaFault>& faults) {
    const auto known = distances_.try_emplace(&type.Automaton, type.Automaton).first;
    return TContentRecovery(set_, type, known->second, parent, children, faults).Run();
}

TSchemaFault MakeSchemaFault(TSchemaFaultCode code, const TXmlNode& node) {
    TSchemaFault fault;
    fault.Code = code;
    fault.Node = &node;
    fault.Line = node.Line();
    fault.LinePos = node.LinePos();
    fault.FilePos = node.FilePos();
    return fault;
}

} // namespace conferix
