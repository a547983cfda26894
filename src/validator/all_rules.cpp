#include "validator/all_rules.h"

#include "model/mensagem_tiss.h"
#include "model/monitoramento.h"
#include "rules/billing_rules.h"
#include "rules/lote_validations.h"
#include "rules/monitoring/lote_monitoramento_validation.h"
#include "rules/monitoring/monitoring_rules.h"
#include "validation/hash_rule.h"
#include "validation/namespace_rule.h"
#include "validation/schema_rule.h"

namespace conferix {

namespace {

// Groups, under which rules stand.
constexpr std::string_view kMensagem = "tiss.mensagem";
constexpr std::string_view kMonitoramento = "tiss.monitoramento";
constexpr std::string_view kQualidade = "tiss.qualidade";

/// All rules of one kind of file.
template<class Arquivo>
class TArquivoValidation : public TValidation {
  public:
    using TValidation::Visit;
    void Visit(const Arquivo& arquivo) override {
        StartVisit();
        VisitChildren(arquivo);
    }
};

/// The schema of the run's file.
class TSchemaDoArquivo : public TXmlSchemaValidation {
  public:
    explicit TSchemaDoArquivo(const TRunContextPtr& run) : TXmlSchemaValidation(run->SchemaFile) {}
};

void AddFileRules(TRuleTable& rules) {
    RULE(TMensagemTissValidation, "", kMensagem, "Mensagem TISS", kRequired,
         TArquivoValidation<IMensagemTiss>);
    RULE(TMensagemTissNamespaceValidation, kMensagem, ".namespace", "Namespace", kRequired,
         TNamespaceValidation);
    RULE(TMensagemTissXmlSchemaValidation, kMensagem, ".schema", "Schema XSD", kRequired, TSchemaDoArquivo);
    RULE(TLoteGuiasValidation, kMensagem, ".loteguias", "Lote de Guias", kRequired, TGrupoLoteValidation);
    RULE(TMensagemTissHashValidation, kMensagem, ".hash", "Hash MD5", kRequired, THashValidation);

    RULE(TMonitoramentoValidation, "", kMonitoramento, "Monitoramento TISS", kRequired,
         TArquivoValidation<IMonitoramento>);
    RULE(TMonitoramentoNamespaceValidation, kMonitoramento, ".namespace", "Namespace", kRequired,
         TNamespaceValidation);
    RULE(TMonitoramentoXmlSchemaValidation, kMonitoramento, ".schema", "Schema XSD", kRequired,
         TSchemaDoArquivo);
    RULE(TMonitoramentoLoteValidation, kMonitoramento, ".loteguias", "Lote de Monitoramento", kRequired,
         TLoteMonitoramentoValidation);
    RULE(TMonitoramentoHashValidation, kMonitoramento, ".hash", "Hash MD5", kRequired, THashValidation);

    RULE(TMonitoramentoQualidadeValidation, "", kQualidade, "Monitoramento de Qualidade", kRequired,
         TArquivoValidation<IMonitoramentoQualidade>);
    RULE(TMonitoramentoQualidadeNamespaceValidation, kQualidade, ".namespace", "Namespace", kRequired,
         TNamespaceValidation);
    RULE(TMonitoramentoQualidadeXmlSchemaValidation, kQualidade, ".schema", "Schema XSD", kRequired,
         TSchemaDoArquivo);
    RULE(TMonitoramentoQualidadeHashValidation, kQualidade, ".hash", "Hash MD5", kRequired, THashValidation);
}

} // namespace

std::string_view RootOf(TEnumTipoArquivoTiss tipo) {
    switch (tipo) {
    case TEnumTipoArquivoTiss::taMonitoramento:
        return kMonitoramento;
    case TEnumTipoArquivoTiss::taMonitoramentoQualidade:
        return kQualidade;
    default:
        return kMensagem;
    }
}

const TRuleTable& AllRules() {
    static const TRuleTable table = [] {
        TRuleTable rules;
        AddFileRules(rules);
        AddBillingRules(rules);
        AddMonitoringRules(rules);
        return rules;
    }();
    return table;
}

std::string RuleOfKind(TEnumTipoArquivoTiss tipo, std::string_view rule) {
    const std::string_view root = tipo == TEnumTipoArquivoTiss::taMensagemTISS    ? kMensagem
                                  : tipo == TEnumTipoArquivoTiss::taMonitoramento ? kMonitoramento
                                                                                  : kQualidade;
    return std::string(root).append(".").append(rule);
}

} // namespace conferix
