#pragma once

#include "xml/schema/schema_fault.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace re2 {
class RE2;
}

namespace conferix {

/// The compiled tables of an XML schema. A set makes them when it is loaded and hands them out as const;
/// every pointer between them stays valid as long as their set.

inline constexpr std::uint32_t kSchemaUnbounded = 0xFFFFFFFF;      ///< maxOccurs="unbounded"
inline constexpr std::uint32_t kSchemaNoSymbol = 0xFFFFFFFF;       ///< a name that the set does not hold
inline constexpr std::uint32_t kSchemaWildcardSymbol = 0xFFFFFFFE; ///< the edge of a wildcard
inline constexpr std::uint32_t kSchemaNoNamespace = 0;             ///< names without namespace
inline constexpr std::uint32_t kSchemaForeignNamespace =
    0xFFFFFFFF; ///< a namespace that the set does not hold

/// Lexical form and order of a simple type's values.
enum class TSchemaValueKind : std::uint8_t {
    Any,
    String,
    NCName,
    Id,
    AnyUri,
    Boolean,
    Decimal,
    Integer,
    Float,
    Date,
    Time,
    DateTime,
    Base64Binary,
    HexBinary
};

enum class TSchemaWhiteSpace : std::uint8_t { Preserve, Replace, Collapse };

/// One derivation step's pattern facets, joined by "|".
struct TSchemaPattern {
    std::string Text; ///< as the schema writes it
    std::shared_ptr<const re2::RE2> Matcher;
};

/// The facets in force for a type: its own and those it inherits. Limits are in characters (octets for
/// binary types) or digits; bounds are values in the type's own text form.
struct TSchemaFacets {
    std::optional<std::uint32_t> Length;
    std::optional<std::uint32_t> MinLength;
    std::optional<std::uint32_t> MaxLength;
    std::optional<std::uint32_t> TotalDigits;
    std::optional<std::uint32_t> FractionDigits;
    std::optional<std::string> MinInclusive;
    std::optional<std::string> MaxInclusive;
    std::optional<std::string> MinExclusive;
    std::optional<std::string> MaxExclusive;
    std::vector<TSchemaPattern> Patterns; ///< all must match
    std::vector<std::string> Codes;       ///< enumeration in declaration order; empty: no list
};

/// Hash of texts by which a set of them is asked without a copy.
struct TTextHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>{}(text); }
};

/// What is wrong with one value.
struct TSchemaValueFault {
    TSchemaFaultCode Code;
    std::int64_t Count = 0; ///< length or digits found
    std::int64_t Limit = 0; ///< length or digits allowed
    std::string_view Bound; ///< the bound or pattern that the value breaks
};

struct TSchemaSimpleType {
    std::string Name; ///< empty for a type declared in place
    std::uint32_t Namespace = kSchemaNoNamespace;
    const TSchemaSimpleType* Base = nullptr; ///< null for anySimpleType
    TSchemaValueKind Kind = TSchemaValueKind::Any;
    TSchemaWhiteSpace WhiteSpace = TSchemaWhiteSpace::Preserve;
    TSchemaFacets Facets;
    /// The codes in the form in which values are looked up; empty for dates and the like, which are compared.
    std::unordered_set<std::string, TTextHash, std::equal_to<>> CodeKeys;

    /// The value with the type's white space rule applied; `buffer` holds it when it had to be changed.
    std::string_view Normalise(std::string_view raw, std::string& buffer) const;
    /// The most specific fault of a raw value, or nothing when the value is of this type.
    std::optional<TSchemaValueFault> Check(std::string_view raw) const;
    /// True when two values of this type are the same value (1.0 and 1.00 of a decimal type).
    bool SameValue(std::string_view rawLeft, std::string_view rawRight) const;
    /// True when this type is `ancestor` or restricts it over any number of steps.
    bool DerivesFrom(const TSchemaSimpleType& ancestor) const;
};

enum class TSchemaProcess : std::uint8_t { Strict, Lax, Skip };

