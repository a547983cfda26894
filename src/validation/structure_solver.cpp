#include "validation/structure_solver.h"

#include "platform/utf8.h"
#include "validation/namespace_solver.h"
#include "validation/signature.h"
#include "validation/structure_order.h"
#include "validation/value_repair.h"
#include "xml/cut_text.h"
#include "xml/schema/schema_set.h"
#include "xml/xml_writer.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace conferix {

namespace {

using TStage = TStructureSolver::TStage;
using TSchemaPtr = std::shared_ptr<const TSchemaSet>;
using TFilePtr = std::shared_ptr<const IArquivoTiss>;

std::string WithPrefix(std::string_view prefix, std::string_view name) {
    return prefix.empty() ? std::string(name) : fmt::format("{}:{}", prefix, name);
}

/// True for the attribute that declares what a prefix stands for.
bool Declares(const TXmlAttribute& attribute, std::string_view prefix) {
    return prefix.empty() ? attribute.QualifiedName() == "xmlns"
                          : attribute.Name().Prefix == "xmlns" && attribute.Name().Local == prefix;
}

bool DeclaresPrefix(const TXmlNode& node, std::string_view prefix) {
    return std::ranges::any_of(node.Attributes(),
                               [prefix](const TXmlAttribute& a) { return Declares(a, prefix); });
}

/// True when an element or something below it has a prefix.
bool UsesPrefix(const TXmlNode& node, std::string_view prefix) {
    for (const TXmlNode* at = &node; at != nullptr; at = at->NextInWalk(&node))
        if (at->IsTag() && (at->Prefix() == prefix ||
                            (!prefix.empty() && std::ranges::any_of(at->Attributes(), [&](const auto& a) {
                                return a.Name().Prefix == prefix;
                            }))))
            return true;
    return false;
}

/// The prefix by which an element can be in a namespace, its parent's before others; nothing where none is
/// declared.
std::optional<std::string> PrefixFor(const TXmlNode& node, std::string_view uri) {
    std::map<std::string_view, std::string_view> bindings;
    for (const TXmlNode* at = node.Parent(); at != nullptr && at->IsTag(); at = at->Parent())
        for (const TXmlAttribute& attribute : at->Attributes())
            if (attribute.QualifiedName() == "xmlns")
                bindings.emplace("", attribute.Value());
            else if (attribute.Name().Prefix == "xmlns")
                bindings.emplace(attribute.Name().Local, attribute.Value());
    if (const auto own = bindings.find(node.Parent()->Prefix()); own != bindings.end() && own->second == uri)
        return std::string(own->first);
    const auto other = std::ranges::find_if(bindings, [uri](const auto& b) { return b.second == uri; });
    return other != bindings.end() ? std::optional(std::string(other->first)) : std::nullopt;
}

/// Gives an element, and those in it that follow it in its prefix, another prefix.
void SetPrefixOfBranch(TXmlNode& node, const std::string& prefix) {
    const std::string old(node.Prefix());
    bool used = false;
    for (TXmlNode* at = &node; at != nullptr;) {
        const bool changes = at == &node || (at->IsTag() && at->Prefix() == old && !IsSignature(*at) &&
                                             !DeclaresPrefix(*at, old) && !DeclaresPrefix(*at, prefix));
        if (changes)
            at->SetPrefix(prefix);
        else
            used = used || UsesPrefix(*at, old);
        at = changes ? at->NextInWalk(&node) : AfterSubtree(at, &node);
    }
    if (!used && old != prefix)
        node.RemoveAttribute(old.empty() ? std::string("xmlns") : "xmlns:" + old);
}

class TRenameSolver : public TStructureSolver {
  public:
    TRenameSolver(TFilePtr file, TXmlNode& node, const TSchemaFault& fault, TSchemaPtr schema)
        : TStructureSolver(std::move(file), node, TStage::Names), name_(fault.Bound),
          prefix_(fault.Namespace.empty() ? std::nullopt : PrefixFor(node, fault.Namespace)),
          schema_(std::move(schema)), content_(fault.Content) {}
    std::string Name() const override { return "TRenameElementSolver"; }
    std::string Description() const override {
        return fmt::format("Renomear <{}> para <{}>", CutText(Node().LocalName()),
                           WithPrefix(prefix_.value_or(""), name_));
    }

