#pragma once

#include "app/http_client.h"
#include "app/ini_section.h"
#include "data/notice_box.h"
#include "platform/platform.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace conferix {

/// An update that cannot be used; the text names the package and says why.
class EUpdate : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Section "Atualizacao" of Conferix.ini.
class TUpdateSettings : public TIniSection {
  public:
    explicit TUpdateSettings(std::filesystem::path file = DefaultFile())
        : TIniSection(std::move(file), "Atualizacao"), Address(ReadText("Endereco", {})) {}

    /// Address of the list of packages; empty by default, so that nothing is fetched unasked.
    std::string Address;
};

/// One package of the list.
struct TPackage {
    std::string Name;
    std::string Kind; ///< "schemas" or "terminologia"
    std::string Version;
    std::string Sha256; ///< lower-case hexadecimal
    std::uint64_t Size = 0;
    std::string Address;    ///< absolute
    bool Installed = false; ///< this version of it is installed already
};

/// Who takes the packages of a kind.
struct TPackageImporter {
    /// Takes a package that was fetched and found right, and answers the names of the files that it put in
    /// place, if it keeps any; raises for one that it cannot use, after which everything is as it was.
    std::function<std::vector<std::string>(const TPackage& package, const std::filesystem::path& file)>
        Import;
    /// Whether a package that was taken once is still in place, by those names; the user may have removed it.
    std::function<bool(const TPackage& package, const std::vector<std::string>& files)> IsPresent;
};
/// By the package's kind.
using TPackageImporters = std::map<std::string, TPackageImporter, std::less<>>;

/// Packages of schemas and terminology from the address in the settings.
class TUpdater {
  public:
    /// `folder`: data folder, in which unfinished downloads and the list of what is installed are kept.
    TUpdater(std::string address, const TProxySettings& proxy, std::filesystem::path folder);

    /// Keeps other updates away as long as the answer lives. Raises EUpdate while another one runs,
    /// EFile.
    std::unique_ptr<TFileLock> Lock() const;
    /// The packages that are offered. Raises EHttp, EUpdate, and what the importers raise.
    std::vector<TPackage> List(const TPackageImporters& importers);
    /// The notices that the list has beside the packages; those of the last List().
    const std::vector<TNotice>& Published() const { return published_; }
    /// Fetches a package, checks size and SHA-256, hands it to its importer and notes it as installed. Raises
    /// EHttp, EUpdate, EFile, and what the importer raises.
    void Install(const TPackage& package, const TPackageImporters& importers,
                 const TDownloadProgress& progress);

  private:
    struct TInstalled {
        std::string Sha256;
        std::vector<std::string> Files;
    };

    std::filesystem::path InstalledFile() const { return folder_ / "atualizacoes.json"; }
    std::map<std::string, TInstalled> Installed() const;
    void NoteInstalled(const TPackage& package, std::vector<std::string> files) const;

    std::string address_;
    THttpClient http_;
    std::filesystem::path folder_;
    std::vector<TNotice> published_;
};

} // namespace conferix
