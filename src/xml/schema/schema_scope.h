#pragma once

#include "xml/schema/schema_set.h"
#include "xml/xml_node.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace conferix {

/// A name of a document as a schema set knows it.
struct TSchemaName {
    std::uint32_t Symbol = kSchemaNoSymbol;
    std::uint32_t Namespace = kSchemaForeignNamespace;
    bool Undeclared = false; ///< its prefix is declared nowhere around it
    bool operator==(const TSchemaName&) const = default;
};

/// The namespace declarations in force during a walk over a document. Element names are resolved once for
/// each place where declarations change, which is mostly the root alone.
class TSchemaScopes {
  public:
    /// What has to be restored when an element that declares something is left.
    struct TMark {
        std::size_t Bindings;
        std::uint32_t Epoch;
    };

    TSchemaScopes(const TSchemaSet& set, std::uint32_t nameCount) : set_(set), names_(nameCount) {}

    /// Takes over the declarations of an element; nothing when it has none.
    std::optional<TMark> Enter(const TXmlNode& node);
    void Leave(const std::optional<TMark>& mark);

    TSchemaName Element(const TXmlName& name) {
        TEntry& entry = names_[name.Id];
        if (entry.Epoch != epoch_) {
            entry.Name = Resolve(name);
            entry.Epoch = epoch_;
        }
        return entry.Name;
    }
    /// Namespace of an attribute's name; none without prefix. Nothing when the prefix is not declared.
    std::optional<std::uint32_t> AttributeNamespace(const TXmlName& name) const;
    /// The URI that a prefix stands for, "" when none does; nothing when a prefix is not declared.
    std::optional<std::string_view> Uri(std::string_view prefix) const;

  private:
    struct TBinding {
        std::string_view Prefix;
        std::string_view Uri;
        std::uint32_t Namespace;
        std::uint32_t Hidden; ///< the binding of the same prefix further out, kNoBinding without one
    };
    static constexpr std::uint32_t kNoBinding = 0xFFFFFFFF;
    struct TEntry {
        TSchemaName Name;
        std::uint32_t Epoch = 0;
    };

    TSchemaName Resolve(const TXmlName& name) const;
    const TBinding* Find(std::string_view prefix) const;

    const TSchemaSet& set_;
    std::vector<TEntry> names_; ///< by name identifier
    std::vector<TBinding> bindings_;
    std::unordered_map<std::string_view, std::uint32_t>
        innermost_; ///< index of the binding in force, by prefix
    std::uint32_t epoch_ = 1;
    std::uint32_t lastEpoch_ = 1;
};

} // namespace conferix
