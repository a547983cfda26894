#include "rules/monitoring/campo_validation.h"

#include "rules/monitoring/guia_reader.h"
#include "validation/structure_solver.h"
#include "validation/value_repair.h"

namespace conferix {

void TCampoValidation::Visit(const IGuiaMonitoramento& guia) {
    StartVisit();
    const TGuiaFields* current = Run().Guia;
    if (current != nullptr && current->Guia.Node() == guia.Node()) {
        Check(*current);
        return;
    }
    TGuiaFields fields;
    TGuiaReader().Read(guia, fields);
    Check(fields);
}

void TCampoValidation::DocumentError(const TXmlField& number, std::string text,
                                     bool (*isValid)(std::string_view), std::size_t size) {
    TValidationMessage& message = Error(number.Node(), std::move(text));
    if (auto digits = DigitsOfDocument(number.Text()); digits && digits->size() == size && isValid(*digits))
        message.AddSolver(MakeValueRepair(*number.Node(), std::move(*digits)));
}

void TCampoValidation::Check(const TGuiaFields& guia) {
    guia_ = &guia;
    check_(*this, guia);
}

std::shared_ptr<TValidationMessage> TCampoValidation::NewMessage(TMessageType type, std::string text,
                                                                 TFindingPlace place) const {
    constexpr std::size_t kDigits = 3;
    std::string guia(place.Line != 0 ? guia_->Guia.Identificacao() : std::string_view{});
    auto message = std::make_shared<TLoteGuiasMonitoramentoValidationMessage>(
        this, type, Name().substr(Name().size() - kDigits), std::move(guia), std::move(text),
        std::move(place.SrcText), place.Line, place.LinePos, place.FilePos);
    if (place.Line != 0)
        message->SetGuide(GuideMark(*guia_->Guia.Node()));
    return message;
}

} // namespace conferix
