// How the content of one element is explained where it does not fit its model.
#pragma once

#include "xml/schema/schema_recovery.h"
#include "xml/xml_node.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace conferix {

/// The type of an element with child elements, else null.
const TSchemaComplexType* ContainerType(const TSchemaElement* element);
/// The place of a content for elements of a name; null for one that it does not know.
const TSchemaPosition* PositionOf(const TSchemaComplexType& type, std::uint32_t symbol);
/// The same of a child, also where its name is in wrong case.
const TSchemaPosition* PositionOf(const TSchemaComplexType& type, const TSchemaChild& child);
/// True when an element could be a child under a mistaken name: a value for a value, and of a container at
/// least one child that it knows.
bool Resembles(const TSchemaElement& element, const TXmlNode& node);
/// True of a misnaming that is not beyond doubt.
bool IsGuess(TSchemaMisnaming misnaming);

/// Explains one content: which children stand right (content_recovery.cpp), which belong in an element that
/// is missing or stands beside them (content_misplaced.cpp), and what is said of each and of what is missing
/// (content_faults.cpp).
class TContentRecovery {
  public:
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

    TContentRecovery(TSchemaRecovery& owner, const TContent& content, TSchemaFaultList& faults)
        : owner_(owner), content_(content), automaton_(content.Type.Automaton),
          distances_(owner.DistancesOf(automaton_)), children_(content.Children), faults_(faults),
          decisions_(content.Children.size()) {}

    std::vector<TSchemaDecision> Run();

  private:
    static constexpr std::uint32_t kNone = 0xFFFFFFFF;
    static constexpr std::size_t kMissingSearched = 200;
    struct TCost;

    /// A run of children of one name that a content model places together.
    struct TItem {
        std::uint32_t First = 0; ///< index of the first child
        std::uint32_t Count = 1;
        const std::vector<std::uint32_t>* TakenAt = nullptr; ///< see Candidates; null for none
        TSchemaMisnaming Misnaming = TSchemaMisnaming::None;
        bool Unjudged = false;          ///< what it was meant to be cannot be told
        bool Spare = false;             ///< see FindSpare
        std::uint32_t Position = kNone; ///< the one chosen; none for a displaced item
        std::uint32_t Wrapper = kNone;  ///< the one of the missing element in which it belongs
        std::uint32_t Before = kNone;   ///< the nearest items in place around it
        std::uint32_t After = kNone;
        std::uint32_t Stretch =
            0; ///< occurrences in place up to this item without another element in place between

        /// The positions of the model that take it; empty: unknown.
        std::span<const std::uint32_t> Candidates() const {
            return TakenAt != nullptr ? *TakenAt : std::span<const std::uint32_t>();
        }
    };
    static_assert(sizeof(TItem) <= 40, "a hostile file has millions of them");

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

    // ---- items

    void MakeItems();

    /// Notes the names of which some children can be what the model has under that name and others cannot:
    /// the total of an item, a value, beside the totals of the guide, a container.
    void NoteNamesakes();

    /// True for a child that has a value where the model has a container, or the reverse.
    bool IsOfOtherKind(const TSchemaChild& child) const;

    bool IsNamesake(const TSchemaChild& child) const;

    /// True when another child of the same name joins an item: where one position takes them all, and where
    /// nothing in the schema has that name, so that no element could take one of them.
    bool IsOneItem(const TItem& item, const TSchemaName& name) const;

    /// The positions that take a child of that name as it is; null for none.
    const std::vector<std::uint32_t>* PositionsFor(const TSchemaName& name);

    /// Finds empty elements beside another branch of their choice that is filled: generators write each
    /// branch. They are told, and go.
    void FindSpare();

    /// Takes back what was said of an element before its siblings were known.
    void RemoveFaultsOf(const TXmlNode& element);

    /// True where a content never has both.
    bool Exclude(std::uint32_t position, std::uint32_t other);

    const TXmlNode& NodeOf(const TItem& item) const { return *children_[item.First].Node; }

    bool Repeats(std::uint32_t position);

    // ---- placing the items of a sequence or choice

    /// Chooses which items stay in place, a shortest explanation by dynamic programming over the items and
    /// the places of the model that they can take. Very long contents are done piece by piece.
    void Place();

    std::size_t PlaceWindow(std::span<TItem*> items, const std::vector<std::uint32_t>& states,
                            std::size_t startState, bool last);

    std::uint32_t Gap(std::uint32_t state, std::uint32_t position);

    void CollectMissing(const std::vector<TItem*>& known);

    void AddMissing(std::uint32_t state, std::optional<std::uint32_t> target, std::uint32_t beforeItem);

    /// The positions that could stand where one is missing: as short a way on, or another branch of a choice.
    std::vector<std::uint32_t> AlternativesOf(std::uint32_t position, std::uint32_t state,
                                              std::optional<std::uint32_t> target);

    // ---- xs:all

    void PlaceAll();

    // ---- reporting

    std::string NameOf(std::uint32_t position) const;

    std::vector<std::string> NamesOf(std::span<const std::uint32_t> positions) const;

    TSchemaFault& Add(TSchemaFaultCode code, const TXmlNode& node, std::string_view name);

    /// Occurrences against the limits, stretch by stretch of one position.
    void ReportCounts();

