#include "app/updater.h"

#include "data/sha256.h"
#include "platform/iso_date.h"
#include "platform/platform.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <memory>
#include <optional>

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

constexpr std::size_t kMostNotices = 100;     ///< of a list
constexpr std::size_t kMaxNoticeText = 4'000; ///< bytes of each of its texts

/// A notice as the list has it; nothing for one that is not built so.
std::optional<TNotice> ReadNotice(const TJsonValue& json) {
    const auto text = [&](const char* key) {
        const auto found = json.find(key);
        return found != json.end() && found->is_string() ? found->get<std::string>() : std::string();
    };
    if (!json.is_object())
        return std::nullopt;
    TNotice notice = {.Subject = "publicado",
                      .Key = text("id"),
                      .Title = text("titulo"),
                      .Text = text("texto"),
                      .Level = NoticeLevelOf(text("nivel")),
                      .Address = text("endereco"),
                      .Date = text("data")};
    if (!notice.Address.starts_with("https://"))
        notice.Address.clear(); // nothing else is offered to be opened
    if (notice.Key.empty() || notice.Title.empty() || !ParseIsoDate(notice.Date))
        return std::nullopt;
    for (const std::string* each : {&notice.Key, &notice.Title, &notice.Text, &notice.Address})
        if (each->size() > kMaxNoticeText)
            return std::nullopt;
    return notice;
}

/// The notices of a list. One that cannot be read is left out: the packages do not depend on it.
std::vector<TNotice> ReadNotices(const TJsonValue& list) {
    std::vector<TNotice> notices;
    const auto found = list.find("avisos");
    if (found != list.end() && found->is_array())
        for (const TJsonValue& json : *found)
            if (std::optional<TNotice> notice = ReadNotice(json); notice && notices.size() < kMostNotices)
                notices.push_back(std::move(*notice));
    return notices;
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
        published_ = ReadNotices(list);
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