  protected:
    void Mend() override {
        if (prefix_)
            SetPrefixOfBranch(Node(), *prefix_);
        Node().SetName(WithPrefix(Node().Prefix(), name_));
        if (content_ != nullptr)
            PlaceChild(*content_, Node());
    }

  private:
    std::string name_;
    std::optional<std::string> prefix_; ///< of the namespace of the right name, where it stands in another
    TSchemaPtr schema_;
    const TSchemaComplexType* content_; ///< in which it has to be placed; null where it stands right
};

/// Gives an element, and those in it that follow it in its prefix, the prefix of another namespace.
class TPrefixSolver : public TStructureSolver {
  public:
    TPrefixSolver(TFilePtr file, TXmlNode& node, std::string prefix)
        : TStructureSolver(std::move(file), node, TStage::Names), prefix_(std::move(prefix)) {}
    std::string Name() const override { return "TElementNamespaceSolver"; }
    std::string Description() const override {
        return prefix_.empty()
                   ? fmt::format("Escrever <{}> sem prefixo", CutText(Node().LocalName()))
                   : fmt::format("Escrever <{}> com o prefixo \"{}\"", CutText(Node().LocalName()), prefix_);
    }

  protected:
    void Mend() override { SetPrefixOfBranch(Node(), prefix_); }

  private:
    std::string prefix_;
};

/// The correction of the namespaces of the whole document.
class TAllNamespacesSolver : public TStructureSolver {
  public:
    TAllNamespacesSolver(const TFilePtr& file, TXmlNode& node)
        : TStructureSolver(file, node, TStage::Names), solver_(file) {}
    std::string Name() const override { return solver_.Name(); }
    std::string Description() const override { return solver_.Description(); }
    std::vector<const TXmlNode*> Scope() const override { return {File()->Xml()->Element()}; }

  protected:
    void Mend() override { solver_.Solve(); }

  private:
    TNamespaceSolver solver_;
};

class TPlaceSolver : public TStructureSolver {
  public:
    TPlaceSolver(TFilePtr file, TXmlNode& node, const TSchemaFault& fault, TSchemaPtr schema)
        : TStructureSolver(std::move(file), node, TStage::Order), all_(fault.Remedy == TSchemaRemedy::Sort),
          before_(fault.Before), schema_(std::move(schema)), content_(fault.Content) {}
    std::string Name() const override { return all_ ? "TSortElementsSolver" : "TPlaceElementSolver"; }
    std::string Description() const override {
        const std::string parent = CutText(Node().Parent()->LocalName());
        if (all_)
            return fmt::format("Pôr os elementos de <{}> na ordem do schema", parent);
        const std::string name = CutText(Node().LocalName());
        return before_.empty() ? fmt::format("Mover <{}> para o fim de <{}>", name, parent)
                               : fmt::format("Mover <{}> para antes de <{}>", name, before_);
    }
    std::vector<const TXmlNode*> Scope() const override { return {Node().Parent()}; }

  protected:
    void Mend() override {
        if (all_)
            SortChildren(*content_, *Node().Parent());
        else
            PlaceChild(*content_, Node());
    }

  private:
    bool all_;
    std::string before_;
    TSchemaPtr schema_;
    const TSchemaComplexType* content_;
};

/// Puts a new element around some siblings; one that may repeat, as often as its content begins anew.
class TWrapSolver : public TStructureSolver {
  public:
    TWrapSolver(TFilePtr file, TXmlNode& node, const TSchemaFault& fault, TSchemaPtr schema)
        : TStructureSolver(std::move(file), node, TStage::Levels), name_(fault.Name),
          first_(fault.Expected.front()), last_(fault.Expected.back()),
          count_(static_cast<std::size_t>(fault.Count)), one_(fault.Limit == 1), schema_(std::move(schema)),
          content_(*fault.Content) {}
    std::string Name() const override { return "TWrapElementsSolver"; }
    std::string Description() const override {
        return first_ == last_
                   ? fmt::format("Pôr <{}> em volta de <{}>{}", name_, CutText(first_),
                                 count_ == 1 ? std::string() : fmt::format(" ({} vezes)", count_))
                   : fmt::format("Pôr <{}> em volta de <{}> a <{}>", name_, CutText(first_), CutText(last_));
    }
    std::vector<const TXmlNode*> Scope() const override { return {Node().Parent()}; }

