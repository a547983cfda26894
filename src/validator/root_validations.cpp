#include "validator/root_validations.h"

#include "model/mensagem_tiss.h"
#include "model/monitoramento.h"
#include "rules/lote_validations.h"
#include "rules/monitoring/monitoramento_lote_validation.h"
#include "validation/hash_rule.h"
#include "validation/namespace_rule.h"
#include "validation/schema_rule.h"

namespace conferix {

void TMensagemTissValidation::CreateValidations() {
    TValidation::CreateValidations();
    AddValidation<TMensagemTissNamespaceValidation>();
    AddValidation<TMensagemTissXmlSchemaValidation>(schemaFile_);
    AddValidation<TLoteGuiasValidation>(versaoTiss_, tuss_);
    AddValidation<TMensagemTissHashValidation>();
}

void TMensagemTissValidation::Visit(const IMensagemTiss& mensagem) {
    StartVisit();
    VisitChildren(mensagem);
}

void TMonitoramentoValidation::CreateValidations() {
    TValidation::CreateValidations();
    AddValidation<TMonitoramentoNamespaceValidation>();
    AddValidation<TMonitoramentoXmlSchemaValidation>(schemaFile_);
    AddValidation<TMonitoramentoLoteValidation>(arquivo_, tuss_);
    AddValidation<TMonitoramentoHashValidation>();
}

void TMonitoramentoValidation::Visit(const IMonitoramento& monitoramento) {
    StartVisit();
    VisitChildren(monitoramento);
}

void TMonitoramentoQualidadeValidation::CreateValidations() {
    TValidation::CreateValidations();
    AddValidation<TMonitoramentoQualidadeNamespaceValidation>();
    AddValidation<TMonitoramentoQualidadeXmlSchemaValidation>(schemaFile_);
    AddValidation<TMonitoramentoQualidadeHashValidation>();
}

void TMonitoramentoQualidadeValidation::Visit(const IMonitoramentoQualidade& qualidade) {
    StartVisit();
    VisitChildren(qualidade);
}

} // namespace conferix
