// The rules about lots of guides, in the order of the tree.
#include "rules/billing_rules.h"

#include "rules/item_validations.h"
#include "rules/lote_validations.h"
#include "rules/sequencial_validation.h"
#include "rules/totalizer_validations.h"

namespace conferix {

namespace {

// Groups, under which rules stand.
constexpr std::string_view kLote = "tiss.mensagem.loteguias";
constexpr std::string_view kConsulta = "tiss.mensagem.loteguias.consulta";
constexpr std::string_view kConsultaProcedimentos = "tiss.mensagem.loteguias.consulta.procedimento";
constexpr std::string_view kSpSadt = "tiss.mensagem.loteguias.spsadt";
constexpr std::string_view kSpSadtProcedimentos = "tiss.mensagem.loteguias.spsadt.procedimento";
constexpr std::string_view kSpSadtDespesas = "tiss.mensagem.loteguias.spsadt.despesa";
constexpr std::string_view kSpSadtTotais = "tiss.mensagem.loteguias.spsadt.valortotal";
constexpr std::string_view kInternacao = "tiss.mensagem.loteguias.internacao";
constexpr std::string_view kInternacaoProcedimentos = "tiss.mensagem.loteguias.internacao.procedimento";
constexpr std::string_view kInternacaoDespesas = "tiss.mensagem.loteguias.internacao.despesa";
constexpr std::string_view kInternacaoTotais = "tiss.mensagem.loteguias.internacao.valortotal";
constexpr std::string_view kHonorarios = "tiss.mensagem.loteguias.honorarios";
constexpr std::string_view kHonorariosProcedimentos = "tiss.mensagem.loteguias.honorarios.procedimento";

} // namespace

void AddBillingRules(TRuleTable& rules) {
    RULE(TLoteSemGuiasValidation, kLote, ".lotesemguias", "Lote Sem Guias", kRequired, TLoteComGuia);
    RULE(TLoteComGuiasDeTiposDiferentesValidation, kLote, ".lotecomguiasdetiposdiferentes",
         "Lote com Guias de Tipos Diferentes", kRequired, TLoteDeUmTipo);
    RULE(TLoteComMaisDeCemGuiasValidation, kLote, ".lotecommaisdecemguias", "Lote Com Mais de 100 Guias",
         kRequired, TLoteAteCemGuias);

    // ---- Consultation guide
    RULE(TLoteGuiaConsultaValidation, kLote, ".consulta", "Guia de Consulta", kRequired,
         TLoteGuiaTissValidation<IGuiaConsulta>);
    RULE(TGuiaConsultaProcedimentoValidation, kConsulta, ".procedimento", "Procedimento Realizado", kOptional,
         TGrupoGuiaValidation);
    RULE(TGuiaConsultaProcedimentoCodigoValidation, kConsultaProcedimentos, ".codigo",
         "Código do procedimento", kOptional, TProcedimentosCodigoValidation);
    RULE(TGuiaConsultaProcedimentoValorValidation, kConsultaProcedimentos, ".valor", "Valor do procedimento",
         kOptional, TProcedimentosValorTotalValidation);

    // ---- SP/SADT guide
    RULE(TLoteGuiaSpSadtValidation, kLote, ".spsadt", "Guia de SP/SADT", kRequired,
         TLoteGuiaTissValidation<IGuiaSpSadt>);
    RULE(TGuiaSpSadtProcedimentosExecutadosValidation, kSpSadt, ".procedimento", "Procedimentos Executados",
         kOptional, TGrupoGuiaValidation);
    RULE(TGuiaSpSadtProcedimentosCodigoValidation, kSpSadtProcedimentos, ".codigo",
         "Código dos procedimentos", kOptional, TProcedimentosCodigoValidation);
    RULE(TGuiaSpSadtProcedimentosQuantidadeValidation, kSpSadtProcedimentos, ".quantidade",
         "Quantidade dos procedimentos", kOptional, TProcedimentosQuantidadeValidation);
    RULE(TGuiaSpSadtProcedimentosFatorReducaoAcrescimoValidation, kSpSadtProcedimentos, ".fator",
         "Fator de Redução/Acréscimo dos procedimentos", kOptional,
         TProcedimentosFatorReducaoAcrescimoValidation);
    RULE(TGuiaSpSadtProcedimentosValorUnitarioValidation, kSpSadtProcedimentos, ".valorunitario",
         "Valor Unitário dos procedimentos", kOptional, TProcedimentosValorUnitarioValidation);
    RULE(TGuiaSpSadtProcedimentosValorTotalValidation, kSpSadtProcedimentos, ".valortotal",
         "Valor total dos procedimentos", kOptional, TProcedimentosValorTotalValidation);
    RULE(TGuiaSpSadtOutrasDespesasValidation, kSpSadt, ".despesa", "Outras Despesas", kOptional,
         TGrupoGuiaValidation);
    RULE(TGuiaSpSadtOutrasDespesasCodigoValidation, kSpSadtDespesas, ".codigo", "Código das despesas",
         kOptional, TDespesasCodigoValidation);
    RULE(TGuiaSpSadtOutrasDespesasQuantidadeValidation, kSpSadtDespesas, ".quantidade",
         "Quantidade das despesas", kOptional, TDespesasQuantidadeValidation);
    RULE(TGuiaSpSadtOutrasDespesasFatorReducaoAcrescimoValidation, kSpSadtDespesas, ".fator",
         "Fator de Redução/Acréscimo das despesas", kOptional, TDespesasFatorReducaoAcrescimoValidation);
    RULE(TGuiaSpSadtOutrasDespesasValorUnitarioValidation, kSpSadtDespesas, ".valorunitario",
         "Valor unitário das despesas", kOptional, TDespesasValorUnitarioValidation);
    RULE(TGuiaSpSadtOutrasDespesasValorTotalValidation, kSpSadtDespesas, ".valortotal",
         "Valor total das despesas", kOptional, TDespesasValorTotalValidation);
    RULE(TGuiaSpSadtSequencialItemValidation, kSpSadt, ".sequencial",
         "Sequencial dos procedimentos ou itens assistenciais", kOptional, TSequencialItemValidation);
    RULE(TGuiaSpSadtValorTotalValidation, kSpSadt, ".valortotal", "Valor Total", kOptional,
         TGrupoGuiaValidation);
    RULE(TGuiaSpSadtTotalizadorProcedimentosValidation, kSpSadtTotais, ".procedimentos",
         "Somatório dos procedimentos da guia", kOptional, TTotalizadorProcedimentosValidation);
    RULE(TGuiaSpSadtTotalizadorDiariasValidation, kSpSadtTotais, ".diarias", "Somatório das diárias da guia",
         kOptional, TTotalizadorDiariasValidation);
    RULE(TGuiaSpSadtTotalizadorTaxasAlugueisValidation, kSpSadtTotais, ".taxasalugueis",
         "Somatório das taxas e aluguéis da guia", kOptional, TTotalizadorTaxasAlugueisValidation);
    RULE(TGuiaSpSadtTotalizadorMateriaisValidation, kSpSadtTotais, ".materiais",
         "Somatório dos materiais da guia", kOptional, TTotalizadorMateriaisValidation);
    RULE(TGuiaSpSadtTotalizadorMedicamentosValidation, kSpSadtTotais, ".medicamentos",
         "Somatório dos medicamentos da guia", kOptional, TTotalizadorMedicamentosValidation);
    RULE(TGuiaSpSadtTotalizadorOPMEValidation, kSpSadtTotais, ".opme", "Somatório das OPME da guia",
         kOptional, TTotalizadorOPMEValidation);
    RULE(TGuiaSpSadtTotalizadorGasesMedicinaisValidation, kSpSadtTotais, ".gases",
         "Somatório dos gases medicinais da guia", kOptional, TTotalizadorGasesValidation);
    RULE(TGuiaSpSadtTotalizadorGeralValidation, kSpSadtTotais, ".totalgeral", "Total geral da guia",
         kOptional, TTotalizadorGeralValidation);

    // ---- Hospitalisation summary
    RULE(TLoteGuiaResumoInternacaoValidation, kLote, ".internacao", "Guia de Resumo de Internação", kRequired,
         TLoteGuiaTissValidation<IGuiaResumoInternacao>);
    RULE(TGuiaResumoInternacaoProcedimentosExecutadosValidation, kInternacao, ".procedimento",
         "Procedimentos Executados", kOptional, TGrupoGuiaValidation);
    RULE(TGuiaResumoInternacaoCodigoProcedimentosValidation, kInternacaoProcedimentos, ".codigo", "Código",
         kOptional, TProcedimentosCodigoValidation);
    RULE(TGuiaResumoInternacaoQuantidadeProcedimentosValidation, kInternacaoProcedimentos, ".quantidade",
         "Quantidade", kOptional, TProcedimentosQuantidadeValidation);
    RULE(TGuiaResumoInternacaoFatorReducaoAcrescimoProcedimentosValidation, kInternacaoProcedimentos,
         ".fator", "Fator de Redução/Acréscimo", kOptional, TProcedimentosFatorReducaoAcrescimoValidation);
    RULE(TGuiaResumoInternacaoValorUnitarioProcedimentosValidation, kInternacaoProcedimentos,
         ".valorunitario", "Valor Unitário", kOptional, TProcedimentosValorUnitarioValidation);
    RULE(TGuiaResumoInternacaoValorTotalProcedimentosValidation, kInternacaoProcedimentos, ".valortotal",
         "Valor Total", kOptional, TProcedimentosValorTotalValidation);
    RULE(TGuiaResumoInternacaoOutrasDespesasValidation, kInternacao, ".despesa", "Outras Despesas", kOptional,
         TGrupoGuiaValidation);
    RULE(TGuiaResumoInternacaoCodigoDespesasValidation, kInternacaoDespesas, ".codigo", "Código", kOptional,
         TDespesasCodigoValidation);
    RULE(TGuiaResumoInternacaoQuantidadeDespesasValidation, kInternacaoDespesas, ".quantidade", "Quantidade",
         kOptional, TDespesasQuantidadeValidation);
    RULE(TGuiaResumoInternacaoFatorReducaoAcrescimoDespesasValidation, kInternacaoDespesas, ".fator",
         "Fator de Redução/Acréscimo", kOptional, TDespesasFatorReducaoAcrescimoValidation);
    RULE(TGuiaResumoInternacaoValorUnitarioDespesasValidation, kInternacaoDespesas, ".valorunitario",
         "Valor Unitário", kOptional, TDespesasValorUnitarioValidation);
    RULE(TGuiaResumoInternacaoValorTotalDespesasValidation, kInternacaoDespesas, ".valortotal", "Valor Total",
         kOptional, TDespesasValorTotalValidation);
    RULE(TGuiaResumoInternacaoSequencialItemValidation, kInternacao, ".sequencial",
         "Sequencial dos procedimentos ou itens assistenciais", kOptional, TSequencialItemValidation);
    RULE(TGuiaResumoInternacaoValorTotalValidation, kInternacao, ".valortotal", "Valor Total", kOptional,
         TGrupoGuiaValidation);
    RULE(TGuiaResumoInternacaoTotalizadorProcedimentosValidation, kInternacaoTotais, ".procedimentos",
         "Procedimentos", kOptional, TTotalizadorProcedimentosValidation);
    RULE(TGuiaResumoInternacaoTotalizadorDiariasValidation, kInternacaoTotais, ".diarias", "Diárias",
         kOptional, TTotalizadorDiariasValidation);
    RULE(TGuiaResumoInternacaoTotalizadorTaxasAlugueisValidation, kInternacaoTotais, ".taxasalugueis",
         "Taxas e Aluguéis", kOptional, TTotalizadorTaxasAlugueisValidation);
    RULE(TGuiaResumoInternacaoTotalizadorMateriaisValidation, kInternacaoTotais, ".materiais", "Materiais",
         kOptional, TTotalizadorMateriaisValidation);
    RULE(TGuiaResumoInternacaoTotalizadorMedicamentosValidation, kInternacaoTotais, ".medicamentos",
         "Medicamentos", kOptional, TTotalizadorMedicamentosValidation);
    RULE(TGuiaResumoInternacaoTotalizadorOPMEValidation, kInternacaoTotais, ".opme", "OPME", kOptional,
         TTotalizadorOPMEValidation);
    RULE(TGuiaResumoInternacaoTotalizadorGasesMedicinaisValidation, kInternacaoTotais, ".gases",
         "Gases Medicinais", kOptional, TTotalizadorGasesValidation);
    RULE(TGuiaResumoInternacaoTotalizadorGeralValidation, kInternacaoTotais, ".totalgeral", "Total Geral",
         kOptional, TTotalizadorGeralValidation);

    // ---- Fees guide
    RULE(TLoteGuiaHonorariosValidation, kLote, ".honorarios", "Guia de Honorários", kRequired,
         TLoteGuiaTissValidation<IGuiaHonorarios>);
    RULE(TGuiaHonorariosProcedimentosExecutadosValidation, kHonorarios, ".procedimento",
         "Procedimentos Realizados", kOptional, TGrupoGuiaValidation);
    RULE(TGuiaHonorariosCodigoProcedimentosValidation, kHonorariosProcedimentos, ".codigo", "Código",
         kOptional, TProcedimentosCodigoValidation);
    RULE(TGuiaHonorariosQuantidadeProcedimentosValidation, kHonorariosProcedimentos, ".quantidade",
         "Quantidade", kOptional, TProcedimentosQuantidadeValidation);
    RULE(TGuiaHonorariosFatorReducaoAcrescimoProcedimentosValidation, kHonorariosProcedimentos, ".fator",
         "Fator de Redução/Acréscimo", kOptional, TProcedimentosFatorReducaoAcrescimoValidation);
    RULE(TGuiaHonorariosValorUnitarioProcedimentosValidation, kHonorariosProcedimentos, ".valorunitario",
         "Valor Unitário", kOptional, TProcedimentosValorUnitarioValidation);
    RULE(TGuiaHonorariosValorTotalProcedimentosValidation, kHonorariosProcedimentos, ".valortotal",
         "Valor Total", kOptional, TProcedimentosValorTotalValidation);
    RULE(TGuiaHonorariosSequencialItemValidation, kHonorarios, ".sequencial",
         "Sequencial dos procedimentos ou itens assistenciais", kOptional, TSequencialItemValidation);
    RULE(TGuiaHonorariosTotalizadorHonorariosValidation, kHonorarios, ".valortotal", "Total de Honorários",
         kOptional, TTotalizadorProcedimentosValidation);

    // ---- Dental guide: no rule judges it
    RULE(TLoteGuiaOdontoValidation, kLote, ".odonto", "Guia de Odontologia", kRequired,
         TLoteGuiaTissValidation<IGuiaOdonto>);
}

} // namespace conferix
