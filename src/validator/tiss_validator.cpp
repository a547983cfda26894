#include "validator/tiss_validator.h"

#include "model/arquivo_tiss.h"
#include "validator/root_validations.h"

namespace conferix {

TTissValidator::TTissValidator(std::shared_ptr<const IArquivoTiss> arquivo,
                               const std::filesystem::path& schemaFile,
                               const std::shared_ptr<ITussConnection>& tuss)
    : arquivo_(std::move(arquivo)) {
    const std::string versao(arquivo_ != nullptr ? arquivo_->Versao() : std::string_view{});
    validations_.push_back(MakeValidation<TMensagemTissValidation>(versao, schemaFile, tuss));
    validations_.push_back(MakeValidation<TMonitoramentoValidation>(arquivo_, schemaFile, tuss));
    validations_.push_back(MakeValidation<TMonitoramentoQualidadeValidation>(schemaFile));
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
