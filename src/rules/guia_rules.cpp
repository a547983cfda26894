#include "rules/guia_rules.h"

namespace conferix {

void TGuiaConsultaProcedimentoValidation::CreateValidations() {
    TGrupoGuiaValidation::CreateValidations();
    AddGuiaValidation<TGuiaConsultaProcedimentoCodigoValidation>();
    AddGuiaValidation<TGuiaConsultaProcedimentoValorValidation>();
}

void TGuiaSpSadtProcedimentosExecutadosValidation::CreateValidations() {
    TGrupoGuiaValidation::CreateValidations();
    AddGuiaValidation<TGuiaSpSadtProcedimentosCodigoValidation>();
    AddGuiaValidation<TGuiaSpSadtProcedimentosQuantidadeValidation>();
    AddGuiaValidation<TGuiaSpSadtProcedimentosFatorReducaoAcrescimoValidation>();
    AddGuiaValidation<TGuiaSpSadtProcedimentosValorUnitarioValidation>();
    AddGuiaValidation<TGuiaSpSadtProcedimentosValorTotalValidation>();
}

void TGuiaSpSadtOutrasDespesasValidation::CreateValidations() {
    TGrupoGuiaValidation::CreateValidations();
    AddGuiaValidation<TGuiaSpSadtOutrasDespesasCodigoValidation>();
    AddGuiaValidation<TGuiaSpSadtOutrasDespesasQuantidadeValidation>();
    AddGuiaValidation<TGuiaSpSadtOutrasDespesasFatorReducaoAcrescimoValidation>();
    AddGuiaValidation<TGuiaSpSadtOutrasDespesasValorUnitarioValidation>();
    AddGuiaValidation<TGuiaSpSadtOutrasDespesasValorTotalValidation>();
}

void TGuiaSpSadtValorTotalValidation::CreateValidations() {
    TGrupoGuiaValidation::CreateValidations();
    AddGuiaValidation<TGuiaSpSadtTotalizadorProcedimentosValidation>();
    AddGuiaValidation<TGuiaSpSadtTotalizadorDiariasValidation>();
    AddGuiaValidation<TGuiaSpSadtTotalizadorTaxasAlugueisValidation>();
    AddGuiaValidation<TGuiaSpSadtTotalizadorMateriaisValidation>();
    AddGuiaValidation<TGuiaSpSadtTotalizadorMedicamentosValidation>();
    AddGuiaValidation<TGuiaSpSadtTotalizadorOPMEValidation>();
    AddGuiaValidation<TGuiaSpSadtTotalizadorGasesMedicinaisValidation>();
    AddGuiaValidation<TGuiaSpSadtTotalizadorGeralValidation>();
}

void TGuiaResumoInternacaoProcedimentosExecutadosValidation::CreateValidations() {
    TGrupoGuiaValidation::CreateValidations();
    AddGuiaValidation<TGuiaResumoInternacaoCodigoProcedimentosValidation>();
    AddGuiaValidation<TGuiaResumoInternacaoQuantidadeProcedimentosValidation>();
    AddGuiaValidation<TGuiaResumoInternacaoFatorReducaoAcrescimoProcedimentosValidation>();
    AddGuiaValidation<TGuiaResumoInternacaoValorUnitarioProcedimentosValidation>();
    AddGuiaValidation<TGuiaResumoInternacaoValorTotalProcedimentosValidation>();
}

void TGuiaResumoInternacaoOutrasDespesasValidation::CreateValidations() {
    TGrupoGuiaValidation::CreateValidations();
    AddGuiaValidation<TGuiaResumoInternacaoCodigoDespesasValidation>();
    AddGuiaValidation<TGuiaResumoInternacaoQuantidadeDespesasValidation>();
    AddGuiaValidation<TGuiaResumoInternacaoFatorReducaoAcrescimoDespesasValidation>();
    AddGuiaValidation<TGuiaResumoInternacaoValorUnitarioDespesasValidation>();
    AddGuiaValidation<TGuiaResumoInternacaoValorTotalDespesasValidation>();
}

void TGuiaResumoInternacaoValorTotalValidation::CreateValidations() {
    TGrupoGuiaValidation::CreateValidations();
    AddGuiaValidation<TGuiaResumoInternacaoTotalizadorProcedimentosValidation>();
    AddGuiaValidation<TGuiaResumoInternacaoTotalizadorDiariasValidation>();
    AddGuiaValidation<TGuiaResumoInternacaoTotalizadorTaxasAlugueisValidation>();
    AddGuiaValidation<TGuiaResumoInternacaoTotalizadorMateriaisValidation>();
    AddGuiaValidation<TGuiaResumoInternacaoTotalizadorMedicamentosValidation>();
    AddGuiaValidation<TGuiaResumoInternacaoTotalizadorOPMEValidation>();
    AddGuiaValidation<TGuiaResumoInternacaoTotalizadorGasesMedicinaisValidation>();
    AddGuiaValidation<TGuiaResumoInternacaoTotalizadorGeralValidation>();
}

void TGuiaHonorariosProcedimentosExecutadosValidation::CreateValidations() {
    TGrupoGuiaValidation::CreateValidations();
    AddGuiaValidation<TGuiaHonorariosCodigoProcedimentosValidation>();
    AddGuiaValidation<TGuiaHonorariosQuantidadeProcedimentosValidation>();
    AddGuiaValidation<TGuiaHonorariosFatorReducaoAcrescimoProcedimentosValidation>();
    AddGuiaValidation<TGuiaHonorariosValorUnitarioProcedimentosValidation>();
    AddGuiaValidation<TGuiaHonorariosValorTotalProcedimentosValidation>();
}

} // namespace conferix
