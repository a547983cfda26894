// Rules of the dates of a guide: fields 029 to 033 and 080.
#pragma once

#include "rules/monitoring/monitoramento_rule.h"

namespace conferix {

/// A date has to lie before the reference date and, for some, not before another date of the guide.
struct TDataRow {
    TDateField TGuiaFields::*Data;
    std::string_view NotBeforeReference;
    TDateField TGuiaFields::*NotEarlierThan = nullptr;
    std::string_view TooEarly = {};
};

/// 029 to 033.
class TDataRule : public TCampoMonitoramentoValidation {
  public:
    TDataRule(TMonitoramentoContextPtr context, const TDataRow& row)
        : TCampoMonitoramentoValidation(std::move(context)), row_(row) {}

  protected:
    void Check(const TGuiaFields& guia) override;

  private:
    const TDataRow& row_;
};

inline constexpr TDataRow kDataRealizacao = {&TGuiaFields::DataRealizacao,
                                             "A data de realização deve ser anterior à data atual."};
inline constexpr TDataRow kDataInicialFaturamento = {
    &TGuiaFields::DataInicialFaturamento, "A data de início do faturamento deve ser anterior à data atual."};
inline constexpr TDataRow kDataFimPeriodo = {
    &TGuiaFields::DataFimPeriodo, "A data final do período deve ser anterior à data atual.",
    &TGuiaFields::DataInicialFaturamento,
    "A data final do período deve ser maior ou igual à data de início do faturamento."};
inline constexpr TDataRow kDataProtocoloCobranca = {
    &TGuiaFields::DataProtocoloCobranca, "A data do protocolo da cobrança deve ser anterior à data atual.",
    &TGuiaFields::DataRealizacao,
    "A data do protocolo da cobrança deve ser maior ou igual à data de realização."};
inline constexpr TDataRow kDataPagamento = {
    &TGuiaFields::DataPagamento, "A data do pagamento deve ser anterior à data atual.",
    &TGuiaFields::DataProtocoloCobranca,
    "A data do pagamento deve ser maior ou igual à data do protocolo de cobrança."};
inline constexpr TDataRow kDataProcessamento = {
    &TGuiaFields::DataProcessamentoGuia, "A data do processamento da guia deve ser anterior à data atual."};

/// 080: a guide that is included was processed in the month that the lot speaks of.
class TDataProcessamentoRule : public TDataRule {
  public:
    explicit TDataProcessamentoRule(TMonitoramentoContextPtr context)
        : TDataRule(std::move(context), kDataProcessamento) {}

  protected:
    void Check(const TGuiaFields& guia) override;
};

using TCampo029Validation =
    TNamedValidation<TRuleOfRow<TDataRule, kDataRealizacao>, "tiss.monitoramento.loteguias.guia.campo029",
                     "Data de Realização">;
using TCampo030Validation =
    TNamedValidation<TRuleOfRow<TDataRule, kDataInicialFaturamento>,
                     "tiss.monitoramento.loteguias.guia.campo030", "Data de Início do Faturamento">;
using TCampo031Validation =
    TNamedValidation<TRuleOfRow<TDataRule, kDataFimPeriodo>, "tiss.monitoramento.loteguias.guia.campo031",
                     "Data Final do Período">;
using TCampo032Validation =
    TNamedValidation<TRuleOfRow<TDataRule, kDataProtocoloCobranca>,
                     "tiss.monitoramento.loteguias.guia.campo032", "Data do Protocolo da Cobrança">;
using TCampo033Validation =
    TNamedValidation<TRuleOfRow<TDataRule, kDataPagamento>, "tiss.monitoramento.loteguias.guia.campo033",
                     "Data do Pagamento">;
using TCampo080Validation =
    TNamedValidation<TDataProcessamentoRule, "tiss.monitoramento.loteguias.guia.campo080",
                     "Data do Processamento da Guia">;

} // namespace conferix
