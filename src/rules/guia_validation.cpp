#include "rules/guia_validation.h"

#include "model/money.h"
#include "platform/format_settings.h"
#include "xml/cut_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace conferix {

namespace {

std::shared_ptr<TLoteGuiasValidationMessage> NewMessage(const TValidation* rule, TMessageType type,
                                                        const std::string& numeroGuia, std::string reason,
                                                        const TXmlNode* at) {
    if (at == nullptr)
        return std::make_shared<TLoteGuiasValidationMessage>(rule, type, numeroGuia, std::move(reason));
    // What was found right is not repeated: nobody looks for it.
    std::string srcText = type == TMessageType::mtSuccess ? std::string() : CutText(at->Value(), kShownFound);
    return std::make_shared<TLoteGuiasValidationMessage>(rule, type, numeroGuia, std::move(reason),
                                                         std::move(srcText), at->Line(), at->LinePos(),
                                                         at->FilePos());
}

bool IsNumber(const TXmlNode* operand) {
    return ParseDecimal(operand->Value()).has_value();
}

} // namespace

std::string MoneyText(double value) {
    return TFormatSettings::Messages().Money(value);
}

TTussManager& TGuiaTissValidation::Manager() const {
    if (manager_ == nullptr)
        throw EManagerNotDefined();
    return *manager_;
}

void TGuiaTissValidation::StartGuia(const IGuiaTiss& guia) {
    StartVisit();
    numeroGuia_ = guia.NumeroGuia();
}

void TGuiaTissValidation::AddSuccess(std::string_view reason, const TXmlNode* at) {
    AddMessage(NewMessage(this, TMessageType::mtSuccess, numeroGuia_, std::string(reason), at));
}

void TGuiaTissValidation::AddWarn(std::string reason, const TXmlNode* at) {
    const auto message = NewMessage(this, TMessageType::mtWarning, numeroGuia_, std::move(reason), at);
    message->SetKind(TFindingKind::Run);
    AddMessage(message);
}

void TGuiaTissValidation::AddError(std::string reason, const TXmlNode* at) {
    AddMessage(NewMessage(this, TMessageType::mtError, numeroGuia_, std::move(reason), at));
}

void TGuiaTissValidation::CheckWholeCents(const TXmlField& field, const TAmountTexts& texts) {
    const std::optional<double> value = field.Number();
    if (!value)
        return;
    const double rounded = RoundMoney(*value);
    const bool negative = *value < 0;
    const bool fractional = !SameMoney(*value, rounded);
    if (negative)
        AddError(fmt::format(fmt::runtime(texts.Negative), field.Shown()), field.Node());
    if (fractional)
        AddCorrectableError(fmt::format(fmt::runtime(texts.Decimals), field.Shown(), MoneyText(rounded)),
                            *field.Node(), rounded, {});
    if (!negative && !fractional)
        AddSuccess(texts.Valid, field.Node());
}

void TGuiaTissValidation::AddCorrectableError(std::string reason, TXmlNode& at, double expected,
                                              TComputation computation) {
    const auto message = NewMessage(this, TMessageType::mtError, numeroGuia_, std::move(reason), &at);
    if (std::isfinite(expected) && std::ranges::all_of(computation.Operands, IsNumber))
        message->AddSolver(
            std::make_shared<TUpdateNodeValueSolver>(at, MoneyText(expected), std::move(computation)));
    AddMessage(message);
}

} // namespace conferix
