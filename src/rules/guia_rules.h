// The rules about guides, each under its name and description in the tree of a kind of guide.
#pragma once

#include "rules/item_validations.h"
#include "rules/sequencial_validation.h"
#include "rules/totalizer_validations.h"

namespace conferix {

// ---- Consultation guide

using TGuiaConsultaProcedimentoCodigoValidation =
    TNamedValidation<TProcedimentosCodigoValidation, "tiss.mensagem.loteguias.consulta.procedimento.codigo",
                     "Código do procedimento">;
using TGuiaConsultaProcedimentoValorValidation =
    TNamedValidation<TProcedimentosValorTotalValidation,
                     "tiss.mensagem.loteguias.consulta.procedimento.valor", "Valor do procedimento">;

class TGuiaConsultaProcedimentoValidation
    : public TNamedValidation<TGrupoGuiaValidation, "tiss.mensagem.loteguias.consulta.procedimento",
                              "Procedimento Realizado"> {
  public:
    using TNamedValidation::TNamedValidation;
    void CreateValidations() override;
};

// ---- SP/SADT guide

using TGuiaSpSadtProcedimentosCodigoValidation =
    TNamedValidation<TProcedimentosCodigoValidation, "tiss.mensagem.loteguias.spsadt.procedimento.codigo",
                     "Código dos procedimentos">;
using TGuiaSpSadtProcedimentosQuantidadeValidation =
    TNamedValidation<TProcedimentosQuantidadeValidation,
                     "tiss.mensagem.loteguias.spsadt.procedimento.quantidade",
                     "Quantidade dos procedimentos">;
using TGuiaSpSadtProcedimentosFatorReducaoAcrescimoValidation =
    TNamedValidation<TProcedimentosFatorReducaoAcrescimoValidation,
                     "tiss.mensagem.loteguias.spsadt.procedimento.fator",
                     "Fator de Redução/Acréscimo dos procedimentos">;
using TGuiaSpSadtProcedimentosValorUnitarioValidation =
    TNamedValidation<TProcedimentosValorUnitarioValidation,
                     "tiss.mensagem.loteguias.spsadt.procedimento.valorunitario",
                     "Valor Unitário dos procedimentos">;
using TGuiaSpSadtProcedimentosValorTotalValidation =
    TNamedValidation<TProcedimentosValorTotalValidation,
                     "tiss.mensagem.loteguias.spsadt.procedimento.valortotal",
                     "Valor total dos procedimentos">;

class TGuiaSpSadtProcedimentosExecutadosValidation
    : public TNamedValidation<TGrupoGuiaValidation, "tiss.mensagem.loteguias.spsadt.procedimento",
                              "Procedimentos Executados"> {
  public:
    using TNamedValidation::TNamedValidation;
    void CreateValidations() override;
};

using TGuiaSpSadtOutrasDespesasCodigoValidation =
    TNamedValidation<TDespesasCodigoValidation, "tiss.mensagem.loteguias.spsadt.despesa.codigo",
                     "Código das despesas">;
using TGuiaSpSadtOutrasDespesasQuantidadeValidation =
    TNamedValidation<TDespesasQuantidadeValidation, "tiss.mensagem.loteguias.spsadt.despesa.quantidade",
                     "Quantidade das despesas">;
using TGuiaSpSadtOutrasDespesasFatorReducaoAcrescimoValidation =
    TNamedValidation<TDespesasFatorReducaoAcrescimoValidation, "tiss.mensagem.loteguias.spsadt.despesa.fator",
                     "Fator de Redução/Acréscimo das despesas">;
using TGuiaSpSadtOutrasDespesasValorUnitarioValidation =
    TNamedValidation<TDespesasValorUnitarioValidation, "tiss.mensagem.loteguias.spsadt.despesa.valorunitario",
                     "Valor unitário das despesas">;
using TGuiaSpSadtOutrasDespesasValorTotalValidation =
    TNamedValidation<TDespesasValorTotalValidation, "tiss.mensagem.loteguias.spsadt.despesa.valortotal",
                     "Valor total das despesas">;

class TGuiaSpSadtOutrasDespesasValidation
    : public TNamedValidation<TGrupoGuiaValidation, "tiss.mensagem.loteguias.spsadt.despesa",
                              "Outras Despesas"> {
  public:
    using TNamedValidation::TNamedValidation;
    void CreateValidations() override;
};

using TGuiaSpSadtSequencialItemValidation =
    TNamedValidation<TSequencialItemValidation, "tiss.mensagem.loteguias.spsadt.sequencial",
                     "Sequencial dos procedimentos ou itens assistenciais">;
using TGuiaSpSadtTotalizadorProcedimentosValidation =
    TNamedValidation<TTotalizadorProcedimentosValidation,
                     "tiss.mensagem.loteguias.spsadt.valortotal.procedimentos",
                     "Somatório dos procedimentos da guia">;
using TGuiaSpSadtTotalizadorDiariasValidation =
    TNamedValidation<TTotalizadorDiariasValidation, "tiss.mensagem.loteguias.spsadt.valortotal.diarias",
                     "Somatório das diárias da guia">;
using TGuiaSpSadtTotalizadorTaxasAlugueisValidation =
    TNamedValidation<TTotalizadorTaxasAlugueisValidation,
                     "tiss.mensagem.loteguias.spsadt.valortotal.taxasalugueis",
                     "Somatório das taxas e aluguéis da guia">;
using TGuiaSpSadtTotalizadorMateriaisValidation =
    TNamedValidation<TTotalizadorMateriaisValidation, "tiss.mensagem.loteguias.spsadt.valortotal.materiais",
                     "Somatório dos materiais da guia">;
using TGuiaSpSadtTotalizadorMedicamentosValidation =
    TNamedValidation<TTotalizadorMedicamentosValidation,
                     "tiss.mensagem.loteguias.spsadt.valortotal.medicamentos",
                     "Somatório dos medicamentos da guia">;
using TGuiaSpSadtTotalizadorOPMEValidation =
    TNamedValidation<TTotalizadorOPMEValidation, "tiss.mensagem.loteguias.spsadt.valortotal.opme",
                     "Somatório das OPME da guia">;
using TGuiaSpSadtTotalizadorGasesMedicinaisValidation =
    TNamedValidation<TTotalizadorGasesValidation, "tiss.mensagem.loteguias.spsadt.valortotal.gases",
                     "Somatório dos gases medicinais da guia">;
using TGuiaSpSadtTotalizadorGeralValidation =
    TNamedValidation<TTotalizadorGeralValidation, "tiss.mensagem.loteguias.spsadt.valortotal.totalgeral",
                     "Total geral da guia">;

class TGuiaSpSadtValorTotalValidation
    : public TNamedValidation<TGrupoGuiaValidation, "tiss.mensagem.loteguias.spsadt.valortotal",
                              "Valor Total"> {
  public:
    using TNamedValidation::TNamedValidation;
    void CreateValidations() override;
};

// ---- Hospitalisation summary

using TGuiaResumoInternacaoCodigoProcedimentosValidation =
    TNamedValidation<TProcedimentosCodigoValidation, "tiss.mensagem.loteguias.internacao.procedimento.codigo",
                     "Código">;
using TGuiaResumoInternacaoQuantidadeProcedimentosValidation =
    TNamedValidation<TProcedimentosQuantidadeValidation,
                     "tiss.mensagem.loteguias.internacao.procedimento.quantidade", "Quantidade">;
using TGuiaResumoInternacaoFatorReducaoAcrescimoProcedimentosValidation =
    TNamedValidation<TProcedimentosFatorReducaoAcrescimoValidation,
                     "tiss.mensagem.loteguias.internacao.procedimento.fator", "Fator de Redução/Acréscimo">;
using TGuiaResumoInternacaoValorUnitarioProcedimentosValidation =
    TNamedValidation<TProcedimentosValorUnitarioValidation,
                     "tiss.mensagem.loteguias.internacao.procedimento.valorunitario", "Valor Unitário">;
using TGuiaResumoInternacaoValorTotalProcedimentosValidation =
    TNamedValidation<TProcedimentosValorTotalValidation,
                     "tiss.mensagem.loteguias.internacao.procedimento.valortotal", "Valor Total">;

class TGuiaResumoInternacaoProcedimentosExecutadosValidation
    : public TNamedValidation<TGrupoGuiaValidation, "tiss.mensagem.loteguias.internacao.procedimento",
                              "Procedimentos Executados"> {
  public:
    using TNamedValidation::TNamedValidation;
    void CreateValidations() override;
};

using TGuiaResumoInternacaoCodigoDespesasValidation =
    TNamedValidation<TDespesasCodigoValidation, "tiss.mensagem.loteguias.internacao.despesa.codigo",
                     "Código">;
using TGuiaResumoInternacaoQuantidadeDespesasValidation =
    TNamedValidation<TDespesasQuantidadeValidation, "tiss.mensagem.loteguias.internacao.despesa.quantidade",
                     "Quantidade">;
using TGuiaResumoInternacaoFatorReducaoAcrescimoDespesasValidation =
    TNamedValidation<TDespesasFatorReducaoAcrescimoValidation,
                     "tiss.mensagem.loteguias.internacao.despesa.fator", "Fator de Redução/Acréscimo">;
using TGuiaResumoInternacaoValorUnitarioDespesasValidation =
    TNamedValidation<TDespesasValorUnitarioValidation,
                     "tiss.mensagem.loteguias.internacao.despesa.valorunitario", "Valor Unitário">;
using TGuiaResumoInternacaoValorTotalDespesasValidation =
    TNamedValidation<TDespesasValorTotalValidation, "tiss.mensagem.loteguias.internacao.despesa.valortotal",
                     "Valor Total">;

class TGuiaResumoInternacaoOutrasDespesasValidation
    : public TNamedValidation<TGrupoGuiaValidation, "tiss.mensagem.loteguias.internacao.despesa",
                              "Outras Despesas"> {
  public:
    using TNamedValidation::TNamedValidation;
    void CreateValidations() override;
};

using TGuiaResumoInternacaoSequencialItemValidation =
    TNamedValidation<TSequencialItemValidation, "tiss.mensagem.loteguias.internacao.sequencial",
                     "Sequencial dos procedimentos ou itens assistenciais">;
using TGuiaResumoInternacaoTotalizadorProcedimentosValidation =
    TNamedValidation<TTotalizadorProcedimentosValidation,
                     "tiss.mensagem.loteguias.internacao.valortotal.procedimentos", "Procedimentos">;
using TGuiaResumoInternacaoTotalizadorDiariasValidation =
    TNamedValidation<TTotalizadorDiariasValidation, "tiss.mensagem.loteguias.internacao.valortotal.diarias",
                     "Diárias">;
using TGuiaResumoInternacaoTotalizadorTaxasAlugueisValidation =
    TNamedValidation<TTotalizadorTaxasAlugueisValidation,
                     "tiss.mensagem.loteguias.internacao.valortotal.taxasalugueis", "Taxas e Aluguéis">;
using TGuiaResumoInternacaoTotalizadorMateriaisValidation =
    TNamedValidation<TTotalizadorMateriaisValidation,
                     "tiss.mensagem.loteguias.internacao.valortotal.materiais", "Materiais">;
using TGuiaResumoInternacaoTotalizadorMedicamentosValidation =
    TNamedValidation<TTotalizadorMedicamentosValidation,
                     "tiss.mensagem.loteguias.internacao.valortotal.medicamentos", "Medicamentos">;
using TGuiaResumoInternacaoTotalizadorOPMEValidation =
    TNamedValidation<TTotalizadorOPMEValidation, "tiss.mensagem.loteguias.internacao.valortotal.opme",
                     "OPME">;
using TGuiaResumoInternacaoTotalizadorGasesMedicinaisValidation =
    TNamedValidation<TTotalizadorGasesValidation, "tiss.mensagem.loteguias.internacao.valortotal.gases",
                     "Gases Medicinais">;
using TGuiaResumoInternacaoTotalizadorGeralValidation =
    TNamedValidation<TTotalizadorGeralValidation, "tiss.mensagem.loteguias.internacao.valortotal.totalgeral",
                     "Total Geral">;

class TGuiaResumoInternacaoValorTotalValidation
    : public TNamedValidation<TGrupoGuiaValidation, "tiss.mensagem.loteguias.internacao.valortotal",
                              "Valor Total"> {
  public:
    using TNamedValidation::TNamedValidation;
    void CreateValidations() override;
};

// ---- Fees guide

using TGuiaHonorariosCodigoProcedimentosValidation =
    TNamedValidation<TProcedimentosCodigoValidation, "tiss.mensagem.loteguias.honorarios.procedimento.codigo",
                     "Código">;
using TGuiaHonorariosQuantidadeProcedimentosValidation =
    TNamedValidation<TProcedimentosQuantidadeValidation,
                     "tiss.mensagem.loteguias.honorarios.procedimento.quantidade", "Quantidade">;
using TGuiaHonorariosFatorReducaoAcrescimoProcedimentosValidation =
    TNamedValidation<TProcedimentosFatorReducaoAcrescimoValidation,
                     "tiss.mensagem.loteguias.honorarios.procedimento.fator", "Fator de Redução/Acréscimo">;
using TGuiaHonorariosValorUnitarioProcedimentosValidation =
    TNamedValidation<TProcedimentosValorUnitarioValidation,
                     "tiss.mensagem.loteguias.honorarios.procedimento.valorunitario", "Valor Unitário">;
using TGuiaHonorariosValorTotalProcedimentosValidation =
    TNamedValidation<TProcedimentosValorTotalValidation,
                     "tiss.mensagem.loteguias.honorarios.procedimento.valortotal", "Valor Total">;

class TGuiaHonorariosProcedimentosExecutadosValidation
    : public TNamedValidation<TGrupoGuiaValidation, "tiss.mensagem.loteguias.honorarios.procedimento",
                              "Procedimentos Realizados"> {
  public:
    using TNamedValidation::TNamedValidation;
    void CreateValidations() override;
};

using TGuiaHonorariosSequencialItemValidation =
    TNamedValidation<TSequencialItemValidation, "tiss.mensagem.loteguias.honorarios.sequencial",
                     "Sequencial dos procedimentos ou itens assistenciais">;
using TGuiaHonorariosTotalizadorHonorariosValidation =
    TNamedValidation<TTotalizadorProcedimentosValidation, "tiss.mensagem.loteguias.honorarios.valortotal",
                     "Total de Honorários">;

} // namespace conferix
