#include "xml/schema/schema_scope.h"

#include "xml/schema/schema_files.h"

namespace conferix {

std::optional<TSchemaScopes::TMark> TSchemaScopes::Enter(const TXmlNode& node) {
    std::optional<TMark> mark;
    for (const TXmlAttribute& attribute : node.Attributes()) {
        const TXmlName& name = attribute.Name();
        const bool isDefault = name.Qualified == "xmlns";
        if (!isDefault && name.Prefix != "xmlns")
            continue;
        if (!mark) {
            mark = TMark{bindings_.size(), epoch_};
            epoch_ = ++lastEpoch_;
        }
        const std::string_view uri = attribute.Value();
        const std::string_view prefix = isDefault ? std::string_view{} : name.Local;
        std::uint32_t& innermost = innermost_.try_emplace(prefix, kNoBinding).first->second;
        bindings_.push_back({prefix, uri, set_.NamespaceId(uri), innermost});
        innermost = static_cast<std::uint32_t>(bindings_.size() - 1);
    }
    return mark;
}

void TSchemaScopes::Leave(const std::optional<TMark>& mark) {
    if (!mark)
        return;
    for (; bindings_.size() > mark->Bindings; bindings_.pop_back())
        innermost_[bindings_.back().Prefix] = bindings_.back().Hidden;
    epoch_ = mark->Epoch;
}

const TSchemaScopes::TBinding* TSchemaScopes::Find(std::string_view prefix) const {
    const auto found = innermost_.find(prefix);
    return found != innermost_.end() && found->second != kNoBinding ? &bindings_[found->second] : nullptr;
}

TSchemaName TSchemaScopes::Resolve(const TXmlName& name) const {
    TSchemaName result;
    // A name with an empty part or a second colon belongs to no namespace at all.
    if (name.Qualified.starts_with(':') || name.Local.empty() ||
        name.Local.find(':') != std::string_view::npos)
        return result;
    const TBinding* binding = Find(name.Prefix);
    if (name.Prefix.empty()) {
        result.Namespace = binding != nullptr ? binding->Namespace : kSchemaNoNamespace;
    } else if (name.Prefix == "xml") {
        result.Namespace = set_.NamespaceId(kXmlNamespace);
    } else if (binding == nullptr || binding->Uri.empty()) {
        result.Undeclared = true;
        return result;
    } else {
        result.Namespace = binding->Namespace;
    }
    if (result.Namespace != kSchemaForeignNamespace)
        result.Symbol = set_.SymbolOf(result.Namespace, name.Local);
    return result;
}

std::optional<std::uint32_t> TSchemaScopes::AttributeNamespace(const TXmlName& name) const {
    if (name.Prefix.empty())
        return kSchemaNoNamespace;
    const auto uri = Uri(name.Prefix);
    if (!uri)
        return std::nullopt;
    return set_.NamespaceId(*uri);
}

std::optional<std::string_view> TSchemaScopes::Uri(std::string_view prefix) const {
    if (prefix == "xml")
        return kXmlNamespace;
    const TBinding* binding = Find(prefix);
    if (prefix.empty())
        return binding != nullptr ? binding->Uri : std::string_view{};
    if (binding == nullptr || binding->Uri.empty())
        return std::nullopt;
    return binding->Uri;
}

} // namespace conferix
