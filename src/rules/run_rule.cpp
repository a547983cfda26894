#include "rules/run_rule.h"

#include "platform/format_settings.h"

#include <algorithm>

namespace conferix {

namespace {

bool IsNumber(const TXmlNode* operand) {
    return ParseDecimal(operand->Value()).has_value();
}

} // namespace

std::string MoneyText(double value) {
    return TFormatSettings::Messages().Money(value);
}

TTussManager& TRunRule::Manager() const {
    if (run_->Terminologia == nullptr)
        throw EManagerNotDefined();
    return *run_->Terminologia;
}

bool TRunRule::CanConsult(std::string_view table, const TXmlNode* at) {
    if (Manager().IsInstalled(table))
        return true;
    if (IsNewNotice(std::string(table)))
        Notice(at, NotInstalledText(table));
    return false;
}

bool TRunRule::CanConsultTable64(std::string_view table, const TXmlNode* at) {
    std::string missing = Manager().MissingTable64(table);
    if (missing.empty())
        return true;
    if (IsNewNotice(missing))
        Notice(at, NotInstalledText(missing));
    return false;
}

bool TRunRule::CanConsultCities(const TXmlNode* at) {
    if (Manager().AreCitiesInstalled())
        return true;
    if (IsNewNotice({}))
        Notice(at,
               "A tabela de municípios não está instalada; os códigos de município não foram verificados.");
    return false;
}

bool TRunRule::IsNewNotice(std::string table) {
    return run_->Notices.emplace(this, std::move(table)).second;
}

void TRunRule::Notice(const TXmlNode* at, std::string text) {
    Warning(at, std::move(text)).SetKind(TFindingKind::Run);
}

void TRunRule::CorrectableError(TXmlNode& at, std::string text, std::string newValue,
                                std::optional<TComputation> computation) {
    const bool computable = !computation || !computation->Amount ||
                            (ParseDecimal(newValue) && std::ranges::all_of(computation->Operands, IsNumber));
    TValidationMessage& error = Error(&at, std::move(text));
    if (computable && at.HasValue())
        error.AddSolver(
            std::make_shared<TUpdateNodeValueSolver>(at, std::move(newValue), std::move(computation)));
}

} // namespace conferix
