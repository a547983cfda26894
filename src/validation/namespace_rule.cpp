#include "validation/namespace_rule.h"

#include "model/mensagem_tiss.h"
#include "model/monitoramento.h"
#include "validation/namespace_solver.h"
#include "validation/signature.h"
#include "xml/cut_text.h"
#include "xml/xml_scanner.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>

namespace conferix {

namespace {

constexpr std::array<std::string_view, 15> kSignatureNames = {
    "Signature",       "SignedInfo",       "CanonicalizationMethod",
    "SignatureMethod", "HMACOutputLength", "Reference",
    "Transforms",      "Transform",        "DigestMethod",
    "DigestValue",     "SignatureValue",   "KeyInfo",
    "X509Data",        "X509Certificate",  "Object"};

std::string_view PrefixOf(std::string_view qualifiedName) {
    const std::size_t colon = qualifiedName.find(':');
    return colon == std::string_view::npos ? std::string_view{} : qualifiedName.substr(0, colon);
}

/// The first two distinct prefixes; no entry at all when no name has one.
std::vector<std::string_view> Prefixes(const std::vector<std::string_view>& names) {
    std::vector<std::string_view> prefixes;
    for (const std::string_view name : names)
        if (const std::string_view prefix = PrefixOf(name); prefixes.empty() || prefixes.front() != prefix) {
            prefixes.push_back(prefix);
            if (prefixes.size() == 2)
                return prefixes;
        }
    if (prefixes.size() == 1 && prefixes.front().empty())
        prefixes.clear();
    return prefixes;
}

std::string TagList(const std::vector<std::string_view>& names) {
    return CutText(fmt::format("{}", fmt::join(names, ", ")), kShownFound);
}

} // namespace

void TNamespaceValidation::Visit(const IMensagemTiss& mensagem) {
    Check(mensagem.shared_from_this());
}
void TNamespaceValidation::Visit(const IMonitoramento& monitoramento) {
    Check(monitoramento.shared_from_this());
}
void TNamespaceValidation::Visit(const IMonitoramentoQualidade& qualidade) {
    Check(qualidade.shared_from_this());
}

bool TNamespaceValidation::SignatureTagWithRequiredNamespace(std::string_view tagName) {
    return std::any_of(kSignatureNames.begin(), kSignatureNames.end(),
                       [&](std::string_view name) { return tagName.find(name) != std::string_view::npos; });
}

void TNamespaceValidation::Check(const std::shared_ptr<const IArquivoTiss>& file) {
    StartVisit();
    signatureTags_.clear();
    // One walk gathers the names in order of appearance: those of signatures, and those of all tags.
    const TXmlDocument& document = *file->Xml();
    std::vector<bool> inSignature(document.NameCount());
    std::vector<bool> seen(document.NameCount());
    std::vector<const TXmlName*> names;
    const TXmlNode* signatureEnd = nullptr;
    bool inside = false;
    TXmlMappingScanner::Scan(document.Root(), [&](const TXmlNode& node, bool&) {
        if (inside && &node == signatureEnd)
            inside = false;
        if (!node.IsTag())
            return;
        const TXmlName& name = node.Name();
        if (!seen[name.Id]) {
            seen[name.Id] = true;
            names.push_back(&name);
        }
        if (!inside && (IsSignature(node) || IsSignatureWrapper(node))) {
            inside = true;
            signatureEnd = AfterSubtree(&node, &document.Root());
            if (!IsSignature(node))
                return; // the wrapper is a tag of the message
        }
        if (inside && !inSignature[name.Id]) {
            inSignature[name.Id] = true;
            signatureTags_.push_back(name.Qualified);
        }
    });

    std::vector<std::string_view> messageNames;
    for (const TXmlName* name : names)
        if (!inSignature[name->Id])
            messageNames.push_back(name->Qualified);
    JudgeMessageTags(file, Prefixes(messageNames));
    if (!signatureTags_.empty())
        JudgeSignatureTags(file);
}

void TNamespaceValidation::AddError(const std::shared_ptr<const IArquivoTiss>& file, std::string reason) {
    Error(nullptr, std::move(reason)).AddSolver(std::make_shared<TNamespaceSolver>(file));
}

void TNamespaceValidation::JudgeMessageTags(const std::shared_ptr<const IArquivoTiss>& file,
                                            const std::vector<std::string_view>& prefixes) {
    const std::string_view expected = file->GetNamespace();
    if (prefixes.empty())
        AddError(file, fmt::format("É necessário incluir o namespace \"{}\" nas tags do xml.", expected));
    else if (prefixes.size() > 1)
        AddError(file, fmt::format(
                           "Foram encontrado vários namespaces nas tags do xml. O esperado é apenas \"{}\".",
                           expected));
    else if (prefixes.front() != expected)
        AddError(file, fmt::format("O namespace {} é inválido. O esperado é \"{}\".",
                                   CutText(prefixes.front(), kShownFound), expected));
    else
        Success(nullptr,
                "O namespace do XML é válido, conforme estabelecido nos schemas XSD do componente de "
                "comunicação.");
}

void TNamespaceValidation::JudgeSignatureTags(const std::shared_ptr<const IArquivoTiss>& file) {
    std::vector<std::string_view> judged;
    std::vector<std::string_view> without;
    std::vector<std::string_view> wrong;
    for (const std::string_view name : signatureTags_) {
        if (!SignatureTagWithRequiredNamespace(name))
            continue;
        judged.push_back(name);
        const std::string_view prefix = PrefixOf(name);
        if (prefix.empty())
            without.push_back(name);
        else if (prefix != kSignaturePrefix)
            wrong.push_back(name);
    }
    const std::vector<std::string_view> prefixes = Prefixes(judged);
    if (prefixes.size() > 1) {
        wrong.insert(wrong.end(), without.begin(), without.end());
        AddError(file, fmt::format(
                           "Algumas tags de assinatura digital estão com o namespace incorreto. O esperado é "
                           "apenas o namespace \"ds\".\r\nTags com namespace incorreto: {}",
                           TagList(wrong)));
    } else if (prefixes.empty()) {
        AddError(file,
                 fmt::format("As tags de assinatura digital estão sem namespace. É esperado o namespace "
                             "\"ds\".\r\nTags com namespace ausente: {}",
                             TagList(without)));
    } else if (prefixes.front() != kSignaturePrefix) {
        AddError(file, fmt::format("O namespace \"{}\" é inválido para a assinatura digital. O esperado é "
                                   "\"ds\".\r\nTags com namespace incorreto: {}",
                                   CutText(prefixes.front(), kShownFound), TagList(wrong)));
    } else {
        Success(nullptr, "O namespace da assinatura digital é válido.");
    }
}

} // namespace conferix
