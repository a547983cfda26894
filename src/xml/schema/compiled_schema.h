#pragma once

#include "xml/schema/schema_fault.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
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

/// Lexical form of a simple type's values.
enum class TSchemaValueKind : std::uint8_t {
    Any,
    String,
    Id,
    AnyUri,
    Boolean,
    Decimal,
    Integer,
    Date,
    Time,
    DateTime,
    Base64Binary
};

/// A pattern, made ready to match when it is first asked: a file meets few of those of its schema.
class TSchemaMatcher {
  public:
    explicit TSchemaMatcher(std::string pattern);
    TSchemaMatcher(const TSchemaMatcher&) = delete;
    TSchemaMatcher& operator=(const TSchemaMatcher&) = delete;
    ~TSchemaMatcher();

    /// Whether the whole value is as the pattern says.
    bool Matches(std::string_view value) const;
    /// What is wrong with the pattern; empty where nothing is.
    std::string Fault() const;

  private:
    const re2::RE2& Ready() const;

    std::string pattern_;
    mutable std::once_flag once_;
    mutable std::unique_ptr<const re2::RE2> ready_;
};

/// One derivation step's pattern facets, joined by "|".
struct TSchemaPattern {
    std::string Text; ///< as the schema writes it
    std::shared_ptr<const TSchemaMatcher> Matcher;
};

/// The facets in force for a type: its own and those it inherits. Limits are in characters (octets for
/// base64) or digits; the least value is a date in its text form.
struct TSchemaFacets {
    std::optional<std::uint32_t> Length;
    std::optional<std::uint32_t> MinLength;
    std::optional<std::uint32_t> MaxLength;
    std::optional<std::uint32_t> TotalDigits;
    std::optional<std::uint32_t> FractionDigits;
    std::optional<std::string> MinInclusive;
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
    std::string_view Bound; ///< the least value or the pattern that the value breaks
};

struct TSchemaSimpleType {
    std::string Name; ///< empty for a type declared in place
    std::uint32_t Namespace = kSchemaNoNamespace;
    const TSchemaSimpleType* Base = nullptr; ///< null for anySimpleType
    TSchemaValueKind Kind = TSchemaValueKind::Any;
    TSchemaFacets Facets;
    /// The codes, to be looked up.
    std::unordered_set<std::string, TTextHash, std::equal_to<>> CodeKeys;

    /// True when white space around a value does not count, and inside it only as one blank.
    bool CollapsesSpace() const { return Kind != TSchemaValueKind::Any && Kind != TSchemaValueKind::String; }
    /// The most specific fault of a raw value, or nothing when the value is of this type.
    std::optional<TSchemaValueFault> Check(std::string_view raw) const;
    /// True when this type is `ancestor` or restricts it over any number of steps.
    bool DerivesFrom(const TSchemaSimpleType& ancestor) const;
};

/// An xs:any: elements of any namespace, or of any but one.
struct TSchemaWildcard {
    bool Lax = false;                     ///< elements that no schema declares are not judged
    std::optional<std::uint32_t> OtherTo; ///< neither this namespace nor none is admitted

    bool Admits(std::uint32_t namespaceId) const {
        return !OtherTo || (namespaceId != kSchemaNoNamespace && namespaceId != *OtherTo);
    }
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
};

/// An attribute without namespace.
struct TSchemaAttribute {
    std::string Name;
    const TSchemaSimpleType* Type = nullptr;
    bool Required = false;
};

/// One particle of a content model; exactly one of the two pointers is set.
struct TSchemaPosition {
    const TSchemaElement* Element = nullptr;
    const TSchemaWildcard* Wildcard = nullptr;
    bool Required = true;
    std::uint32_t Max = 1;

    std::uint32_t Symbol() const { return Element != nullptr ? Element->Symbol : kSchemaWildcardSymbol; }
};

/// Deterministic automaton of a content model. Positions are in declaration order, 0-based. State 0 stands
/// before the first element, state p + 1 after one of position p. A position with Max above 1 repeats by
/// counting.
struct TSchemaAutomaton {
    std::vector<TSchemaPosition> Positions;
    std::vector<std::uint32_t> EdgeStart;   ///< first edge by state, and the end of the last
    std::vector<std::uint32_t> EdgeTargets; ///< positions that may follow, in declaration order
    std::vector<std::uint32_t> EdgeSymbols; ///< symbols of those positions
    std::vector<std::uint8_t> Accepting;    ///< by state
    bool HasWildcards = false;
    bool IsAll = false; ///< an xs:all: positions in any order, each at most once, no edges

    std::span<const std::uint32_t> Follow(std::uint32_t state) const {
        return {EdgeTargets.data() + EdgeStart[state], EdgeTargets.data() + EdgeStart[state + 1]};
    }
    std::span<const std::uint32_t> FollowSymbols(std::uint32_t state) const {
        return {EdgeSymbols.data() + EdgeStart[state], EdgeSymbols.data() + EdgeStart[state + 1]};
    }
    /// The state after an element of that local name, whatever its namespace and how often it was there;
    /// nothing where none may come.
    std::optional<std::uint32_t> After(std::uint32_t state, std::string_view localName) const;
};

enum class TSchemaContent : std::uint8_t { Empty, Simple, ElementOnly, Mixed };

struct TSchemaComplexType {
    std::string Name; ///< empty for a type declared in place
    std::uint32_t Namespace = kSchemaNoNamespace;
    const TSchemaComplexType* BaseComplex = nullptr;
    TSchemaContent Content = TSchemaContent::Empty;
    const TSchemaSimpleType* SimpleContent = nullptr; ///< of simple content only, the type that it extends
    TSchemaAutomaton Automaton;
    std::vector<TSchemaAttribute> Attributes;

    /// True when this type is `ancestor` or derives from it over any number of steps.
    bool DerivesFrom(const TSchemaComplexType& ancestor) const;
};

} // namespace conferix
