#include "rules/tuss_manager.h"

#include <fmt/format.h>

#include <utility>

namespace conferix {

TTussManager::TTussManager(std::shared_ptr<const ITussConnection> connection)
    : connection_(std::move(connection)) {
    if (connection_ == nullptr)
        throw EManagerNotDefined();
}

const std::string& TTussManager::Key(std::string_view table, std::string_view code) {
    key_.assign(table);
    key_ += '\0';
    key_ += code;
    return key_;
}

const TTussTermLookups& TTussManager::Term(std::string_view table, std::string_view code) {
    const std::string& key = Key(table, code);
    const auto known = terms_.find(key);
    if (known != terms_.end())
        return known->second;
    return terms_
        .emplace(key, TTussTermLookups{connection_->StartOfValidity(table, code),
                                       connection_->Inactivation(table, code)})
        .first->second;
}

const std::vector<TTuss64>& TTussManager::Table64(std::string_view table, std::string_view code) {
    const std::string& key = Key(table, code);
    const auto known = periods_.find(key);
    if (known != periods_.end())
        return known->second;
    return periods_.emplace(key, connection_->Table64(table, code)).first->second;
}

bool TTussManager::HasCity(std::string_view code) {
    const std::string& key = Key({}, code);
    const auto known = cities_.find(key);
    if (known != cities_.end())
        return known->second;
    return cities_.emplace(key, connection_->HasCity(code)).first->second;
}

std::string TTussManager::MissingTable64(std::string_view table) const {
    if (connection_->IsTable64InstalledFor(table))
        return {};
    return connection_->IsTable64Installed() ? fmt::format("64 (termos da tabela {})", table) : "64";
}

std::string NotInstalledText(std::string_view table) {
    return fmt::format(
        "A tabela {} da TUSS não está instalada; os códigos dessa tabela não foram verificados. Importe a "
        "publicação da ANS: conferix terminologia importar ARQUIVO.",
        table);
}

} // namespace conferix
