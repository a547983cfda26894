#include "validation/namespace_solver.h"

#include "validation/signature.h"

#include <algorithm>
#include <array>
#include <optional>
#include <set>
#include <unordered_map>
#include <utility>
#include <vector>

namespace conferix {

namespace {

constexpr std::string_view kTissNamespace = "http://www.ans.gov.br/padroes/tiss/schemas";
constexpr std::string_view kTissNamespaceCore = "www.ans.gov.br/padroes/tiss";
constexpr std::string_view kSchemaInstance = "http://www.w3.org/2001/XMLSchema-instance";

/// The elements of the XML Signature standard.
constexpr std::array<std::string_view, 45> kSignatureElements = {"CanonicalizationMethod",
                                                                 "DSAKeyValue",
                                                                 "DigestMethod",
                                                                 "DigestValue",
                                                                 "Exponent",
                                                                 "G",
                                                                 "HMACOutputLength",
                                                                 "J",
                                                                 "KeyInfo",
                                                                 "KeyName",
                                                                 "KeyValue",
                                                                 "Manifest",
                                                                 "MgmtData",
                                                                 "Modulus",
                                                                 "Object",
                                                                 "P",
                                                                 "PGPData",
                                                                 "PGPKeyID",
                                                                 "PGPKeyPacket",
                                                                 "PgenCounter",
                                                                 "Q",
                                                                 "RSAKeyValue",
                                                                 "Reference",
                                                                 "RetrievalMethod",
                                                                 "SPKIData",
                                                                 "SPKISexp",
                                                                 "Seed",
                                                                 "Signature",
                                                                 "SignatureMethod",
                                                                 "SignatureProperties",
                                                                 "SignatureProperty",
                                                                 "SignatureValue",
                                                                 "SignedInfo",
                                                                 "Transform",
                                                                 "Transforms",
                                                                 "X509CRL",
                                                                 "X509Certificate",
                                                                 "X509Data",
                                                                 "X509IssuerName",
                                                                 "X509IssuerSerial",
                                                                 "X509SKI",
                                                                 "X509SerialNumber",
                                                                 "X509SubjectName",
                                                                 "XPath",
                                                                 "Y"};

bool Contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

bool IsTissNamespace(std::string_view uri) {
    return Contains(uri, kTissNamespaceCore);
}

/// Also a misspelt one, but none of the extensions of the standard, which are namespaces of their own.
bool IsSignatureNamespace(std::string_view uri) {
    return Contains(uri, "xmldsig") && !Contains(uri, "xmldsig11") && !Contains(uri, "xmldsig-more");
}

std::string Declaration(std::string_view prefix) {
    return prefix.empty() ? "xmlns" : "xmlns:" + std::string(prefix);
}

/// The prefix that an attribute declares (empty for the default namespace); nothing for another attribute.
std::optional<std::string_view> DeclaredPrefix(std::string_view attribute) {
    if (attribute == "xmlns")
        return std::string_view{};
    if (attribute.starts_with("xmlns:"))
        return attribute.substr(std::string_view("xmlns:").size());
    return std::nullopt;
}

/// The declarations in force at each node of a walk in document order.
class TNamespaceScope {
  public:
    /// Moves on to a tag; its own declarations come into force.
    void Enter(const TXmlNode& tag) {
        while (!open_.empty() && open_.back().Tag != tag.Parent()) {
            for (; bindings_.size() > open_.back().Bindings; bindings_.pop_back())
                innermost_[bindings_.back().Prefix] = bindings_.back().Hidden;
            open_.pop_back();
        }
        open_.push_back({&tag, bindings_.size()});
        for (const TXmlAttribute& attribute : tag.Attributes())
            if (const auto prefix = DeclaredPrefix(attribute.QualifiedName()))
                Bind(*prefix, attribute.Value());
    }

    /// Adds a declaration to the tag that was entered last.
    void Bind(std::string_view prefix, std::string_view uri) {
        std::size_t& innermost = innermost_.try_emplace(prefix, kNoBinding).first->second;
        bindings_.push_back({prefix, uri, innermost});
        innermost = bindings_.size() - 1;
    }

