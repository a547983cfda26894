#include "xml/schema/schema_recovery.h"

#include "xml/lower_case.h"
#include "xml/name_likeness.h"
#include "xml/xml_node.h"

#include <algorithm>
#include <deque>
#include <map>

namespace conferix {

namespace {

constexpr std::uint32_t kNone = 0xFFFFFFFF;
constexpr std::size_t kMaxCells = 2'000'000;
constexpr std::size_t kMissingSearched = 200;
constexpr std::size_t kSiblingsSearched = 8;
/// From so many elements out of order on, the right order is told instead of each place.
constexpr std::size_t kOrderTold = 3;

/// A run of children of one name that a content model places together.
struct TItem {
    std::uint32_t First = 0; ///< index of the first child
    std::uint32_t Count = 1;
    std::span<const std::uint32_t> Candidates; ///< positions of the model that take it; empty: unknown
    TSchemaMisnaming Misnaming = TSchemaMisnaming::None;
    bool Unjudged = false;          ///< what it was meant to be cannot be told
    std::uint32_t Position = kNone; ///< the one chosen; none for a displaced item
    std::uint32_t Before = kNone;   ///< the nearest items in place around it
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

bool IsGuess(TSchemaMisnaming misnaming) {
    return misnaming == TSchemaMisnaming::Spelling || misnaming == TSchemaMisnaming::Content ||
           misnaming == TSchemaMisnaming::SameThing || misnaming == TSchemaMisnaming::Renamed;
}

/// The type of an element with child elements, else null.
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

/// True when an element could be a child under a mistaken name: a value for a value, and of a container at
/// least one child that it knows.
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

/// The content to be explained: that of an element, or what should stand in an element that is missing.
struct TContent {
    const TSchemaComplexType& Type;
    std::string_view ParentName;
    const TXmlNode& Place; ///< where missing elements are reported when they belong at the end
    std::span<const TSchemaChild> Children;
    std::optional<std::uint32_t> Forgiven;
    const TSchemaComplexType* Outer = nullptr; ///< the content around the parent
    bool Missing = false;                      ///< the parent is what is missing around the children
};

class TContentRecovery {
  public:
    TContentRecovery(TSchemaRecovery& owner, const TContent& content, TSchemaFaultList& faults)
        : owner_(owner), content_(content), automaton_(content.Type.Automaton),
          distances_(owner.DistancesOf(automaton_)), children_(content.Children), faults_(faults),
          decisions_(content.Children.size()) {}

    std::vector<TSchemaDecision> Run() {
        MakeItems();
        if (automaton_.IsAll) {
            PlaceAll();
        } else {
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

  private:
    // ---- items

    void MakeItems() {
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
                items_.push_back(std::move(item));
                continue;
            }
            item.Candidates = CandidatesFor(name);
            if (item.Candidates.empty()) {
                const TSchemaMeaning& meaning = owner_.MeaningOf(automaton_, children_[i], content_.Forgiven);
                item.Candidates = meaning.Positions;
                item.Misnaming = meaning.Misnaming;
            }
            items_.push_back(std::move(item));
        }
    }

    /// Notes the names of which some children can be what the model has under that name and others cannot:
    /// the total of an item, a value, beside the totals of the guide, a container.
    void NoteNamesakes() {
        std::map<const TXmlName*, std::pair<bool, bool>> kinds; // some can, some cannot
        for (const TSchemaChild& child : children_) {
            auto& [can, cannot] = kinds[&child.Node->Name()];
            (IsOfOtherKind(child) ? cannot : can) = true;
        }
        for (const auto& [name, kind] : kinds)
            if (kind.first && kind.second)
                namesakes_.insert(name);
    }

    /// True for a child that has a value where the model has a container, or the reverse.
    bool IsOfOtherKind(const TSchemaChild& child) const {
        const auto known = bySymbol_.find(child.Name.Symbol);
        const TSchemaElement* element =
            known != bySymbol_.end() ? automaton_.Positions[known->second.front()].Element : nullptr;
        if (element == nullptr)
            return false;
        const bool holdsElements = child.Node->FirstChildTag() != nullptr;
        return ContainerType(element) == nullptr
                   ? holdsElements && element->ComplexType == nullptr
                   : !holdsElements && !TrimXmlSpace(child.Node->Value()).empty();
    }

    bool IsNamesake(const TSchemaChild& child) const {
        return namesakes_.count(&child.Node->Name()) != 0 && IsOfOtherKind(child);
    }

