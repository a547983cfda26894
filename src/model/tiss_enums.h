// The enumerations of the TISS standard.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace conferix {

/// Kind of a TISS file.
enum class TEnumTipoArquivoTiss : std::uint8_t {
    taMensagemTISS,           ///< a message between provider and health plan
    taMonitoramento,          ///< a monitoring file for the regulator
    taMonitoramentoQualidade, ///< the regulator's report on the quality of monitoring data
};

/// What a file asks for or answers, by its header.
enum class TEnumTipoTransacaoTiss : std::uint8_t {
    tmDesconhecido,
    tmMonitoramento,
    tmMonitoramentoQualidade,
    tmEnvioLoteGuias,
    tmEnvioLoteAnexos,
    tmSolicitacaoDemonstrativoRetorno,
    tmSolicitacaoStatusProtocolo,
    tmSolicitacaoProcedimentos,
    tmSolicitacaoStatusAutorizacao,
    tmVerificaElegibilidade,
    tmCancelaGuia,
    tmComunicacaoBeneficiarioInternacao,
    tmRecursoGlosa,
    tmSolicitacaoStatusRecursoGlosa,
    tmProtocoloRecebimentoLote,
    tmProtocoloRecebimentoAnexo,
    tmProtocoloRecebimentoRecursoGlosa,
    tmDemonstrativoRetorno,
    tmSituacaoProtocolo,
    tmAutorizacaoServicos,
    tmSituacaoAutorizacao,
    tmRespostaElegibilidade,
    tmReciboCancelamentoGuia,
    tmReciboComunicacao,
    tmRespostaRecursoGlosa,
};

/// Kind of a billing guide, in the order in which a lot lists its guides.
enum class TEnumTipoGuia : std::uint8_t {
    tgConsulta,         ///< consultation
    tgSPSADT,           ///< diagnostic and therapeutic services
    tgResumoInternacao, ///< hospitalisation summary
    tgHonorarios,       ///< fees
    tgOdonto,           ///< dental
};

inline constexpr std::size_t kTiposGuia = 5; ///< number of kinds of guide

/// The transaction that a header's tipoTransacao names, compared exactly; tmDesconhecido for other texts.
TEnumTipoTransacaoTiss TipoTransacaoOf(std::string_view headerText);

/// The identifier of a value, as "tmEnvioLoteGuias".
std::string_view NameOf(TEnumTipoArquivoTiss value);
std::string_view NameOf(TEnumTipoTransacaoTiss value);

} // namespace conferix
