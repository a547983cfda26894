#include "xml/namespace_check.h"

#include "xml/cut_text.h"
#include "xml/xml_document.h"

#include <fmt/format.h>

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace conferix {

namespace {

constexpr std::string_view kXmlNamespace = "http://www.w3.org/XML/1998/namespace";
constexpr std::string_view kXmlnsNamespace = "http://www.w3.org/2000/xmlns/";

/// A name has no colon, or one with a name on both sides; what follows it has to begin as names do.
bool IsQualifiedName(std::string_view name) {
    const std::size_t colon = name.find(':');
    if (colon == std::string_view::npos)
        return true;
    const std::string_view local = name.substr(colon + 1);
    if (colon == 0 || local.empty() || local.find(':') != std::string_view::npos)
        return false;
    const char first = local.front();
    return !(first >= '0' && first <= '9') && first != '-' && first != '.' && !local.starts_with("\xC2\xB7");
}

std::shared_ptr<const TXmlMessage> FaultAt(const TXmlNode& node, std::string reason) {
    return TXmlMessage::CreateError(std::move(reason), CutText(node.QualifiedName()), node.Line(),
                                    node.LinePos(), node.FilePos());
}

/// What is wrong with a name, as a sentence.
std::string NameReason(std::string_view name) {
    return fmt::format("O nome {} não é permitido: o sinal \":\" só separa um prefixo do resto do nome, que "
                       "começa com letra.",
                       QuoteText(name));
}

/// What is wrong with a declaration of a namespace; nothing for a good one and for other attributes.
std::optional<std::string> DeclarationReason(const TXmlAttribute& attribute) {
    const TXmlName& name = attribute.Name();
    const std::string_view uri = attribute.Value();
    const bool isDefault = name.Qualified == "xmlns";
    if (!isDefault && name.Prefix != "xmlns")
        return std::nullopt;
    const bool reserved = isDefault ? uri == kXmlNamespace || uri == kXmlnsNamespace
                                    : name.Local == "xmlns" || uri == kXmlnsNamespace ||
                                          (name.Local == "xml") != (uri == kXmlNamespace);
    if (reserved)
        return fmt::format("O atributo {}={} usa um {} que o XML reserva. Remova o atributo.",
                           CutText(name.Qualified), QuoteText(uri),
                           name.Local == "xml" || (!isDefault && name.Local == "xmlns") ? "nome"
                                                                                        : "endereço");
    if (!isDefault && uri.empty())
        return fmt::format("O atributo {0}=\"\" declara o prefixo \"{1}\" sem endereço. Escreva o endereço "
                           "do namespace ou remova o atributo.",
                           CutText(name.Qualified), CutText(name.Local));
    return std::nullopt;
}

/// The prefixes in force, kept up along tags in document order.
class TPrefixScope {
  public:
    void Enter(const TXmlNode& tag) {
        for (const TXmlAttribute& attribute : tag.Attributes())
            if (attribute.Name().Prefix == "xmlns")
                bindings_[attribute.Name().Local].push_back({&tag, attribute.Value()});
    }
    /// The namespace that a prefix stands for at the tag that was entered last; empty for none.
    std::string_view UriAt(const TXmlNode& tag, std::string_view prefix) {
        const auto found = bindings_.find(prefix);
        if (found == bindings_.end())
            return {};
        std::vector<TBinding>& open = found->second;
        while (!open.empty() && open.back().Tag->ByteEnd() <= tag.ByteStart())
            open.pop_back();
        return open.empty() ? std::string_view{} : open.back().Uri;
    }

  private:
    struct TBinding {
        const TXmlNode* Tag;
        std::string_view Uri;
    };
    std::unordered_map<std::string_view, std::vector<TBinding>> bindings_;
};

std::optional<std::string> DuplicateReason(const TXmlNode& tag, TPrefixScope& scope) {
    std::map<std::pair<std::string_view, std::string_view>, const TXmlAttribute*> seen;
    for (const TXmlAttribute& attribute : tag.Attributes()) {
        const TXmlName& name = attribute.Name();
        if (name.Prefix.empty() || name.Prefix == "xmlns")
            continue;
        const std::string_view uri = scope.UriAt(tag, name.Prefix);
        if (uri.empty())
            continue;
        if (const auto [first, added] = seen.try_emplace({uri, name.Local}, &attribute); !added)
            return fmt::format("Os atributos {} e {} são o mesmo, que aparece duas vezes na tag: os dois "
                               "prefixos têm o mesmo namespace. Remova um deles.",
                               CutText(first->second->QualifiedName()), CutText(name.Qualified));
    }
    return std::nullopt;
}

} // namespace

std::shared_ptr<const TXmlMessage> FindNamespaceFault(const TXmlDocument& document,
                                                      const std::vector<const TXmlNode*>& special) {
    TPrefixScope scope;
    for (const TXmlNode* node : special) {
        if (node->Kind() == TXmlNodeKind::xnInstruction) {
            if (node->QualifiedName().find(':') != std::string_view::npos)
                return FaultAt(*node, fmt::format("O nome da instrução <?{}?> não pode ter o sinal \":\".",
                                                  CutText(node->QualifiedName())));
            continue;
        }
        for (const TXmlAttribute& attribute : node->Attributes()) {
            if (!IsQualifiedName(attribute.QualifiedName()))
                return FaultAt(*node, NameReason(attribute.QualifiedName()));
            if (std::optional<std::string> reason = DeclarationReason(attribute))
                return FaultAt(*node, std::move(*reason));
        }
        scope.Enter(*node);
        if (std::optional<std::string> reason = DuplicateReason(*node, scope))
            return FaultAt(*node, std::move(*reason));
    }
    bool all = true;
    for (std::uint32_t id = 0; id < document.NameCount() && all; ++id)
        all = IsQualifiedName(document.NameOf(id).Qualified);
    const TXmlNode* root = &document.Root();
    for (const TXmlNode* node = all ? nullptr : root; node != nullptr; node = node->NextInWalk(root))
        if (node->IsTag() && !IsQualifiedName(node->QualifiedName()))
            return FaultAt(*node, NameReason(node->QualifiedName()));
    return nullptr;
}

} // namespace conferix