    /// True when another child of the same name joins an item: where one position takes them all, and where
    /// nothing in the schema has that name, so that no element could take one of them.
    bool IsOneItem(const TItem& item, const TSchemaName& name) const {
        return item.Candidates.empty() ? name.Symbol == kSchemaNoSymbol
                                       : item.Candidates.size() == 1 && !automaton_.IsAll;
    }

    /// The positions that take a child of that name as it is.
    std::span<const std::uint32_t> CandidatesFor(const TSchemaName& name) {
        const auto known = bySymbol_.find(name.Symbol);
        const bool isKnown = name.Symbol != kSchemaNoSymbol && known != bySymbol_.end();
        if (!automaton_.HasWildcards || name.Undeclared)
            return isKnown ? std::span<const std::uint32_t>(known->second) : std::span<const std::uint32_t>();
        const auto [all, added] = withWildcards_.try_emplace({name.Symbol, name.Namespace});
        if (added) {
            if (isKnown)
                all->second = known->second;
            for (const std::uint32_t p : bySymbol_[kSchemaWildcardSymbol])
                if (automaton_.Positions[p].Wildcard->Admits(name.Namespace))
                    all->second.push_back(p);
        }
        return all->second;
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
                const std::uint32_t surplus =
                    (items[i]->Count > 1 && !Repeats(p) ? 1U : 0U) + (IsGuess(items[i]->Misnaming) ? 1U : 0U);
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
        for (TItem& item : items_) {
            if (item.Candidates.empty() || seen[item.Candidates.front()])
                continue;
            item.Position = item.Candidates.front();
            seen[item.Position] = true;
        }
        for (std::uint32_t p = 0; p < automaton_.Positions.size(); ++p)
            if (!seen[p] && automaton_.Positions[p].Required)
                missing_.push_back({p, kNone, {p}});
    }

    // ---- reporting

    std::string NameOf(std::uint32_t position) const {
        const TSchemaElement* element = automaton_.Positions[position].Element;
        return element != nullptr ? element->Name : std::string("*");
    }

    std::vector<std::string> NamesOf(std::span<const std::uint32_t> positions) const {
        std::vector<std::string> names;
        for (const std::uint32_t p : positions)
            if (std::string name = NameOf(p); std::find(names.begin(), names.end(), name) == names.end())
                names.push_back(std::move(name));
        return names;
    }

