#include "model/arquivo_tiss.h"

#include "model/tiss_exceptions.h"
#include "model/tiss_kinds.h"

namespace conferix {

namespace {

/// The root of a TISS file, or null.
const TXmlNode* MessageRoot(const TXmlDocument& document) {
    for (const TTissKind& kind : kTissKinds)
        if (const TXmlNode* root = document.Root().Child(kind.RootElement); root != nullptr)
            return root;
    return nullptr;
}

std::string_view TransactionText(const TXmlNode* root) {
    return root != nullptr ? ValueOf(root->Find("cabecalho/identificacaoTransacao/tipoTransacao"))
                           : std::string_view{};
}

} // namespace

TArquivoTissBase::TArquivoTissBase(std::shared_ptr<TXmlDocument> document)
    : TXmlBinding(document->Element()), xml_(std::move(document)) {}

TArquivoTissBase::~TArquivoTissBase() = default;

TEnumTipoArquivoTiss TArquivoTissBase::GetTipoArquivoTiss(const TXmlDocument& document) {
    for (const TTissKind& kind : kTissKinds) {
        const TXmlNode* root = document.Root().Child(kind.RootElement);
        if (root != nullptr && (kind.Transaction.empty() || TransactionText(root) == kind.Transaction))
            return kind.Tipo;
    }
    const TXmlNode* element = document.Element();
    throw EInvalidTissFile(element != nullptr ? element->QualifiedName() : std::string_view{});
}

TEnumTipoTransacaoTiss TArquivoTissBase::GetTipoTransacaoTiss(const TXmlDocument& document) {
    return TipoTransacaoOf(TransactionText(MessageRoot(document)));
}

std::string TArquivoTissBase::GetVersaoTissDetectada(const TXmlDocument& document) {
    std::string version;
    const TXmlNode* root = MessageRoot(document);
    if (const TXmlNode* header = root != nullptr ? root->Child("cabecalho") : nullptr; header != nullptr) {
        const TXmlNode* padrao = header->Child("Padrao");
        version = ValueOf(padrao != nullptr ? padrao : header->Child("versaoPadrao"));
    }
    if (version.empty())
        throw ETissVersionNotFound();
    return version;
}

std::string_view TArquivoTissBase::TextoTipoTransacao() const {
    return TransactionText(MessageRoot(*xml_));
}

} // namespace conferix