    /// The namespace of a prefix, empty for that of no name; nothing for a prefix that is not declared.
    std::optional<std::string_view> Of(std::string_view prefix) const {
        const auto found = innermost_.find(prefix);
        if (found != innermost_.end() && found->second != kNoBinding)
            return bindings_[found->second].Uri;
        return prefix.empty() ? std::optional<std::string_view>(prefix) : std::nullopt;
    }

  private:
    struct TOpenTag {
        const TXmlNode* Tag;
        std::size_t Bindings; ///< number of those in force around the tag
    };
    struct TBinding {
        std::string_view Prefix;
        std::string_view Uri;
        std::size_t Hidden; ///< index of the one of the same prefix further out
    };
    static constexpr std::size_t kNoBinding = static_cast<std::size_t>(-1);

    std::vector<TOpenTag> open_;
    std::vector<TBinding> bindings_;
    std::unordered_map<std::string_view, std::size_t> innermost_; ///< index of the one in force, by prefix
};

/// Plans all names first, by the namespaces that the document gives them, and only then changes them.
class TNamespaceRepair {
  public:
    TNamespaceRepair(TXmlDocument& document, std::string_view expectedPrefix)
        : document_(document), root_(*document.Element()), expected_(expectedPrefix) {}

    void Run() {
        Plan();
        DeclareOnRoot();
        Apply();
    }

  private:
    enum class TPlace : std::uint8_t { Message, Signature, Foreign };

    struct TPlan {
        TXmlNode* Tag;
        TPlace Place;
        std::string_view Namespace; ///< of a foreign tag
        bool HoldsSignature;        ///< outermost tag of a signature whose parts carry "ds"
    };
    /// A prefix that an attribute or its value uses.
    struct TUse {
        const TXmlNode* Tag;
        std::string_view Prefix;
        std::string_view Namespace;
    };

    void Plan() {
        TNamespaceScope scope;
        const TXmlNode* signatureEnd = nullptr;
        constexpr std::size_t kOutside = static_cast<std::size_t>(-1);
        std::size_t outermost = kOutside; // index of the outermost signature that the walk is in
        for (TXmlNode* node = &root_; node != nullptr; node = node->NextInWalk(&document_.Root())) {
            if (node == signatureEnd)
                outermost = kOutside;
            if (!node->IsTag())
                continue;
            scope.Enter(*node);
            if (outermost == kOutside && (IsSignature(*node) || IsSignatureWrapper(*node))) {
                outermost = plans_.size();
                signatureEnd = AfterSubtree(node, &document_.Root());
            }
            const std::optional<std::string_view> uri = scope.Of(node->Prefix());
            const TPlace place = PlaceOf(*node, uri, outermost != kOutside);
            plans_.push_back({node, place, uri.value_or(""), false});
            if (outermost != kOutside && place == TPlace::Signature)
                plans_[outermost].HoldsSignature = true;
            NoteAttributes(*node, scope);
        }
    }

    static TPlace PlaceOf(const TXmlNode& tag, const std::optional<std::string_view>& uri, bool inSignature) {
        if (IsSignatureWrapper(tag))
            return TPlace::Message;
        if (uri && IsSignatureNamespace(*uri))
            return TPlace::Signature;
        if (!inSignature)
            return TPlace::Message;
        const bool misplaced = !uri || uri->empty() || IsTissNamespace(*uri);
        if (misplaced && std::ranges::find(kSignatureElements, tag.LocalName()) != kSignatureElements.end())
            return TPlace::Signature;
        return !uri || IsTissNamespace(*uri) ? TPlace::Message : TPlace::Foreign;
    }

    void NoteAttributes(const TXmlNode& tag, const TNamespaceScope& scope) {
        for (const TXmlAttribute& attribute : tag.Attributes()) {
            const TXmlName& name = attribute.Name();
            if (name.Prefix.empty() || name.Prefix == "xmlns" || name.Prefix == "xml")
                continue;
            NotePrefix(tag, name.Prefix, scope, TNamespaceSolver::IsOfSchemaInstance(name));
            const std::size_t colon = attribute.Value().find(':');
            if (name.Local == "type" && colon != std::string_view::npos) // xsi:type="ans:ct_guia"
                NotePrefix(tag, attribute.Value().substr(0, colon), scope, false);
        }
    }