  protected:
    void Mend() override {
        const auto& positions = content_.Automaton.Positions;
        const auto wrapper = std::ranges::find_if(positions, [this](const TSchemaPosition& position) {
            return position.Element != nullptr && position.Element->Name == name_;
        });
        TXmlNode* at = &Node();
        for (std::size_t left = count_; left > 0 && at != nullptr;) {
            const std::size_t count =
                wrapper->Max > 1 && !one_ ? OneContent(*at, left, *wrapper->Element) : left;
            at = Wrap(*at, count);
            left -= count;
        }
    }

  private:
    /// How many of the siblings from one on are the content of one element.
    static std::size_t OneContent(const TXmlNode& first, std::size_t most, const TSchemaElement& wrapper) {
        const TSchemaAutomaton& automaton = wrapper.ComplexType->Automaton;
        std::uint32_t state = 0;
        std::size_t count = 0;
        for (const TXmlNode* node = &first; node != nullptr && count < most; node = node->NextSiblingTag()) {
            const auto next = automaton.After(state, node->LocalName());
            if (!next)
                return automaton.Accepting[state] != 0 && count > 0 ? count : most;
            state = *next;
            ++count;
        }
        return count;
    }

    /// Answers the sibling after the wrapped ones.
    TXmlNode* Wrap(TXmlNode& first, std::size_t count) {
        TXmlNode& wrapper = *first.Document().NewTag(WithPrefix(first.Prefix(), name_));
        first.Parent()->InsertChild(wrapper, &first);
        TXmlNode* at = &first;
        for (; count > 0 && at != nullptr; --count) {
            TXmlNode* next = at->NextSiblingTag();
            at->Remove();
            wrapper.InsertChild(*at, nullptr);
            at = next;
        }
        PlaceChild(content_, wrapper);
        return at;
    }

    std::string name_;
    std::string first_;
    std::string last_;
    std::size_t count_;
    bool one_; ///< around all of them
    TSchemaPtr schema_;
    const TSchemaComplexType& content_;
};

/// Moves an element one level in or out.
class TLevelSolver : public TStructureSolver {
  public:
    TLevelSolver(TFilePtr file, TXmlNode& node, const TSchemaFault& fault, TSchemaPtr schema)
        : TStructureSolver(std::move(file), node, TStage::Levels),
          into_(fault.Remedy == TSchemaRemedy::MoveInto), other_(const_cast<TXmlNode&>(*fault.Other)),
          schema_(std::move(schema)), content_(*fault.Content) {}
    std::string Name() const override { return "TMoveElementSolver"; }
    std::string Description() const override {
        return fmt::format("Mover <{}> para {} de <{}>", CutText(Node().LocalName()),
                           into_ ? "dentro" : "fora", CutText(other_.LocalName()));
    }
    std::vector<const TXmlNode*> Scope() const override { return {&other_, other_.Parent()}; }

  protected:
    void Mend() override {
        Node().Remove();
        if (into_)
            other_.InsertChild(Node(), nullptr);
        else
            other_.Parent()->InsertChild(Node(), other_.NextSibling());
        PlaceChild(content_, Node());
    }

  private:
    bool into_;
    TXmlNode& other_;
    TSchemaPtr schema_;
    const TSchemaComplexType& content_;
};

/// A comment, or an instruction to some program.
bool IsRemark(const TXmlNode& node) {
    return node.Kind() == TXmlNodeKind::xnComment || node.Kind() == TXmlNodeKind::xnInstruction;
}

void MoveBefore(TXmlNode& node, TXmlNode& sibling) {
    node.Remove();
    sibling.Parent()->InsertChild(node, &sibling);
}

class TUnwrapSolver : public TStructureSolver {
  public:
    TUnwrapSolver(TFilePtr file, TXmlNode& node) : TStructureSolver(std::move(file), node, TStage::Levels) {}
    std::string Name() const override { return "TUnwrapElementSolver"; }
    std::string Description() const override {
        return fmt::format("Tirar <{}> e deixar no lugar o que há nele", CutText(Node().LocalName()));
    }
    std::vector<const TXmlNode*> Scope() const override { return {Node().Parent()}; }

