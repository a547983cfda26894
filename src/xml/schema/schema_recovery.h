#pragma once

#include "xml/schema/compiled_schema.h"
#include "xml/schema/schema_fault.h"
#include "xml/schema/schema_scope.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <utility>
#include <vector>

namespace conferix {

/// A child element with its name as the schema knows it.
struct TSchemaChild {
    const TXmlNode* Node = nullptr;
    TSchemaName Name;
};

/// How a child is judged: by a declaration, as a wildcard's element, or (both null) not at all.
struct TSchemaDecision {
    const TSchemaElement* Element = nullptr;
    const TSchemaWildcard* Wildcard = nullptr;
};

/// What the other versions of a schema know of the names of elements.
class ISchemaOtherVersions {
  public:
    enum class TRelation : std::uint8_t {
        None,    ///< no version knows the element
        Renamed, ///< what is now `wanted` was, or will be, called like the element
        Distinct ///< the element is, in another version, something else than `wanted`
    };
    virtual ~ISchemaOtherVersions() = default;
    /// `found`: an element that the schema does not know; `wanted`: an element that may stand in its parent.
    virtual TRelation Relate(const TXmlNode& found, std::string_view wanted) const = 0;
};

/// How the name of a child differs from that of the element which was meant.
enum class TSchemaMisnaming : std::uint8_t {
    None,
    Silent, ///< by a prefix or namespace that is reported elsewhere
    Namespace,
    Case,
    Spelling,  ///< a guess, like those that follow
    Content,   ///< all that is in it is known to one of the elements expected
    SameThing, ///< another name for what the content model has under its own, as a CNPJ
    Renamed
};

/// The positions of a content model that a child was probably meant to take; none for an unknown one.
struct TSchemaMeaning {
    TSchemaMisnaming Misnaming = TSchemaMisnaming::None;
    std::vector<std::uint32_t> Positions;
};

/// How many elements would have to be inserted to get from one place of a content model to another.
/// Rows are made when they are asked for.
class TSchemaDistances {
  public:
    static constexpr std::uint32_t kUnreachable = 0xFFFFFFFF;

    explicit TSchemaDistances(const TSchemaAutomaton& automaton);

    /// Elements missing between a state and a position that is to come next.
    std::uint32_t Between(std::uint32_t state, std::uint32_t position) { return Row(state).Steps[position]; }
    /// Elements missing between a state and the end of the content.
    std::uint32_t ToEnd(std::uint32_t state) { return Row(state).EndSteps; }
    /// Those elements, in order; without `position` up to the end of the content.
    std::vector<std::uint32_t> Path(std::uint32_t state, std::optional<std::uint32_t> position);
    /// True when `later` can come any time after `earlier`.
    bool Reaches(std::uint32_t earlier, std::uint32_t later) {
        return Between(earlier + 1, later) != kUnreachable;
    }

  private:
    struct TRow {
        std::vector<std::uint32_t> Steps;
        std::vector<std::uint32_t> Previous;
        std::uint32_t EndSteps = kUnreachable;
        std::uint32_t EndPrevious = kUnreachable;
    };

    const TRow& Row(std::uint32_t state);

    const TSchemaAutomaton& automaton_;
    std::vector<std::unique_ptr<TRow>> rows_;
};

/// Explains content that does not fit its model with as few faults as possible: which children are
/// displaced, misnamed, unknown or too many, and which are missing. Keeps what it computes of a model for the
/// next content of the same type. For one document.
class TSchemaRecovery {
  public:
    /// `others`: null without knowledge of other versions.
    TSchemaRecovery(const TSchemaSet& set, const ISchemaOtherVersions* others) : set_(set), others_(others) {}

    /// Adds the faults of a parent's content to the list and answers how each child is to be judged. A fault
    /// that is better explained here is taken out of the list again. `forgiven`: a namespace in which the
    /// children may stand, since the parent, of the same namespace, was reported for it. `outer`: the type of
    /// the parent's parent, null when it has none.
    std::vector<TSchemaDecision> Recover(const TSchemaComplexType& type, const TXmlNode& parent,
                                         std::span<const TSchemaChild> children,
                                         std::optional<std::uint32_t> forgiven,
                                         const TSchemaComplexType* outer, TSchemaFaultList& faults);

    /// True when content that has an element at a position is right without it too.
    bool CanGo(const TSchemaAutomaton& automaton, std::uint32_t position);

    const TSchemaSet& Set() const { return set_; }
    TSchemaDistances& DistancesOf(const TSchemaAutomaton& automaton) {
        return distances_.try_emplace(&automaton, automaton).first->second;
    }
    /// What a child that a model does not know was meant to be.
    const TSchemaMeaning& MeaningOf(const TSchemaAutomaton& automaton, const TSchemaChild& child,
                                    std::optional<std::uint32_t> forgiven);
    /// A child of that name, missing in an element, was found outside of it.
    void Excuse(const TXmlNode& element, const std::string& name) { excused_.emplace(&element, name); }
    bool IsExcused(const TXmlNode& element, const std::string& name) const {
        return excused_.count({&element, name}) != 0;
    }

  private:
    using TMeaningKey = std::tuple<const TSchemaAutomaton*, const TXmlName*, std::uint32_t, bool>;

    TSchemaMeaning FindMeaning(const TSchemaAutomaton& automaton, const TSchemaChild& child,
                               bool silent) const;

    const TSchemaSet& set_;
    const ISchemaOtherVersions* others_;
    std::unordered_map<const TSchemaAutomaton*, TSchemaDistances> distances_;
    std::map<TMeaningKey, TSchemaMeaning> meanings_;
    std::set<std::pair<const TXmlNode*, std::string>> excused_;
    std::map<std::pair<const TSchemaAutomaton*, std::uint32_t>, bool> canGo_;
};

/// A fault at a node, its position taken from it.
TSchemaFault MakeSchemaFault(TSchemaFaultCode code, const TXmlNode& node);

} // namespace conferix
