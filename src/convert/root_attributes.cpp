#include "convert/root_attributes.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace conferix {

namespace {

constexpr std::string_view kTiss = "http://www.ans.gov.br/padroes/tiss/schemas";
constexpr std::string_view kInstance = "http://www.w3.org/2001/XMLSchema-instance";
constexpr std::string_view kPrefix = "ans";
constexpr std::string_view kXmlnsPrefix = "xmlns:ans";
constexpr std::string_view kXmlnsInstance = "xmlns:xsi";
constexpr std::string_view kLocation = "xsi:schemaLocation";

struct TDeclaration {
    const TXmlNode* Owner;
    std::string Prefix;
    std::string Uri;
};

bool IsDeclaration(std::string_view attribute) {
    return attribute == "xmlns" || attribute.starts_with("xmlns:");
}

std::vector<TDeclaration> DeclarationsOf(const TXmlNode& node) {
    std::vector<TDeclaration> declarations;
    for (const TXmlAttribute& attribute : node.Attributes())
        if (IsDeclaration(attribute.QualifiedName()))
            declarations.push_back(
                {&node,
                 std::string(attribute.QualifiedName() == "xmlns" ? std::string_view()
                                                                  : attribute.Name().Local),
                 std::string(attribute.Value())});
    return declarations;
}

bool IsBelow(const TXmlNode& node, const TXmlNode* ancestor) {
    const TXmlNode* at = &node;
    while (at != nullptr && at != ancestor)
        at = at->Parent();
    return at != nullptr;
}

/// Makes the tree independent of what the document element declares beyond "ans" and "xsi".
class TRequalifier {
  public:
    explicit TRequalifier(TXmlNode& root) : root_(root), outer_(DeclarationsOf(root)) {}

    void Run() {
        for (TXmlNode* node = &root_; node != nullptr; node = node->NextInWalk(&root_)) {
            if (!node->IsTag())
                continue;
            while (!inner_.empty() && !IsBelow(*node, inner_.back().Owner))
                inner_.pop_back();
            if (node != &root_)
                for (TDeclaration& declaration : DeclarationsOf(*node))
                    inner_.push_back(std::move(declaration));
            Requalify(*node);
        }
    }

  private:
    static const TDeclaration* Find(const std::vector<TDeclaration>& declarations, std::string_view prefix) {
        const auto found = std::find_if(declarations.rbegin(), declarations.rend(),
                                        [prefix](const auto& other) { return other.Prefix == prefix; });
        return found != declarations.rend() ? &*found : nullptr;
    }

    void Requalify(TXmlNode& node) {
        const TDeclaration* own =
            Find(inner_, node.Prefix()) == nullptr ? Find(outer_, node.Prefix()) : nullptr;
        if (own != nullptr && own->Uri == kTiss && Find(inner_, kPrefix) == nullptr)
            node.SetPrefix(kPrefix);
        else if (own != nullptr)
            Declare(node, *own);
        std::vector<std::string> prefixes;
        for (const TXmlAttribute& attribute : node.Attributes())
            if (!attribute.Name().Prefix.empty() && !IsDeclaration(attribute.QualifiedName()))
                prefixes.emplace_back(attribute.Name().Prefix);
        for (const std::string& prefix : prefixes)
            if (const TDeclaration* used = Find(outer_, prefix);
                used != nullptr && Find(inner_, prefix) == nullptr)
                Declare(node, *used);
    }

    /// Repeats a declaration of the document element on an element that needs it.
    void Declare(TXmlNode& node, const TDeclaration& declaration) {
        const bool stays = (declaration.Prefix == kPrefix && declaration.Uri == kTiss) ||
                           (declaration.Prefix == "xsi" && declaration.Uri == kInstance);
        if (stays || &node == &root_ || declaration.Uri.empty())
            return;
        node.SetAttribute(declaration.Prefix.empty() ? "xmlns" : "xmlns:" + declaration.Prefix,
                          declaration.Uri);
        inner_.push_back({&node, declaration.Prefix, declaration.Uri});
    }

    TXmlNode& root_;
    std::vector<TDeclaration> outer_; ///< of the document element
    std::vector<TDeclaration> inner_; ///< of the elements around the current one, outermost first
};

bool HasStandardAttributes(const TXmlNode& root) {
    constexpr std::array<std::pair<std::string_view, std::string_view>, 3> kExpected = {
        {{kXmlnsPrefix, kTiss}, {kXmlnsInstance, kInstance}, {kLocation, {}}}};
    std::size_t place = 0;
    for (const TXmlAttribute& attribute : root.Attributes()) {
        if (place == kExpected.size() || attribute.QualifiedName() != kExpected[place].first)
            return false;
        if (!kExpected[place].second.empty() && attribute.Value() != kExpected[place].second)
            return false;
        ++place;
    }
    return place == kExpected.size();
}

/// Notes attributes of the document element that are lost for good.
void NoteLosses(const TXmlNode& root, TConversionRun& run) {
    for (const TXmlAttribute& attribute : root.Attributes()) {
        const std::string_view name = attribute.QualifiedName();
        if (!IsDeclaration(name) && attribute.Name().Local != "schemaLocation")
            run.AddBelow(TConversionNoteType::ntLoss, root, fmt::format("@{}", name),
                         std::string(attribute.Value()),
                         fmt::format("O atributo \"{}\" do elemento raiz foi retirado.", name));
    }
}

} // namespace

void RewriteRootAttributes(TXmlDocument& document, std::string_view versao, TConversionRun& run) {
    TXmlNode* root = document.Element();
    if (root == nullptr || root->LocalName() != "mensagemTISS")
        return;
    std::string file(versao);
    std::replace(file.begin(), file.end(), '.', '_');
    const std::string location = fmt::format("{0} {0}/tissV{1}.xsd", kTiss, file);
    if (!HasStandardAttributes(*root)) {
        NoteLosses(*root, run);
        const std::string prefix(root->Prefix());
        TRequalifier(*root).Run();
        if (root->Prefix() != prefix)
            run.Add(TConversionNoteType::ntChange, *root, prefix,
                    "Os elementos do padrão passam a ter o prefixo \"ans\".");
        while (!root->Attributes().empty())
            root->RemoveAttribute(std::string(root->Attributes().begin()->QualifiedName()));
        root->SetAttribute(kXmlnsPrefix, kTiss);
        root->SetAttribute(kXmlnsInstance, kInstance);
    }
    root->SetAttribute(kLocation, location);
}

} // namespace conferix