    void ReportStretch(std::uint32_t position, const std::vector<const TItem*>& stretch);

    void SummarizePlaced();

    // ---- children that stand beside the element in which they belong

    /// Gives the unknown children that some other element of the model would take to that element: to one
    /// that is missing around them, or to a sibling in which they are missing.
    void FindMisplaced();

    /// The number of items from `first` on that an element knows as its children and that have no place here.
    std::size_t RunKnownTo(const TSchemaComplexType& type, std::size_t first) const;

    /// The number of items from `first` on that are the content of an element, where elements in it are
    /// missing around some of them, at most `levels` one in the other; 0 where they are not its content.
    std::size_t WholeContentFrom(const TSchemaComplexType& type, std::size_t first, int levels) const;

    /// True of an item that an element, or one in it, knows as a child.
    bool BelongsIn(const TSchemaComplexType& type, std::size_t item) const;

    /// The same of what one of its children knows; `whole`: only where that is the content of it, or of
    /// several.
    std::size_t RunKnownBelow(const TSchemaComplexType& type, std::size_t first, bool whole) const;

    /// False for a displaced child that could as well belong in an element beside it, or with unknown ones.
    bool HasOnePlace(const TItem& item);

    /// True when a single child can only have stood in an element of the model that is absent, and fills it.
    bool IsOnlyWrapperOf(std::uint32_t wrapper, std::size_t item) const;

    /// Which elements are looked for around some children.
    enum class TWrapping : std::uint8_t {
        Missing,  ///< that have to be here
        Whole,    ///< that may be here, and of which the children are the content, several at least
        Possible, ///< that may be here
    };

    /// True when the children of some items are the content of an element, or of several where it can repeat.
    bool IsContent(const TSchemaComplexType& wrapper, bool repeats, std::size_t first,
                   std::size_t count) const;

    /// Looks for an element of which the children stand here without it; answers how many items it takes.
    /// `twice`: for one in which the element around the children is missing too.
    std::size_t TakeIntoWrapper(std::size_t first, TWrapping wrapping, bool twice = false);

    /// A sibling that lacks a child which stands beside it.
    struct TTaker {
        const TSchemaPosition* Child = nullptr; ///< in the content of the sibling
        const TSchemaComplexType* Content = nullptr;
        const TXmlNode* Element = nullptr;
        bool Fits = false;    ///< the sibling's content is right with the child
        bool Repeats = false; ///< there may be several siblings like it
    };

    TTaker TakerAt(const TItem& item, const TItem& sibling, std::uint32_t child);

    /// True when some place in an element takes one more child and all the others stand right.
    static bool IsRightWith(const TSchemaComplexType& type, const TXmlNode& element, std::string_view added);

    /// The nearest sibling that takes an unknown child, rather one of which the content is right then.
    bool TakeIntoSibling(std::size_t at);

    /// True when the child next to an unknown one belongs with it: two elements of the name of the taker may
    /// have been meant, where it can repeat.
    bool HasCompany(std::size_t at, const TTaker& taker);

    /// The children of an item from the near end on, as far as a search goes.
    template<class Consider>
    static void ConsiderAll(const TItem& sibling, bool forward, const Consider& consider) {
        const auto count = std::min<std::uint32_t>(sibling.Count, kMissingSearched);
        for (std::uint32_t i = 0; i < count; ++i)
            consider(sibling, sibling.First + (forward ? i : sibling.Count - 1 - i));
    }

    void TakeInto(TItem& item, const TTaker& taker, bool sure);

    /// Takes back that a child is missing in an element.
    void RemoveMissing(const TXmlNode& element, const std::string& name);

    // ---- the items one by one

    void ReportItems();

    /// The name faults of the children of an item whose meaning is known.
    void ReportNames(const TItem& item);

    /// True of a child that stands in another namespace than an element, where that is not told elsewhere.
    bool IsInOtherNamespace(const TSchemaChild& child, const TSchemaElement& element) const;

    static TSchemaFaultCode CodeOf(TSchemaMisnaming misnaming);

    /// A misnamed child that has no place here: a guess is dropped unless what was meant is missing.
    void ReportDisplacedMisnamed(TItem& item);

    const TMissing* TakeMissingOf(const TItem& item);

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

    void ReportDisplaced(const TItem& item);

    void ReportOutOfOrder(const TItem& item, const std::string& name, const TItem* before);

    void ReportOrder();

    void PlaceBy(TSchemaFault& fault, TSchemaRemedy remedy) const;

    /// An unknown element that belongs one level further out, or that stands around what belongs here.
    void FindLevel(TSchemaFault& fault, std::uint32_t index);

    bool Knows(std::string_view name) const;

    void ReportUnknown(const TItem& item);

    /// What the model takes at the place of an item, as far as the rest of the content can still follow.
    std::vector<std::uint32_t> ExpectedPositions(const TItem& item);

    std::vector<std::uint32_t> ExpectedOfAll() const;

    /// What is missing, all of one place together; of several that would do, one sentence each.
    void ReportMissing();

    TSchemaFault& ReportMissingAt(TSchemaFaultCode code, std::uint32_t beforeItem, std::string_view name);

    void Decide();

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

} // namespace conferix
