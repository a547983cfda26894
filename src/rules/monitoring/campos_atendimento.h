// Rules of the fields 034 to 049, which only some kinds of guide carry.
#pragma once

#include "rules/monitoring/monitoramento_rule.h"

namespace conferix {

/// Which kinds of guide may carry a field, and which have to. The two sets differ for some fields, and so
/// do the names and kinds that the two texts speak of.
struct TTipoGuiaRow {
    TXmlField TGuiaFields::*Campo;
    std::string_view Allowed;      ///< kinds that may carry it, a character each
    std::string_view Demanded;     ///< kinds that have to
    bool ReembolsoExempt = true;   ///< not demanded of a reimbursement
    std::string_view AllowedName;  ///< subject of the text for a field that is out of place
    std::string_view AbsentName;   ///< subject of the text for an absent field
    std::string_view DemandedName; ///< subject of that text's second sentence
    std::string_view Kinds;        ///< the kinds in words
    bool ShortDemand = false;      ///< that sentence says "for" in place of "for igual a"
};

/// 034 to 049.
class TTipoGuiaRule : public TCampoMonitoramentoValidation {
  public:
    TTipoGuiaRule(TMonitoramentoContextPtr context, const TTipoGuiaRow& row)
        : TCampoMonitoramentoValidation(std::move(context)), row_(row) {}

  protected:
    void Check(const TGuiaFields& guia) override;

  private:
    const TTipoGuiaRow& row_;
};

inline constexpr TTipoGuiaRow kTipoConsulta = {.Campo = &TGuiaFields::TipoConsulta,
                                               .Allowed = "12",
                                               .Demanded = "1",
                                               .AllowedName = "O tipo da consulta",
                                               .AbsentName = "Tipo de consulta",
                                               .DemandedName = "O tipo da consulta",
                                               .Kinds = "1 (Consulta) ou 2 (SP/SADT)"};
inline constexpr TTipoGuiaRow kCaraterAtendimento = {.Campo = &TGuiaFields::CaraterAtendimento,
                                                     .Allowed = "23",
                                                     .Demanded = "23",
                                                     .AllowedName = "O caráter do atendimento",
                                                     .AbsentName = "Caráter do atendimento",
                                                     .DemandedName = "O caráter do atendimento",
                                                     .Kinds = "2 (SP/SADT) ou 3 (Internação)"};
inline constexpr TTipoGuiaRow kTipoInternacao = {.Campo = &TGuiaFields::TipoInternacao,
                                                 .Allowed = "3",
                                                 .Demanded = "3",
                                                 .AllowedName = "O tipo de internação",
                                                 .AbsentName = "Tipo de internação",
                                                 .DemandedName = "O tipo de internação",
                                                 .Kinds = "3 (Internação)",
                                                 .ShortDemand = true};
inline constexpr TTipoGuiaRow kRegimeInternacao = {.Campo = &TGuiaFields::RegimeInternacao,
                                                   .Allowed = "3",
                                                   .Demanded = "3",
                                                   .AllowedName = "O regime de internação",
                                                   .AbsentName = "Regime de internação",
                                                   .DemandedName = "O regime de internação",
                                                   .Kinds = "3 (Internação)",
                                                   .ShortDemand = true};
inline constexpr TTipoGuiaRow kTipoAtendimento = {.Campo = &TGuiaFields::TipoAtendimento,
                                                  .Allowed = "2",
                                                  .Demanded = "2",
                                                  .AllowedName = "O tipo de atendimento",
                                                  .AbsentName = "Tipo de atendimento",
                                                  .DemandedName = "O tipo de atendimento",
                                                  .Kinds = "2 (SP/SADT)",
                                                  .ShortDemand = true};
inline constexpr TTipoGuiaRow kTipoFaturamento = {.Campo = &TGuiaFields::TipoFaturamento,
                                                  .Allowed = "34",
                                                  .Demanded = "34",
                                                  .ReembolsoExempt = false,
                                                  .AllowedName = "O tipo de faturamento",
                                                  .AbsentName = "Tipo de faturamento",
                                                  .DemandedName = "O tipo de faturamento",
                                                  .Kinds = "3 (Internação) ou 4 (Odonto)",
                                                  .ShortDemand = true};
inline constexpr TTipoGuiaRow kMotivoSaida = {.Campo = &TGuiaFields::MotivoSaida,
                                              .Allowed = "23",
                                              .Demanded = "3",
                                              .AllowedName = "O motivo do encerramento do atendimento",
                                              .AbsentName = "Motivo de encerramento do atendimento",
                                              .DemandedName = "O motivo de encerramento",
                                              .Kinds = "2 (SP/SADT) ou 3 (Internação)",
                                              .ShortDemand = true};

using TCampo034Validation =
    TNamedValidation<TRuleOfRow<TTipoGuiaRule, kTipoConsulta>, "tiss.monitoramento.loteguias.guia.campo034",
                     "Tipo de Consulta">;
using TCampo038Validation =
    TNamedValidation<TRuleOfRow<TTipoGuiaRule, kCaraterAtendimento>,
                     "tiss.monitoramento.loteguias.guia.campo038", "Caráter do Atendimento">;
using TCampo039Validation =
    TNamedValidation<TRuleOfRow<TTipoGuiaRule, kTipoInternacao>, "tiss.monitoramento.loteguias.guia.campo039",
                     "Tipo de Internaçao">;
using TCampo040Validation =
    TNamedValidation<TRuleOfRow<TTipoGuiaRule, kRegimeInternacao>,
                     "tiss.monitoramento.loteguias.guia.campo040", "Regime de Internação">;
using TCampo045Validation =
    TNamedValidation<TRuleOfRow<TTipoGuiaRule, kTipoAtendimento>,
                     "tiss.monitoramento.loteguias.guia.campo045", "Tipo de Atendimento">;
using TCampo046Validation =
    TNamedValidation<TRuleOfRow<TTipoGuiaRule, kTipoFaturamento>,
                     "tiss.monitoramento.loteguias.guia.campo046", "Tipo de Faturamento">;
using TCampo049Validation =
    TNamedValidation<TRuleOfRow<TTipoGuiaRule, kMotivoSaida>, "tiss.monitoramento.loteguias.guia.campo049",
                     "Motivo de Encerramento">;

} // namespace conferix
