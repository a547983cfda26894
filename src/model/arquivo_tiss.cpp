#include "model/arquivo_tiss.h"

#include "model/tiss_exceptions.h"

namespace conferix {

namespace {

constexpr std::string_view kMensagem = "mensagemTISS";
constexpr std::string_view kMonitoramento = "mensagemEnvioANS";

/// The root of a message, or null.
const TXmlNode* MessageRoot(const TXmlDocument& document) {
    const TXmlNode* root = document.Root().Child(kMensagem);
    return root != nullptr ? root : document.Root().Child(kMonitoramento);
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
    if (document.Root().Child(kMensagem) != nullptr)
        return TEnumTipoArquivoTiss::taMensagemTISS;
    const std::string_view transaction = TransactionText(document.Root().Child(kMonitoramento));
    if (transaction == "MONITORAMENTO")
        return TEnumTipoArquivoTiss::taMonitoramento;
    if (transaction == "QUALIDADE")
        return TEnumTipoArquivoTiss::taMonitoramentoQualidade;
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