  protected:
    void Mend() override {
        for (TXmlNode* inner = Node().FirstChild(); inner != nullptr;) {
            TXmlNode* next = inner->NextSibling();
            if (inner->IsTag() || IsRemark(*inner))
                MoveBefore(*inner, Node());
            inner = next;
        }
        Node().Remove();
    }
};

class TRemoveSolver : public TStructureSolver {
  public:
    using TStructureSolver::TStructureSolver;
    std::string Name() const override { return "TRemoveElementSolver"; }
    std::string Description() const override {
        const std::string name = CutText(Node().LocalName());
        if (!WithLoss())
            return fmt::format("Remover <{}>, que está vazio e não é obrigatório", name);
        std::size_t inner = 0;
        for (const TXmlNode* at = Node().NextInWalk(&Node()); at != nullptr; at = at->NextInWalk(&Node()))
            inner += at->IsTag() ? 1 : 0;
        const std::string value = Node().TextWithCData();
        return fmt::format("Remover <{}> (com perda: {})", name,
                           inner == 1                    ? "1 elemento"
                           : inner > 1                   ? fmt::format("{} elementos", inner)
                           : TrimXmlSpace(value).empty() ? "o elemento, sem valor"
                                                         : QuoteText(value));
    }
    std::vector<const TXmlNode*> Scope() const override { return {Node().Parent()}; }

  protected:
    /// Comments in what is empty stay.
    void Mend() override {
        std::vector<TXmlNode*> remarks;
        for (TXmlNode* at = Node().FirstChild(); at != nullptr && !WithLoss(); at = at->NextInWalk(&Node()))
            if (IsRemark(*at))
                remarks.push_back(at);
        for (TXmlNode* remark : remarks)
            MoveBefore(*remark, Node());
        Node().Remove();
    }
};

/// Gives an element another value, which means the same or, with loss, is a piece of it.
class TValueSolver : public TStructureSolver {
  public:
    TValueSolver(TFilePtr file, TXmlNode& node, TStage stage, std::string value)
        : TStructureSolver(std::move(file), node, stage), value_(std::move(value)) {}
    std::string Name() const override { return WithLoss() ? "TCutTextSolver" : "TRepairValueSolver"; }
    std::string Description() const override {
        if (!WithLoss())
            return "Alterar o valor para " + value_;
        const std::string text = Node().TextWithCData();
        const std::string_view lost = std::string_view(text).substr(std::min(value_.size(), text.size()));
        return fmt::format("Cortar o texto em {} caracteres (com perda: {})", CountCharacters(value_),
                           QuoteText(lost));
    }
    const TXmlNode* Target() const override { return &Node(); }
    std::optional<std::string> Replacement() const override { return value_; }

  protected:
    /// A value in CDATA sections becomes plain text; comments stay.
    void Mend() override {
        for (TXmlNode* at = Node().FirstChild(); at != nullptr;) {
            TXmlNode* next = at->NextSibling();
            if (at->Kind() == TXmlNodeKind::xnCData)
                at->Remove();
            at = next;
        }
        Node().SetValue(value_);
    }

  private:
    std::string value_;
};

/// True for what stands inside a signature, which no change leaves valid.
bool IsSignedContent(const TXmlNode& node) {
    for (const TXmlNode* at = node.Parent(); at != nullptr; at = at->Parent())
        if (IsSignature(*at) || IsSignatureWrapper(*at))
            return true;
    return false;
}

/// True when the correction of the namespaces makes an undeclared prefix, which a tag or its attributes have,
/// superfluous or known.
bool CanBeDeclared(const TXmlNode& tag, std::string_view prefix) {
    return std::ranges::all_of(tag.Attributes(), [prefix](const TXmlAttribute& attribute) {
        return attribute.Name().Prefix != prefix || TNamespaceSolver::IsOfSchemaInstance(attribute.Name());
    });
}

/// The beginning of a text that its type admits; nothing for what is no text of several words, as numbers and
/// codes, of which a part is worth nothing.
std::optional<std::string> CutToLimit(const TSchemaFault& fault) {
    constexpr std::int64_t kShortestText = 30; // numbers have 20 characters at most, texts more
    std::string_view text = fault.Found;
    if (fault.Code != TSchemaFaultCode::TooLong || fault.Limit < kShortestText ||
        text.find(' ') == std::string_view::npos)
        return std::nullopt;
    text = TrimXmlSpace(text.substr(0, BytesOfCharacters(text, static_cast<std::size_t>(fault.Limit))));
    return fault.Type->Check(text) ? std::nullopt : std::optional(std::string(text));
}

} // namespace

