#pragma once

#include "xml/schema/schema_set.h"

#include <cstdint>
#include <memory>
#include <random>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace conferix {

/// An element of a generated document, with the declaration that it was made from.
struct TGeneratedNode {
    std::string Prefix;
    std::string Name;
    std::string Text;
    std::vector<std::pair<std::string, std::string>> Attributes;
    std::vector<std::unique_ptr<TGeneratedNode>> Children;
    const TSchemaElement* Element = nullptr;      ///< null for an element that only a wildcard admits
    const TSchemaSimpleType* ValueType = nullptr; ///< null for an element with child elements

    std::unique_ptr<TGeneratedNode> Clone() const;
};

/// Writes documents out of a compiled set: a seeded walk over its automata and types that reaches every
/// branch of every choice sooner or later, and seeded damage to such documents. The same seed gives the
/// same documents.
class TSchemaGenerator {
  public:
    TSchemaGenerator(const TSchemaSet& set, std::uint64_t seed) : set_(set), random_(seed) {}

    /// Names that are taken wherever an element may choose among others.
    void Prefer(std::set<std::string> names) { preferred_ = std::move(names); }
    /// A valid document below a random global element of the target namespace.
    std::unique_ptr<TGeneratedNode> Document();
    /// Damages one random place and answers what was done; the document may happen to stay valid.
    std::string Mutate(TGeneratedNode& root);
    std::string Serialize(const TGeneratedNode& root) const;

    /// A value of a simple type.
    std::string Value(const TSchemaSimpleType& type);

  private:
    std::uint32_t Below(std::uint32_t limit) { return static_cast<std::uint32_t>(random_() % limit); }
    bool Chance(std::uint32_t percent) { return Below(100) < percent; }

    std::unique_ptr<TGeneratedNode> MakeElement(const TSchemaElement& element, int depth);
    std::unique_ptr<TGeneratedNode> MakeFree(const TSchemaWildcard& wildcard, int depth);
    void FillContent(TGeneratedNode& node, const TSchemaComplexType& type, int depth);
    void AddAttributes(TGeneratedNode& node, const TSchemaComplexType& type);
    void AddPosition(TGeneratedNode& node, const TSchemaPosition& position, int depth);
    std::string RawValue(const TSchemaSimpleType& type);
    std::string TextValue(const TSchemaSimpleType& type);
    std::string DecimalValue(const TSchemaSimpleType& type);
    std::string Digits(std::uint32_t count);
    std::string PrefixOf(std::uint32_t namespaceId) const;
    std::string DamageValue(TGeneratedNode& node);
    std::string DamageChildren(TGeneratedNode& node);
    std::string DamageName(TGeneratedNode& node);
    std::string DamageAttributes(TGeneratedNode& node);
    void RenewIds(TGeneratedNode& node);

    std::uint32_t Choose(std::span<const std::uint32_t> follow, const TSchemaAutomaton& automaton);

    const TSchemaSet& set_;
    std::set<std::string> preferred_;
    std::mt19937_64 random_;
    std::uint32_t nextId_ = 0;
    std::uint32_t budget_ = 0; ///< elements that the document may still grow by freely
};

} // namespace conferix
