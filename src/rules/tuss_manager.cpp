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

std::shared_ptr<TTussManager> OpenTussManager(const std::shared_ptr<const ITussConnection>& connection) {
    return connection != nullptr ? std::make_shared<TTussManager>(connection) : nullptr;
}

std::optional<std::string> TTussNotices::NotInstalled(const TTussManager& manager, std::string_view table) {
    return manager.IsInstalled(table) ? std::nullopt : TellOnce(std::string(table));
}

std::optional<std::string> TTussNotices::Table64NotInstalled(const TTussManager& manager,
                                                             std::string_view table) {
    if (manager.IsTable64InstalledFor(table))
        return std::nullopt;
    return TellOnce(manager.IsTable64Installed() ? fmt::format("64 (termos da tabela {})", table) : "64");
}

std::optional<std::string> TTussNotices::TellOnce(std::string table) {
    const auto [told, isNew] = told_.insert(std::move(table));
    if (!isNew)
        return std::nullopt;
    return fmt::format(
        "A tabela {} da TUSS não está instalada; os códigos dessa tabela não foram verificados. Importe a "
        "publicação da ANS: conferix terminologia importar ARQUIVO.",
        *told);
}

std::optional<std::string> TTussNotices::CitiesNotInstalled(const TTussManager& manager) {
    if (manager.AreCitiesInstalled() || !told_.emplace().second)
        return std::nullopt;
    return "A tabela de municípios não está instalada; os códigos de município não foram verificados.";
}

} // namespace conferix