    TSchemaFault& Add(TSchemaFaultCode code, const TXmlNode& node, std::string_view name) {
        TSchemaFault& fault = faults_.Add(MakeSchemaFault(code, node));
        fault.Name = name;
        fault.Parent = content_.ParentName;
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

    // ---- children that stand beside the element in which they belong

    /// Gives the unknown children that some other element of the model would take to that element: to one
    /// that is missing around them, or to a sibling in which they are missing.
    void FindMisplaced() {
        for (std::size_t i = 0; i < items_.size();) {
            if (!items_[i].Candidates.empty()) {
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

    /// The number of items from `first` on that an element knows as its children and that have no place here.
    std::size_t RunKnownTo(const TSchemaComplexType& type, std::size_t first) const {
        std::size_t count = 0;
        while (first + count < items_.size() && items_[first + count].Position == kNone &&
               items_[first + count].Count == 1 &&
               PositionOf(type, children_[items_[first + count].First].Name.Symbol) != nullptr)
            ++count;
        return count;
    }

    /// The same of what one of its children knows; `whole`: only where that is the content of it, or of
    /// several.
    std::size_t RunKnownBelow(const TSchemaComplexType& type, std::size_t first, bool whole) const {
        std::size_t count = 0;
        for (const TSchemaPosition& position : type.Automaton.Positions) {
            const TSchemaComplexType* inner = ContainerType(position.Element);
            const std::size_t run = inner != nullptr ? RunKnownTo(*inner, first) : 0;
            if (!whole || (run > 1 && IsContent(*inner, position.Max > 1, first, run)))
                count = std::max(count, run);
        }
        return count;
    }

    /// False for a displaced child that could as well belong in an element beside it, or with unknown ones.
    bool HasOnePlace(const TItem& item) {
        const std::uint32_t symbol = children_[item.First].Name.Symbol;
        if (std::ranges::none_of(automaton_.Positions, [symbol](const TSchemaPosition& position) {
                const TSchemaComplexType* type = ContainerType(position.Element);
                return type != nullptr && PositionOf(*type, symbol) != nullptr;
            }))
            return true;
        if (children_.size() > kMissingSearched)
            return false;
        const auto at = static_cast<std::size_t>(&item - items_.data());
        bool one = (at == 0 || !items_[at - 1].Candidates.empty()) &&
                   (at + 1 == items_.size() || !items_[at + 1].Candidates.empty());
        for (const TItem& sibling : items_)
            ConsiderAll(sibling, true, [&](const TItem& other, std::uint32_t child) {
                one = one && (&other == &item || TakerAt(item, other, child).Child == nullptr);
            });
        return one;
    }

    /// True when a single child can only have stood in an element of the model that is absent, and fills it.
    bool IsOnlyWrapperOf(std::uint32_t wrapper, std::size_t item) const {
        if (placed_.count(wrapper) != 0)
            return false;
        const TSchemaChild& child = children_[items_[item].First];
        for (std::uint32_t p = 0; p < automaton_.Positions.size(); ++p)
            if (const TSchemaComplexType* type = ContainerType(automaton_.Positions[p].Element);
                p != wrapper && type != nullptr && PositionOf(*type, child.Name.Symbol) != nullptr)
                return false;
        const TSchemaComplexType& type = *automaton_.Positions[wrapper].Element->ComplexType;
        const auto state = type.Automaton.After(0, child.Node->LocalName());
        return (state && type.Automaton.Accepting[*state] != 0) ||
               (child.Node->FirstChildTag() != nullptr &&
                Resembles(*PositionOf(type, child.Name.Symbol)->Element, *child.Node));
    }

    /// Which elements are looked for around some children.
    enum class TWrapping : std::uint8_t {
        Missing,  ///< that have to be here
        Whole,    ///< that may be here, and of which the children are the content, several at least
        Possible, ///< that may be here
    };

    /// True when the children of some items are the content of an element, or of several where it can repeat.
    bool IsContent(const TSchemaComplexType& wrapper, bool repeats, std::size_t first,
                   std::size_t count) const {
        const TSchemaAutomaton& automaton = wrapper.Automaton;
        std::optional<std::uint32_t> state = 0;
        for (std::size_t i = first; i < first + count && state; ++i) {
            const std::string_view name = NodeOf(items_[i]).LocalName();
            const auto next = automaton.After(*state, name);
            const bool again = !next && automaton.Accepting[*state] != 0 && repeats;
            state = again ? automaton.After(0, name) : next;
        }
        return state && automaton.Accepting[*state] != 0;
    }

    /// Looks for an element of which the children stand here without it; answers how many items it takes.
    /// `twice`: for one in which the element around the children is missing too.
    std::size_t TakeIntoWrapper(std::size_t first, TWrapping wrapping, bool twice = false) {
        TMissing* missing = nullptr;
        std::uint32_t wrapper = kNone;
        std::size_t count = 0;
        bool sure = false;
        const auto consider = [&](std::uint32_t p, TMissing* entry) {
            const TSchemaComplexType* type = ContainerType(automaton_.Positions[p].Element);
            const bool whole = wrapping == TWrapping::Whole;
            const std::size_t run = type == nullptr ? 0
                                    : twice         ? RunKnownBelow(*type, first, whole)
                                                    : RunKnownTo(*type, first);
            if (whole && !twice && (run < 2 || !IsContent(*type, Repeats(p), first, run)))
                return;
            sure = sure && (run < count || p == wrapper);
            if (run <= count || (entry == nullptr && run < 2 && !IsOnlyWrapperOf(p, first)))
                return;
            sure = true;
            count = run;
            wrapper = p;
            missing = entry;
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
        const std::uint32_t from = items_[first].First;
        const auto inside = children_.subspan(from, count);
        TSchemaFault& fault = Add(TSchemaFaultCode::MissingWrapper, NodeOf(items_[first]), element.Name);
        fault.Expected = {std::string(inside.front().Node->LocalName()),
                          std::string(inside.back().Node->LocalName())};
        fault.Count = static_cast<std::int64_t>(count);
        if (sure && !content_.Missing) {
            fault.Remedy = TSchemaRemedy::Wrap;
            fault.Content = &content_.Type;
        }
        const std::vector<TSchemaDecision> decisions =
            TContentRecovery(owner_,
                             {*element.ComplexType, element.Name, *inside.front().Node, inside,
                              content_.Forgiven, nullptr, true},
                             faults_)
                .Run();
        std::copy(decisions.begin(), decisions.end(), decisions_.begin() + from);
        for (std::size_t i = first; i < first + count; ++i)
            items_[i].Unjudged = true;
        return count;
    }

    /// A sibling that lacks a child which stands beside it.
    struct TTaker {
        const TSchemaPosition* Child = nullptr; ///< in the content of the sibling
        const TSchemaComplexType* Content = nullptr;
        const TXmlNode* Element = nullptr;
        bool Fits = false;    ///< the sibling's content is right with the child
        bool Repeats = false; ///< there may be several siblings like it
    };

    TTaker TakerAt(const TItem& item, const TItem& sibling, std::uint32_t child) {
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

    /// True when some place in an element takes one more child and all the others stand right.
    static bool IsRightWith(const TSchemaComplexType& type, const TXmlNode& element, std::string_view added) {
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

    /// The nearest sibling that takes an unknown child, rather one of which the content is right then.
    bool TakeIntoSibling(std::size_t at) {
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
        TakeInto(item, best,
                 few && (fitting == 1 || (fitting == 0 && lacking == 1)) && !HasCompany(at, best));
        return true;
    }

    /// True when the child next to an unknown one belongs with it: two elements of the name of the taker may
    /// have been meant, where it can repeat.
    bool HasCompany(std::size_t at, const TTaker& taker) {
        const auto same = [&](std::size_t other) {
            return items_[other].Candidates.empty() &&
                   PositionOf(*taker.Content, children_[items_[other].First].Name.Symbol) != nullptr;
        };
        return taker.Repeats && ((at > 0 && same(at - 1)) || (at + 1 < items_.size() && same(at + 1)));
    }

    /// The children of an item from the near end on, as far as a search goes.
    template<class Consider>
    static void ConsiderAll(const TItem& sibling, bool forward, const Consider& consider) {
        const auto count = std::min<std::uint32_t>(sibling.Count, kMissingSearched);
        for (std::uint32_t i = 0; i < count; ++i)
            consider(sibling, sibling.First + (forward ? i : sibling.Count - 1 - i));
    }

    void TakeInto(TItem& item, const TTaker& taker, bool sure) {
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

    /// Takes back that a child is missing in an element.
    void RemoveMissing(const TXmlNode& element, const std::string& name) {
        auto& faults = faults_.Latest();
        for (std::size_t i = faults.size(); i > 0 && faults[i - 1].FilePos >= element.FilePos(); --i) {
            TSchemaFault& fault = faults[i - 1];
            if (fault.Node != &element && (fault.Node == nullptr || fault.Node->Parent() != &element))
                continue;
            const bool lists = fault.Code == TSchemaFaultCode::MissingSeveral ||
                               fault.Code == TSchemaFaultCode::MissingChoice;
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

    // ---- the items one by one

    void ReportItems() {
        for (TItem& item : items_) {
            if (item.Unjudged)
                continue;
            if (item.Position != kNone)
                ReportNames(item);
            else if (item.Misnaming != TSchemaMisnaming::None && !item.Candidates.empty())
                ReportDisplacedMisnamed(item);
            else if (item.Candidates.empty() ||
                     automaton_.Positions[item.Candidates.front()].Element == nullptr)
                ReportUnknown(item);
            else
                ReportDisplaced(item);
        }
    }

    /// The name faults of the children of an item whose meaning is known.
    void ReportNames(const TItem& item) {
        if (item.Misnaming == TSchemaMisnaming::None || item.Misnaming == TSchemaMisnaming::Silent)
            return;
        const TSchemaElement& element =
            *automaton_.Positions[item.Position != kNone ? item.Position : item.Candidates.front()].Element;
        for (std::uint32_t i = item.First; i < item.First + item.Count; ++i) {
            const TXmlNode& node = *children_[i].Node;
            TSchemaFault& fault = Add(CodeOf(item.Misnaming), node, node.LocalName());
            const bool elsewhere = item.Misnaming == TSchemaMisnaming::Namespace;
            fault.Bound = elsewhere ? owner_.Set().NamespaceUri(element.Namespace) : element.Name;
            if (elsewhere)
                fault.Found = NamespaceOf(node);
            if (item.Misnaming == TSchemaMisnaming::Spelling || item.Misnaming == TSchemaMisnaming::Content ||
                NamesOf(item.Candidates).size() != 1)
                continue;
            fault.Remedy = TSchemaRemedy::Rename;
            if (item.Position == kNone && !content_.Missing && HasOnePlace(item))
                fault.Content = &content_.Type;
        }
    }

    static TSchemaFaultCode CodeOf(TSchemaMisnaming misnaming) {
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

    /// A misnamed child that has no place here: a guess is dropped unless what was meant is missing.
    void ReportDisplacedMisnamed(TItem& item) {
        const TMissing* missing = TakeMissingOf(item);
        if (missing == nullptr && IsGuess(item.Misnaming)) {
            item.Unjudged = true;
            ReportUnknown(item);
        } else {
            ReportNames(item);
        }
    }

    const TMissing* TakeMissingOf(const TItem& item) {
        return TakeMissing([&](std::uint32_t p) {
            return std::find(item.Candidates.begin(), item.Candidates.end(), p) != item.Candidates.end();
        });
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
        outOfOrder_.push_back({&item, &name, before});
    }

    void ReportOrder() {
        if (outOfOrder_.size() >= kOrderTold) {
            TSchemaFault& fault = Add(TSchemaFaultCode::WrongSequence, NodeOf(*outOfOrder_.front().Item),
                                      *outOfOrder_.front().Name);
            std::set<std::uint32_t> present;
            for (const TItem& item : items_)
                if (item.Position != kNone)
                    present.insert(item.Position);
                else if (!item.Candidates.empty() && !item.Unjudged)
                    present.insert(item.Candidates.front());
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

    void PlaceBy(TSchemaFault& fault, TSchemaRemedy remedy) const {
        if (content_.Missing)
            return;
        fault.Remedy = remedy;
        fault.Content = &content_.Type;
    }

    /// An unknown element that belongs one level further out, or that stands around what belongs here.
    void FindLevel(TSchemaFault& fault, std::uint32_t index) {
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

    bool Knows(std::string_view name) const {
        return std::ranges::any_of(automaton_.Positions, [name](const TSchemaPosition& position) {
            return position.Element != nullptr && position.Element->Name == name;
        });
    }

    void ReportUnknown(const TItem& item) {
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

    /// What the model takes at the place of an item, as far as the rest of the content can still follow.
    std::vector<std::uint32_t> ExpectedPositions(const TItem& item) {
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
        return expected;
    }

    std::vector<std::uint32_t> ExpectedOfAll() const {
        std::vector<std::uint32_t> expected;
        for (std::uint32_t p = 0; p < automaton_.Positions.size(); ++p)
            if (placed_.count(p) == 0)
                expected.push_back(p);
        return expected;
    }

    /// What is missing, all of one place together; of several that would do, one sentence each.
    void ReportMissing() {
        for (std::size_t i = 0; i < missing_.size(); ++i) {
            const std::uint32_t beforeItem = missing_[i].BeforeItem;
            if (missing_[i].Explained)
                continue;
            std::vector<std::string> together;
            for (std::size_t j = i; j < missing_.size() && missing_[j].BeforeItem == beforeItem; ++j)
                if (!missing_[j].Explained && NamesOf(missing_[j].Alternatives).size() == 1) {
                    missing_[j].Explained = true;
                    if (std::string name = NameOf(missing_[j].Position);
                        !owner_.IsExcused(content_.Place, name))
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
                        ReportMissingAt(TSchemaFaultCode::MissingChoice, beforeItem,
                                        NameOf(missing_[j].Position))
                            .Expected = std::move(names);
                }
        }
    }

    TSchemaFault& ReportMissingAt(TSchemaFaultCode code, std::uint32_t beforeItem, std::string_view name) {
        const bool atEnd = beforeItem == kNone;
        const TXmlNode& node = atEnd ? content_.Place : NodeOf(items_[beforeItem]);
        TSchemaFault& fault = Add(code, node, name);
        if (!atEnd)
            fault.Before = node.LocalName();
        return fault;
    }

    void Decide() {
        for (const TItem& item : items_) {
            const bool placed = item.Position != kNone;
            if (item.Candidates.empty() || item.Unjudged)
                continue;
            const TSchemaPosition& position =
                automaton_.Positions[placed ? item.Position : item.Candidates.front()];
            for (std::uint32_t i = item.First; i < item.First + item.Count; ++i)
                decisions_[i] = {position.Element, placed ? position.Wildcard : nullptr};
        }
    }

    struct TOutOfOrder {
        const TItem* Item;
        const std::string* Name;
        const TItem* Before;
    };

    TSchemaRecovery& owner_;
    TContent content_;
    const TSchemaAutomaton& automaton_;
    TSchemaDistances& distances_;
    std::span<const TSchemaChild> children_;
    TSchemaFaultList& faults_;
    std::vector<TSchemaDecision> decisions_;
    std::unordered_map<std::uint32_t, std::vector<std::uint32_t>> bySymbol_; ///< positions
    /// By symbol and namespace, wildcards included; only of models that have some.
    std::map<std::pair<std::uint32_t, std::uint32_t>, std::vector<std::uint32_t>> withWildcards_;
    std::set<const TXmlName*> namesakes_;
    std::vector<TItem> items_;
    std::vector<TMissing> missing_;
    std::vector<TOutOfOrder> outOfOrder_;
    std::size_t firstMissing_ = 0;            ///< all before it are explained
    std::map<std::uint32_t, TPlaced> placed_; ///< by position
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
    fault.Line = node.Line();
    fault.LinePos = node.LinePos();
    fault.FilePos = node.FilePos();
    return fault;
}

} // namespace conferix
