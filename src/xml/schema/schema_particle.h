#pragma once

#include "xml/schema/compiled_schema.h"

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <vector>

namespace conferix {

/// A particle as a schema file writes it; a content model is a tree of them.
struct TSchemaParticle {
    enum class TKind : std::uint8_t { Element, Wildcard, Sequence, Choice, All };
    TKind Kind = TKind::Sequence;
    bool Required = true;
    std::uint32_t Max = 1;
    const TSchemaElement* Element = nullptr;
    const TSchemaWildcard* Wildcard = nullptr;
    std::vector<std::shared_ptr<const TSchemaParticle>> Children;
};

/// A content model that cannot be compiled; the text says why.
class ESchemaContentModel : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Compiles a content model. Raises ESchemaContentModel when it is ambiguous or too large. The tree's depth
/// is bounded by whoever reads it.
TSchemaAutomaton CompileSchemaParticle(const TSchemaParticle& particle);

} // namespace conferix