std::vector<const TXmlNode*> TStructureSolver::Scope() const {
    return {&node_, node_.Parent()};
}

void TStructureSolver::Solve() {
    // Another correction may have taken the element out.
    if (!solved_ && node_.Parent() != nullptr)
        Mend();
    solved_ = true;
}

std::string TStructureSolver::SolvedXml() {
    Solve();
    return WriteXml(*document_);
}

std::shared_ptr<TStructureSolver> MakeValueRepair(TXmlNode& node, std::string value) {
    return std::make_shared<TValueSolver>(nullptr, node, TStage::Values, std::move(value));
}

std::vector<std::shared_ptr<TStructureSolver>>
StructureSolversOf(const TSchemaFault& fault, const TFilePtr& file, const TSchemaPtr& schema) {
    std::vector<std::shared_ptr<TStructureSolver>> solvers;
    if (IsSignedContent(*fault.Node))
        return solvers;
    TXmlNode& node = const_cast<TXmlNode&>(*fault.Node); // of the file's tree, which corrections may change
    const auto add = [&]<class TSolver>(std::shared_ptr<TSolver> solver) {
        solvers.push_back(std::move(solver));
    };
    switch (fault.Remedy) {
    case TSchemaRemedy::Rename:
        if (fault.Code != TSchemaFaultCode::WrongNamespace)
            add(std::make_shared<TRenameSolver>(file, node, fault, schema));
        else if (auto prefix = PrefixFor(node, fault.Bound))
            add(std::make_shared<TPrefixSolver>(file, node, std::move(*prefix)));
        break;
    case TSchemaRemedy::Place:
    case TSchemaRemedy::Sort:
        add(std::make_shared<TPlaceSolver>(file, node, fault, schema));
        break;
    case TSchemaRemedy::Wrap:
        add(std::make_shared<TWrapSolver>(file, node, fault, schema));
        break;
    case TSchemaRemedy::MoveInto:
    case TSchemaRemedy::MoveOut:
        add(std::make_shared<TLevelSolver>(file, node, fault, schema));
        break;
    case TSchemaRemedy::Unwrap:
        if (TrimXmlSpace(node.TextWithCData()).empty())
            add(std::make_shared<TUnwrapSolver>(file, node));
        break;
    case TSchemaRemedy::Remove:
        add(std::make_shared<TRemoveSolver>(
            file, fault.Other != nullptr ? const_cast<TXmlNode&>(*fault.Other) : node, TStage::Values));
        break;
    case TSchemaRemedy::None:
        break;
    }
    const bool root = fault.Code == TSchemaFaultCode::WrongNamespace && node.Parent()->Parent() == nullptr;
    if (root || (fault.Code == TSchemaFaultCode::UndeclaredPrefix && CanBeDeclared(node, fault.Found)))
        add(std::make_shared<TAllNamespacesSolver>(file, node));
    if (fault.Code == TSchemaFaultCode::UnknownElement)
        add(std::make_shared<TRemoveSolver>(file, node, TStage::Losses));
    if (fault.Type == nullptr || fault.Attribute != nullptr || node.FirstChildTag() != nullptr)
        return solvers;
    if (auto value = RepairedValue(*fault.Type, fault.Found))
        add(std::make_shared<TValueSolver>(file, node, TStage::Values, std::move(*value)));
    else if (auto cut = CutToLimit(fault))
        add(std::make_shared<TValueSolver>(file, node, TStage::Losses, std::move(*cut)));
    return solvers;
}

} // namespace conferix
