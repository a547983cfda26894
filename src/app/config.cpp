#include "app/config.h"

#include "data/tuss_connection.h"
#include "sistema/sistema.h"
#include "validation/validator/tiss_validator.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>

namespace conferix {

EConfigInvalida::EConfigInvalida(const std::filesystem::path& file, const std::string& reason)
    : std::runtime_error(
          fmt::format("O arquivo de configuração \"{}\" não pôde ser lido: {}. Corrija ou remova o arquivo.",
                      PathText(file), reason)) {}

std::filesystem::path TConfig::DefaultFile() {
    return DataFolder() / "config.json";
}

TConfig TConfig::Load(const std::filesystem::path& file) {
    TConfig config;
    std::error_code ignored;
    if (!std::filesystem::exists(file, ignored)) {
        config.SetDefaultInitialConfig();
        return config;
    }
    try {
        const nlohmann::json content = nlohmann::json::parse(ReadWholeFile(file));
        config.enabled_ = content.at("EnabledValidations").get<std::vector<std::string>>();
    } catch (const nlohmann::json::parse_error& error) {
        throw EConfigInvalida(file, fmt::format("não é um JSON válido (posição {})", error.byte));
    } catch (const nlohmann::json::exception&) {
        throw EConfigInvalida(file, "falta a lista de textos \"EnabledValidations\"");
    } catch (const EArquivoNaoLido& error) {
        throw EConfigInvalida(file, error.Reason());
    }
    std::sort(config.enabled_.begin(), config.enabled_.end());
    config.enabled_.erase(std::unique(config.enabled_.begin(), config.enabled_.end()), config.enabled_.end());
    return config;
}

void TConfig::SetDefaultInitialConfig() {
    const TTissValidator validator(nullptr, {}, TTussConnection::InMemory());
    enabled_.clear();
    for (const IValidationIdentity& rule : validator.Validations(true))
        enabled_.push_back(rule->Name);
    std::sort(enabled_.begin(), enabled_.end());
    enabled_.erase(std::unique(enabled_.begin(), enabled_.end()), enabled_.end());
}

bool TConfig::IsEnabled(const std::string& name) const {
    return std::binary_search(enabled_.begin(), enabled_.end(), name);
}

void TConfig::Disable(const std::string& name) {
    std::erase(enabled_, name);
}

} // namespace conferix