    void NotePrefix(const TXmlNode& tag, std::string_view prefix, const TNamespaceScope& scope,
                    bool ofSchemaInstance) {
        const auto uri = scope.Of(prefix);
        if (!uri && !ofSchemaInstance)
            return;
        uses_.push_back({&tag, prefix, uri.value_or(kSchemaInstance)});
        used_.emplace(prefix, uses_.back().Namespace);
    }

    /// Makes the expected prefix stand for the TISS namespace, to the letter, on the root, and drops the
    /// root's other declarations of it, or of an address that only contains it, unless an attribute uses
    /// them.
    void DeclareOnRoot() {
        const std::string expected = Declaration(expected_);
        std::vector<const TXmlAttribute*> found;
        for (const TXmlAttribute& attribute : root_.Attributes())
            if (DeclaredPrefix(attribute.QualifiedName()) && IsTissNamespace(attribute.Value()))
                found.push_back(&attribute);
        std::vector<std::string> others;
        for (const TXmlAttribute* declaration : found)
            if (declaration->QualifiedName() != expected && !IsUsed(*declaration))
                others.emplace_back(declaration->QualifiedName());
        if (root_.Attribute(expected) == nullptr && !others.empty()) {
            // The declaration keeps its place.
            root_.RenameAttribute(others.front(), expected);
            others.erase(others.begin());
        }
        root_.SetAttribute(expected, kTissNamespace);
        for (const std::string& name : others)
            root_.RemoveAttribute(name);
    }

    bool IsUsed(const TXmlAttribute& declaration) const {
        const std::optional<std::string_view> prefix = DeclaredPrefix(declaration.QualifiedName());
        return prefix && used_.count({*prefix, declaration.Value()}) != 0;
    }

    void Apply() {
        TNamespaceScope scope;
        auto use = uses_.begin();
        for (const TPlan& plan : plans_) {
            TXmlNode& tag = *plan.Tag;
            DropDefaultSignatureNamespace(tag);
            scope.Enter(tag);
            switch (plan.Place) {
            case TPlace::Message:
                tag.SetPrefix(expected_);
                Require(tag, expected_, kTissNamespace, scope);
                break;
            case TPlace::Signature:
                tag.SetPrefix(kSignaturePrefix);
                Require(tag, kSignaturePrefix, kSignatureNamespace, scope);
                break;
            case TPlace::Foreign:
                Require(tag, tag.Prefix(), plan.Namespace, scope);
                break;
            }
            if (plan.HoldsSignature)
                Require(tag, kSignaturePrefix, kSignatureNamespace, scope);
            for (; use != uses_.end() && use->Tag == &tag; ++use)
                if (use->Prefix != tag.Prefix())
                    Require(tag, use->Prefix, use->Namespace, scope);
        }
    }

    /// Nothing is left that would use it.
    static void DropDefaultSignatureNamespace(TXmlNode& tag) {
        const TXmlAttribute* declaration = tag.Attribute("xmlns");
        if (declaration != nullptr && IsSignatureNamespace(declaration->Value()))
            tag.RemoveAttribute("xmlns");
    }

    /// Declares a prefix on a tag where it does not stand for that namespace already.
    static void Require(TXmlNode& tag, std::string_view prefix, std::string_view uri,
                        TNamespaceScope& scope) {
        if (scope.Of(prefix) == uri)
            return;
        tag.SetAttribute(Declaration(prefix), uri);
        scope.Bind(prefix, uri);
    }

    TXmlDocument& document_;
    TXmlNode& root_;
    std::string_view expected_;
    std::vector<TPlan> plans_;
    std::vector<TUse> uses_;
    std::set<std::pair<std::string_view, std::string_view>> used_; ///< their prefixes with the namespaces
};

} // namespace

bool TNamespaceSolver::IsOfSchemaInstance(const TXmlName& attribute) {
    return attribute.Prefix == "xsi" || attribute.Local == "schemaLocation" ||
           attribute.Local == "noNamespaceSchemaLocation";
}

void TNamespaceSolver::Solve() {
    if (solved_)
        return;
    solved_ = true;
    TNamespaceRepair(*File()->Xml(), File()->GetNamespace()).Run();
}

} // namespace conferix