/// The namespaces that an xs:any or xs:anyAttribute admits.
struct TSchemaWildcard {
    enum class TMode : std::uint8_t { Any, Other, List };
    TMode Mode = TMode::Any;
    TSchemaProcess Process = TSchemaProcess::Strict;
    std::vector<std::uint32_t> Namespaces; ///< admitted ones of a list; of Other, the one that is not

    bool Admits(std::uint32_t namespaceId) const;
};

struct TSchemaComplexType;

/// An element declaration; exactly one of the two type pointers is set.
struct TSchemaElement {
    std::string Name;
    std::uint32_t Namespace = kSchemaNoNamespace;
    std::uint32_t Symbol = kSchemaNoSymbol;
    const TSchemaSimpleType* SimpleType = nullptr;
    const TSchemaComplexType* ComplexType = nullptr;
    bool Nillable = false;
    bool Global = false;
    std::optional<std::string> Default;
    std::optional<std::string> Fixed;
};

struct TSchemaAttribute {
    std::string Name;
    std::uint32_t Namespace = kSchemaNoNamespace;
    const TSchemaSimpleType* Type = nullptr;
    bool Required = false;
    std::optional<std::string> Default;
    std::optional<std::string> Fixed;
};

/// One particle of a content model; exactly one of the two pointers is set.
struct TSchemaPosition {
    const TSchemaElement* Element = nullptr;
    const TSchemaWildcard* Wildcard = nullptr;
    std::uint32_t Min = 1;
    std::uint32_t Max = 1;

    std::uint32_t Symbol() const { return Element != nullptr ? Element->Symbol : kSchemaWildcardSymbol; }
};

/// Deterministic automaton of a content model. Positions are in declaration order, 0-based. State 0 stands
/// before the first element, state p + 1 after one of position p. A position with Max above 1 repeats by
/// counting: it is left only when its Min is reached.
struct TSchemaAutomaton {
    std::vector<TSchemaPosition> Positions;
    std::vector<std::uint32_t> EdgeStart;   ///< first edge by state, and the end of the last
    std::vector<std::uint32_t> EdgeTargets; ///< positions that may follow, in declaration order
    std::vector<std::uint32_t> EdgeSymbols; ///< symbols of those positions
    std::vector<std::uint8_t> Accepting;    ///< by state
    bool HasWildcards = false;
    bool IsAll = false;       ///< an xs:all: positions in any order, each at most once, no edges
    bool AllOptional = false; ///< the xs:all as a whole may be absent

    std::span<const std::uint32_t> Follow(std::uint32_t state) const {
        return {EdgeTargets.data() + EdgeStart[state], EdgeTargets.data() + EdgeStart[state + 1]};
    }
    std::span<const std::uint32_t> FollowSymbols(std::uint32_t state) const {
        return {EdgeSymbols.data() + EdgeStart[state], EdgeSymbols.data() + EdgeStart[state + 1]};
    }
};

enum class TSchemaContent : std::uint8_t { Empty, Simple, ElementOnly, Mixed };
enum class TSchemaDerivation : std::uint8_t { Restriction, Extension };

struct TSchemaComplexType {
    std::string Name; ///< empty for a type declared in place
    std::uint32_t Namespace = kSchemaNoNamespace;
    const TSchemaComplexType* BaseComplex = nullptr;
    const TSchemaSimpleType* BaseSimple = nullptr;
    TSchemaDerivation Derivation = TSchemaDerivation::Restriction;
    TSchemaContent Content = TSchemaContent::Empty;
    const TSchemaSimpleType* SimpleContent = nullptr; ///< of simple content only
    TSchemaAutomaton Automaton;
    std::vector<TSchemaAttribute> Attributes;
    const TSchemaWildcard* AnyAttribute = nullptr;

    /// True when this type is `ancestor` or derives from it over any number of steps.
    bool DerivesFrom(const TSchemaComplexType& ancestor) const;
};

} // namespace conferix
