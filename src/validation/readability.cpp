#include "validation/readability.h"

#include "model/tiss_kinds.h"
#include "xml/cut_text.h"
#include "xml/name_likeness.h"
#include "xml/xml_encoding.h"
#include "xml/xml_node.h"
#include "xml/xml_writer.h"

#include <fmt/format.h>

#include <initializer_list>
#include <string_view>
#include <utility>
#include <vector>

namespace conferix {

namespace {

class TDeclarationFirstSolver : public TReadabilitySolver {
  public:
    explicit TDeclarationFirstSolver(std::shared_ptr<const std::string> text) : text_(std::move(text)) {}
    bool IsOfStructure() const override { return false; }
    std::string Name() const override { return "TDeclarationFirstSolver"; }
    std::string Description() const override { return "Apagar o que vem antes da declaração XML"; }
    /// Nothing: there is no tree.
    void Solve() override {}
    std::string SolvedXml() override { return std::string(FromDeclaration(*text_)); }

  private:
    std::shared_ptr<const std::string> text_;
};

/// An element and the name that was meant.
struct TMisnamed {
    TXmlNode* Node;
    std::string_view Name;
};

/// An element and the value that was meant.
struct TMiswritten {
    TXmlNode* Node;
    std::string Value;
};

/// What keeps a file from being identified.
struct TIdentifyingSlips {
    std::vector<TMisnamed> Names;
    std::vector<TMiswritten> Values;
};

class TIdentifyingNamesSolver : public TReadabilitySolver {
  public:
    TIdentifyingNamesSolver(std::shared_ptr<TXmlDocument> document, TIdentifyingSlips slips)
        : document_(std::move(document)), slips_(std::move(slips)) {
        for (const TMisnamed& misnamed : slips_.Names)
            description_ += fmt::format("{} <{}> para <{}>", description_.empty() ? "Renomear" : ",",
                                        misnamed.Node->LocalName(), misnamed.Name);
        for (const TMiswritten& miswritten : slips_.Values)
            description_ +=
                fmt::format("{} o valor de <{}> para {}", description_.empty() ? "Alterar" : "; alterar",
                            miswritten.Node->LocalName(), miswritten.Value);
    }
    bool IsOfStructure() const override { return true; }
    std::string Name() const override { return "TIdentifyingNamesSolver"; }
    std::string Description() const override { return description_; }
    void Solve() override {
        for (const TMiswritten& miswritten : slips_.Values)
            miswritten.Node->SetValue(miswritten.Value);
        for (const TMisnamed& misnamed : slips_.Names) {
            const std::string prefix(misnamed.Node->Prefix());
            misnamed.Node->SetName(prefix.empty() ? std::string(misnamed.Name)
                                                  : fmt::format("{}:{}", prefix, misnamed.Name));
        }
    }
    std::string SolvedXml() override {
        Solve();
        return WriteXml(*document_);
    }

  private:
    std::shared_ptr<TXmlDocument> document_;
    TIdentifyingSlips slips_;
    std::string description_;
};

/// The child that has one of the names, in whatever case; notes the name where the case is wrong.
TXmlNode* FindChild(TXmlNode& parent, std::initializer_list<std::string_view> names,
                    std::vector<TMisnamed>& misnamed) {
    for (const std::string_view name : names)
        if (TXmlNode* exact = parent.Child(name))
            return exact;
    for (TXmlNode& child : parent.ChildTags())
        for (const std::string_view name : names)
            if (SameButForCase(child.LocalName(), name)) {
                misnamed.push_back({&child, name});
                return &child;
            }
    return nullptr;
}

/// Notes the kind of transaction by which files of a root are known, where it was written with blanks around
/// it or in other case.
void CheckTransaction(const TXmlNode& root, TXmlNode& transaction, std::vector<TMiswritten>& miswritten) {
    const std::string_view value = transaction.Value();
    for (const TTissKind& kind : kTissKinds)
        if (!kind.Transaction.empty() && SameButForCase(root.LocalName(), kind.RootElement) &&
            value != kind.Transaction && SameButForCase(TrimXmlSpace(value), kind.Transaction))
            miswritten.push_back({&transaction, std::string(kind.Transaction)});
}

std::shared_ptr<const TXmlMessage> WithSolver(const TXmlMessage& error, std::shared_ptr<ISolver> solver) {
    auto message = TXmlMessage::CreateError(error.Reason(), error.SrcText(), error.Line(), error.LinePos(),
                                            error.FilePos());
    message->AddSolver(std::move(solver));
    return message;
}

} // namespace

std::shared_ptr<const TXmlMessage> WithDeclarationFirst(std::shared_ptr<const TXmlMessage> refusal,
                                                        const std::shared_ptr<const std::string>& text) {
    if (FromDeclaration(*text).size() == text->size())
        return refusal;
    return WithSolver(*refusal, std::make_shared<TDeclarationFirstSolver>(text));
}

std::shared_ptr<const TXmlMessage> WithIdentifyingNames(std::shared_ptr<const TXmlMessage> refusal,
                                                        const std::shared_ptr<TXmlDocument>& document) {
    TIdentifyingSlips slips;
    std::vector<TMisnamed>& misnamed = slips.Names;
    for (const TTissKind& kind : kTissKinds) {
        TXmlNode* root = FindChild(document->Root(), {kind.RootElement}, misnamed);
        if (root == nullptr)
            continue;
        if (TXmlNode* header = FindChild(*root, {"cabecalho"}, misnamed)) {
            if (TXmlNode* version = FindChild(*header, {"Padrao", "versaoPadrao"}, misnamed))
                if (const std::string_view value = TrimXmlSpace(version->Value());
                    !value.empty() && value.size() != version->Value().size())
                    slips.Values.push_back({version, std::string(value)});
            if (TXmlNode* identification = FindChild(*header, {"identificacaoTransacao"}, misnamed))
                if (TXmlNode* transaction = FindChild(*identification, {"tipoTransacao"}, misnamed))
                    CheckTransaction(*root, *transaction, slips.Values);
        }
        break;
    }
    if (slips.Names.empty() && slips.Values.empty())
        return refusal;
    return WithSolver(*refusal, std::make_shared<TIdentifyingNamesSolver>(document, std::move(slips)));
}

} // namespace conferix
