#include "rules/monitoring/monitoramento_rule.h"

#include "platform/format_settings.h"

#include <algorithm>

namespace conferix {

TTussManager& TMonitoramentoContext::Manager() const {
    if (Tuss == nullptr)
        throw EManagerNotDefined();
    return *Tuss;
}

void TCampoMonitoramentoValidation::Visit(const IGuiaMonitoramento& guia) {
    StartVisit();
    const TGuiaFields* current = Context()->Current;
    if (current != nullptr && current->Guia.Node() == guia.Node()) {
        Check(*current);
        return;
    }
    TGuiaFields fields;
    fields.Read(guia);
    Check(fields);
}

std::shared_ptr<TLoteGuiasMonitoramentoValidationMessage>
TCampoMonitoramentoValidation::NewError(const TGuiaFields& guia, const TXmlField& place,
                                        std::string reason) const {
    return TLoteGuiasMonitoramentoValidationMessage::CreateError(
        this, Campo(), std::string(guia.Guia.Identificacao()), std::move(reason), place.Shown(), place.Line(),
        place.LinePos(), place.FilePos());
}

void TCampoMonitoramentoValidation::AddError(const TGuiaFields& guia, const TXmlField& place,
                                             std::string reason) {
    AddMessage(NewError(guia, place, std::move(reason)));
}

void TCampoMonitoramentoValidation::AddError(const TGuiaFields& guia, const TXmlField& place,
                                             std::string reason, const std::string& correction,
                                             std::optional<TComputation> computation) {
    const auto message = NewError(guia, place, std::move(reason));
    const bool computable =
        !computation || !computation->Amount ||
        (ParseDecimal(correction) && std::ranges::all_of(computation->Operands, [](const TXmlNode* operand) {
             return ParseDecimal(operand->Value()).has_value();
         }));
    if (computable && place.Node()->HasValue())
        message->AddSolver(
            std::make_shared<TUpdateNodeValueSolver>(*place.Node(), correction, std::move(computation)));
    AddMessage(message);
}

void TCampoMonitoramentoValidation::AddNotice(const std::optional<std::string>& text) {
    if (!text)
        return;
    const auto message = TLoteGuiasMonitoramentoValidationMessage::CreateWarn(this, Campo(), {}, *text);
    message->SetKind(TFindingKind::Run);
    AddMessage(message);
}

bool TCampoMonitoramentoValidation::CanConsult(std::string_view table) {
    TTussManager& manager = Context()->Manager();
    if (manager.IsInstalled(table))
        return true;
    AddNotice(notices_.NotInstalled(manager, table));
    return false;
}

bool TCampoMonitoramentoValidation::CanConsultTable64(std::string_view table) {
    TTussManager& manager = Context()->Manager();
    if (manager.IsTable64InstalledFor(table))
        return true;
    AddNotice(notices_.Table64NotInstalled(manager, table));
    return false;
}

bool TCampoMonitoramentoValidation::CanConsultCities() {
    TTussManager& manager = Context()->Manager();
    if (manager.AreCitiesInstalled())
        return true;
    AddNotice(notices_.CitiesNotInstalled(manager));
    return false;
}

} // namespace conferix
