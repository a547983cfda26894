#include "validator/tiss_validator.h"

#include "model/arquivo_tiss.h"
#include "validator/all_rules.h"

namespace conferix {

namespace {

constexpr std::string_view kGuiaMonitoramento = "tiss.monitoramento.loteguias.guia";
/// CPF or CNPJ of the provider, health card of the beneficiary, CNPJ of a supplier.
constexpr std::string_view kFieldsWithDocuments[] = {"014", "016", "075"};

void CollectUnkept(const TValidation& rule, std::vector<TUnkeptFindings>& unkept) {
    if (rule.Unkept().Findings() != 0)
        unkept.push_back({rule.Identity(), rule.Unkept(), rule.UnkeptGroups()});
    for (const auto& child : rule.Validations())
        CollectUnkept(*child, unkept);
}

} // namespace

TTissValidator::TTissValidator(std::shared_ptr<const IArquivoTiss> arquivo,
                               const std::filesystem::path& schemaFile,
                               const std::shared_ptr<ITussConnection>& tuss)
    : arquivo_(std::move(arquivo)) {
    const TRunContextPtr run = NewRunContext(
        std::string(arquivo_ != nullptr ? arquivo_->Versao() : std::string_view{}), schemaFile, tuss);
    const TRuleTable& rules = AllRules();
    for (const std::string& root : rules.Roots())
        validations_.push_back(arquivo_ == nullptr || root == RootOf(arquivo_->TipoArquivo())
                                   ? rules.MakeValidation(root, run)
                                   : rules.MakeAlone(root, run));
}

void TTissValidator::CountSuccesses() {
    for (const auto& root : validations_)
        root->CountSuccesses();
}

std::vector<TCountedSuccesses> TTissValidator::CountedSuccesses() const {
    std::vector<TCountedSuccesses> counted;
    std::vector<const TValidation*> waiting;
    for (const auto& root : validations_)
        waiting.push_back(root.get());
    while (!waiting.empty()) {
        const TValidation& rule = *waiting.back();
        waiting.pop_back();
        if (rule.CountedSuccesses() != 0)
            counted.push_back({rule.Identity(), rule.CountedSuccesses()});
        for (const auto& child : rule.Validations())
            waiting.push_back(child.get());
    }
    return counted;
}

TValidationMessages TTissValidator::Validate() {
    TValidationMessages messages;
    if (arquivo_ == nullptr)
        return messages;
    for (const auto& root : validations_) {
        arquivo_->Accept(*root);
        messages.insert(messages.end(), root->ValidationMessages().begin(), root->ValidationMessages().end());
    }
    return messages;
}

TValidationMessages TTissValidator::ValidateStructure(const IArquivoTiss& arquivo,
                                                      const std::filesystem::path& schemaFile) {
    const TRunContextPtr run = NewRunContext(std::string(arquivo.Versao()), schemaFile, nullptr);
    const TRuleTable& rules = AllRules();
    std::vector<std::shared_ptr<TValidation>> judging = {
        rules.MakeValidation(RuleOfKind(arquivo.TipoArquivo(), "schema"), run)};
    if (arquivo.TipoArquivo() == TEnumTipoArquivoTiss::taMonitoramento) {
        judging.push_back(rules.MakeAlone(std::string(kGuiaMonitoramento), run));
        for (const std::string_view field : kFieldsWithDocuments)
            judging.back()->AddValidation(
                rules.MakeAlone(std::string(kGuiaMonitoramento).append(".campo").append(field), run));
    }
    TValidationMessages messages;
    for (const auto& rule : judging) {
        rule->LimitFindings(kAllFindings);
        arquivo.Accept(*rule);
        messages.insert(messages.end(), rule->ValidationMessages().begin(), rule->ValidationMessages().end());
    }
    return messages;
}

void TTissValidator::LimitFindings(std::size_t keptOfRule) {
    for (const auto& root : validations_)
        root->LimitFindings(keptOfRule);
}

std::vector<TUnkeptFindings> TTissValidator::Unkept() const {
    std::vector<TUnkeptFindings> unkept;
    for (const auto& root : validations_)
        CollectUnkept(*root, unkept);
    return unkept;
}

std::vector<IValidationIdentity> TTissValidator::Validations(bool recursive) const {
    std::vector<IValidationIdentity> identities;
    for (const auto& root : validations_) {
        identities.push_back(root->Identity());
        if (recursive) {
            const auto below = root->Validations(true);
            identities.insert(identities.end(), below.begin(), below.end());
        }
    }
    return identities;
}

} // namespace conferix
