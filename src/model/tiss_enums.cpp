#include "model/tiss_enums.h"

#include "model/tiss_kinds.h"

#include <array>

namespace conferix {

namespace {

using enum TEnumTipoTransacaoTiss;

struct THeaderText {
    std::string_view Text;
    TEnumTipoTransacaoTiss Value;
};

constexpr THeaderText kHeaderTexts[] = {
    {"MONITORAMENTO", tmMonitoramento},
    {"QUALIDADE", tmMonitoramentoQualidade},
    {"ENVIO_LOTE_GUIAS", tmEnvioLoteGuias},
    {"ENVIO_ANEXO", tmEnvioLoteAnexos},
    {"SOLIC_DEMONSTRATIVO_RETORNO", tmSolicitacaoDemonstrativoRetorno},
    {"SOLIC_STATUS_PROTOCOLO", tmSolicitacaoStatusProtocolo},
    {"SOLICITACAO_PROCEDIMENTOS", tmSolicitacaoProcedimentos},
    {"SOLICITA_STATUS_AUTORIZACAO", tmSolicitacaoStatusAutorizacao},
    {"VERIFICA_ELEGIBILIDADE", tmVerificaElegibilidade},
    {"CANCELA_GUIA", tmCancelaGuia},
    {"COMUNICACAO_BENEFICIARIO", tmComunicacaoBeneficiarioInternacao},
    {"RECURSO_GLOSA", tmRecursoGlosa},
    {"SOLIC_STATUS_RECURSO_GLOSA", tmSolicitacaoStatusRecursoGlosa},
    {"PROTOCOLO_RECEBIMENTO", tmProtocoloRecebimentoLote},
    {"PROTOCOLO_RECEBIMENTO_ANEXO", tmProtocoloRecebimentoAnexo},
    {"RECEBIMENTO_RECURSO_GLOSA", tmProtocoloRecebimentoRecursoGlosa},
    {"DEMONSTRATIVO_ANALISE_CONTA", tmDemonstrativoRetorno},
    {"DEMONSTRATIVO_PAGAMENTO", tmDemonstrativoRetorno},
    {"DEMONSTRATIVO_ODONTOLOGIA", tmDemonstrativoRetorno},
    {"SITUACAO_PROTOCOLO", tmSituacaoProtocolo},
    {"RESPOSTA_SOLICITACAO", tmAutorizacaoServicos},
    {"AUTORIZACAO_ODONTOLOGIA", tmSituacaoAutorizacao},
    {"STATUS_AUTORIZACAO", tmSituacaoAutorizacao},
    {"SITUACAO_ELEGIBILIDADE", tmRespostaElegibilidade},
    {"CANCELAMENTO_GUIA_RECIBO", tmReciboCancelamentoGuia},
    {"RECIBO_COMUNICACAO", tmReciboComunicacao},
    {"RESPOSTA_RECURSO_GLOSA", tmRespostaRecursoGlosa},
};

// In the order of the enumeration.
constexpr std::array<std::string_view, 25> kTipoTransacaoNames = {
    "tmDesconhecido",
    "tmMonitoramento",
    "tmMonitoramentoQualidade",
    "tmEnvioLoteGuias",
    "tmEnvioLoteAnexos",
    "tmSolicitacaoDemonstrativoRetorno",
    "tmSolicitacaoStatusProtocolo",
    "tmSolicitacaoProcedimentos",
    "tmSolicitacaoStatusAutorizacao",
    "tmVerificaElegibilidade",
    "tmCancelaGuia",
    "tmComunicacaoBeneficiarioInternacao",
    "tmRecursoGlosa",
    "tmSolicitacaoStatusRecursoGlosa",
    "tmProtocoloRecebimentoLote",
    "tmProtocoloRecebimentoAnexo",
    "tmProtocoloRecebimentoRecursoGlosa",
    "tmDemonstrativoRetorno",
    "tmSituacaoProtocolo",
    "tmAutorizacaoServicos",
    "tmSituacaoAutorizacao",
    "tmRespostaElegibilidade",
    "tmReciboCancelamentoGuia",
    "tmReciboComunicacao",
    "tmRespostaRecursoGlosa",
};

} // namespace

TEnumTipoTransacaoTiss TipoTransacaoOf(std::string_view headerText) {
    for (const THeaderText& each : kHeaderTexts)
        if (each.Text == headerText)
            return each.Value;
    return tmDesconhecido;
}

std::string_view NameOf(TEnumTipoArquivoTiss value) {
    return KindOf(value).Name;
}

std::string_view NameOf(TEnumTipoTransacaoTiss value) {
    return kTipoTransacaoNames.at(static_cast<std::size_t>(value));
}

} // namespace conferix
