#include "app/updater.h"

#include "data/sha256.h"
#include "platform/platform.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <memory>

namespace conferix {

namespace {

constexpr std::size_t kMaxList = 1'000'000;          ///< bytes of the list of packages
constexpr std::uint64_t kMaxPackage = 1'000'000'000; ///< bytes of one package
constexpr std::size_t kSha256Digits = 64;

using TJsonValue = nlohmann::json;

/// A package as the list describes it.
TPackage ReadPackage(const TJsonValue& json, const std::string& base) {
    TPackage package;
    package.Name = json.at("nome").get<std::string>();
    package.Kind = json.at("tipo").get<std::string>();
    package.Version = json.at("versao").get<std::string>();
    package.Sha256 = json.at("sha256").get<std::string>();
    package.Size = json.at("tamanho").get<std::uint64_t>();
    package.Address = THttpClient::Resolve(base, json.at("endereco").get<std::string>());
    const auto refuse = [&](const std::string& reason) {
        throw EUpdate(fmt::format("pacote \"{}\": {}", package.Name, reason));
    };
    if (package.Name.empty() || package.Version.empty())
        refuse("falta o nome ou a versão");
    if (package.Sha256.size() != kSha256Digits ||
        package.Sha256.find_first_not_of("0123456789abcdef") != std::string::npos)
        refuse("o SHA-256 tem de ter 64 dígitos hexadecimais em minúsculas");
    if (package.Size == 0 || package.Size > kMaxPackage)
        refuse(fmt::format("o tamanho tem de ser de 1 a {} bytes", kMaxPackage));
    return package;
}

} // namespace

TUpdater::TUpdater(std::string address, const TProxySettings& proxy, std::filesystem::path folder)
    : address_(std::move(address)), http_(proxy), folder_(std::move(folder)) {
    if (address_.empty())
        throw EUpdate(
            "nenhum endereço de atualização está configurado (Conferix.ini, seção Atualizacao, chave "
            "Endereco)");
}

std::unique_ptr<TFileLock> TUpdater::Lock() const {
    CreateFolder(folder_);
    auto lock = std::make_unique<TFileLock>(folder_ / "atualizacoes.trava", false);
    if (!lock->Held())
        throw EUpdate("outra atualização está em andamento; espere que ela termine");
    return lock;
}

std::map<std::string, TUpdater::TInstalled> TUpdater::Installed() const {
    std::error_code ignored;
    if (!std::filesystem::exists(InstalledFile(), ignored))
        return {};
    std::map<std::string, TInstalled> installed;
    try {
        const TJsonValue json = TJsonValue::parse(ReadWholeFile(InstalledFile()));
        for (const auto& [name, entry] : json.items())
            installed[name] = {entry.at("sha256").get<std::string>(),
                               entry.at("arquivos").get<std::vector<std::string>>()};
    } catch (const TJsonValue::exception&) {
        throw EUpdate(fmt::format("o arquivo \"{}\" está danificado; remova-o", PathText(InstalledFile())));
    }
    return installed;
}

void TUpdater::NoteInstalled(const TPackage& package, std::vector<std::string> files) const {
    std::map<std::string, TInstalled> installed = Installed();
    installed[package.Name] = {package.Sha256, std::move(files)};
    TJsonValue json = TJsonValue::object();
    for (const auto& [name, entry] : installed)
        json[name] = {{"sha256", entry.Sha256}, {"arquivos", entry.Files}};
    WriteFileAtomically(InstalledFile(), json.dump(2) + "\n");
}

std::vector<TPackage> TUpdater::List(const TPackageImporters& importers) {
    const std::map<std::string, TInstalled> installed = Installed();
    std::vector<TPackage> packages;
    try {
        const TJsonValue list = TJsonValue::parse(http_.Get(address_, kMaxList));
        for (const TJsonValue& json : list.at("pacotes").get_ref<const TJsonValue::array_t&>())
            packages.push_back(ReadPackage(json, address_));
    } catch (const TJsonValue::exception&) {
        throw EUpdate(fmt::format("{}: não é uma lista de pacotes do Conferix", address_));
    }
    for (TPackage& package : packages) {
        const auto known = installed.find(package.Name);
        const auto importer = importers.find(package.Kind);
        package.Installed = known != installed.end() && known->second.Sha256 == package.Sha256 &&
                            importer != importers.end() && importer->second.IsPresent &&
                            importer->second.IsPresent(package, known->second.Files);
    }
    return packages;
}

void TUpdater::Install(const TPackage& package, const TPackageImporters& importers,
                       const TDownloadProgress& progress) {
    const auto importer = importers.find(package.Kind);
    if (importer == importers.end() || !importer->second.Import)
        throw EUpdate(fmt::format("pacote \"{}\": esta versão do programa não instala pacotes do tipo \"{}\"",
                                  package.Name, package.Kind));
    const std::filesystem::path downloads = folder_ / "downloads";
    CreateFolder(downloads);
    // Named by its content, so that an unfinished download is only ever gone on with by the same package.
    const std::filesystem::path file = downloads / (package.Sha256 + ".zip");
    http_.Download(package.Address, file, package.Size, progress);
    const bool right = Sha256OfFile(file) == package.Sha256;
    const std::shared_ptr<void> remove(nullptr, [&file](void*) {
        std::error_code ignored;
        std::filesystem::remove(file, ignored);
    });
    if (!right)
        throw EUpdate(fmt::format("pacote \"{}\": o conteúdo não confere com o SHA-256 anunciado; nada foi "
                                  "instalado",
                                  package.Name));
    NoteInstalled(package, importer->second.Import(package, file));
}

} // namespace conferix
