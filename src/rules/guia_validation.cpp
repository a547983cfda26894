#include "rules/guia_validation.h"

#include "model/money.h"

#include <fmt/format.h>

namespace conferix {

void TGuiaTissValidation::StartGuia(const IGuiaTiss& guia) {
    StartVisit();
    numeroGuia_ = guia.NumeroMostrado();
    guide_ = guia.HasNode() ? GuideMark(*guia.Node()) : std::string();
}

std::shared_ptr<TValidationMessage> TGuiaTissValidation::NewMessage(TMessageType type, std::string text,
                                                                    TFindingPlace place) const {
    // What was found right is not repeated: nobody looks for it.
    if (type == TMessageType::mtSuccess)
        place.SrcText.clear();
    auto message = std::make_shared<TLoteGuiasValidationMessage>(this, type, numeroGuia_, std::move(text),
                                                                 std::move(place.SrcText), place.Line,
                                                                 place.LinePos, place.FilePos);
    message->SetGuide(guide_);
    return message;
}

void TGuiaTissValidation::CheckWholeCents(const TXmlField& field, const TAmountTexts& texts) {
    const std::optional<double> value = field.Number();
    if (!value)
        return;
    const double rounded = RoundMoney(*value);
    const bool negative = *value < 0;
    const bool fractional = !SameMoney(*value, rounded);
    if (negative)
        Error(field.Node(), fmt::format(fmt::runtime(texts.Negative), field.Shown()));
    if (fractional)
        CorrectableError(*field.Node(),
                         fmt::format(fmt::runtime(texts.Decimals), field.Shown(), MoneyText(rounded)),
                         MoneyText(rounded), TComputation{});
    if (!negative && !fractional)
        Success(field.Node(), texts.Valid);
}

} // namespace conferix
