#pragma once

#include "xml/schema/schema_fault.h"
#include "xml/schema/schema_model.h"
#include "xml/schema/schema_scope.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <unordered_map>
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
/// displaced, unknown or too many, and which are missing. Keeps what it computes of a model for the next
/// content of the same type.
class TSchemaRecovery {
  public:
    explicit TSchemaRecovery(const TSchemaSet& set) : set_(set) {}

    /// Adds the faults of a parent's content to the list and answers how each child is to be judged.
    std::vector<TSchemaDecision> Recover(const TSchemaComplexType& type, const TXmlNode& parent,
                                         std::span<const TSchemaChild> children,
                                         std::vector<TSchemaFault>& faults);

  private:
    const TSchemaSet& set_;
    std::unordered_map<const TSchemaAutomaton*, TSchemaDistances> distances_;
};

/// A fault at a node, its position taken from it.
TSchemaFault MakeSchemaFault(TSchemaFaultCode code, const TXmlNode& node);

} // namespace conferix
