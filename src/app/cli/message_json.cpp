#include "app/cli/message_json.h"

#include "app/cli/console.h"
#include "validation/solver.h"
#include "validation/validation_message.h"

namespace conferix {

namespace {

struct TRuleFields {
    std::string Validacao;
    std::string Guia;
    std::string Campo;
};

TRuleFields RuleFields(const TXmlMessage& message) {
    TRuleFields fields;
    if (const auto* finding = dynamic_cast<const TValidationMessage*>(&message);
        finding != nullptr && finding->HasValidation())
        fields.Validacao = finding->Validation().Name;
    if (const auto* lot = dynamic_cast<const TLoteGuiasValidationMessage*>(&message)) {
        fields.Guia = lot->NumeroGuia();
    } else if (const auto* field = dynamic_cast<const TLoteGuiasMonitoramentoValidationMessage*>(&message)) {
        fields.Guia = field->NumeroGuia();
        fields.Campo = field->Campo();
    }
    return fields;
}

} // namespace

TJson MessageJson(const TXmlMessage& message, bool shown) {
    const TRuleFields fields = RuleFields(message);
    TJson corrections = TJson::array();
    for (const auto& solver : message.Solvers())
        corrections.push_back({{"nome", solver->Name()}, {"descricao", solver->Description()}});
    return {{"id", message.Id()},
            {"tipo", NameOf(message.MsgType())},
            {"validacao", fields.Validacao},
            {"linha", message.Line()},
            {"coluna", message.LinePos()},
            {"posicao", message.FilePos()},
            {"guia", fields.Guia},
            {"campo", fields.Campo},
            {"motivo", message.Reason()},
            {"texto", message.Msg()},
            {"origem", message.SrcText()},
            {"exibida", shown},
            {"correcoes", std::move(corrections)}};
}

TJson CorrectionJson(const TCorrectionRecord& record) {
    const TRuleFields fields = RuleFields(*record.Message);
    TJson json = {{"validacao", fields.Validacao}, {"linha", record.Message->Line()},
                  {"guia", fields.Guia},           {"campo", fields.Campo},
                  {"nome", record.Solver},         {"descricao", record.Description},
                  {"elemento", record.Element},    {"antes", record.Before}};
    if (record.Reason.empty())
        json["depois"] = record.After;
    else
        json["motivo"] = record.Reason;
    return json;
}

std::string JsonText(const TJson& json, int indent) {
    return json.dump(indent, ' ', false, TJson::error_handler_t::replace);
}

} // namespace conferix
