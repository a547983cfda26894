#include "rules/monitoring/monitoramento_rule.h"

#include "sistema/format_settings.h"
#include "validation/solver.h"

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
        this, Campo(), std::string(guia.Guia.Identificacao()), std::move(reason), std::string(place.Text()),
        place.Line(), place.LinePos(), place.FilePos());
}

void TCampoMonitoramentoValidation::AddError(const TGuiaFields& guia, const TXmlField& place,
                                             std::string reason) {
    AddMessage(NewError(guia, place, std::move(reason)));
}

void TCampoMonitoramentoValidation::AddError(const TGuiaFields& guia, const TXmlField& place,
                                             std::string reason, const std::string& correction) {
    const auto message = NewError(guia, place, std::move(reason));
    if (place.Node()->HasValue())
        message->AddSolver(std::make_shared<TUpdateNodeValueSolver>(*place.Node(), correction));
    AddMessage(message);
}

void TCampoMonitoramentoValidation::AddNotice(const std::optional<std::string>& text) {
    if (text)
        AddMessage(TLoteGuiasMonitoramentoValidationMessage::CreateWarn(this, Campo(), {}, *text));
}

bool TCampoMonitoramentoValidation::CanConsult(std::string_view table) {
    TTussManager& manager = Context()->Manager();
    if (manager.IsInstalled(table))
        return true;
    AddNotice(manager.NotInstalled(table));
    return false;
}

bool TCampoMonitoramentoValidation::CanConsultCities() {
    TTussManager& manager = Context()->Manager();
    if (manager.AreCitiesInstalled())
        return true;
    AddNotice(manager.CitiesNotInstalled());
    return false;
}

std::string AmountText(double value) {
    static const TFormatSettings formats = TFormatSettings::Regional();
    return formats.Money(value);
}

} // namespace conferix
