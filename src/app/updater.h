#pragma once

#include "app/http_client.h"
#include "app/ini_section.h"
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
class EAtualizacao : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Section "Atualizacao" of Conferix.ini.
class TAtualizacaoSettings : public TIniSection {
  public:
    explicit TAtualizacaoSettings(std::filesystem::path file = DefaultFile())
        : TIniSection(std::move(file), "Atualizacao"), Endereco(ReadText("Endereco", {})) {}

    /// Address of the list of packages; empty by default, so that nothing is fetched unasked.
    std::string Endereco;
};

/// One package of the list.
struct TPacote {
    std::string Nome;
    std::string Tipo; ///< "schemas" or "terminologia"
    std::string Versao;
    std::string Sha256; ///< lower-case hexadecimal
    std::uint64_t Tamanho = 0;
    std::string Endereco;   ///< absolute
    bool Instalado = false; ///< this version of it is installed already
};

/// Who takes the packages of a kind.
struct TImportador {
    /// Takes a package that was fetched and found right, and answers the names of the files that it put in
    /// place, if it keeps any; raises for one that it cannot use, after which everything is as it was.
    std::function<std::vector<std::string>(const TPacote& pacote, const std::filesystem::path& file)>
        Importar;
    /// Whether a package that was taken once is still in place, by those names; the user may have removed it.
    std::function<bool(const TPacote& pacote, const std::vector<std::string>& arquivos)> Presente;
};
/// By the package's kind.
using TImportadores = std::map<std::string, TImportador, std::less<>>;

/// Packages of schemas and terminology from the address in the settings.
class TAtualizacao {
  public:
    /// `folder`: data folder, in which unfinished downloads and the list of what is installed are kept.
    TAtualizacao(std::string endereco, const TProxySettings& proxy, std::filesystem::path folder);

    /// Keeps other updates away as long as the answer lives. Raises EAtualizacao while another one runs,
    /// EArquivo.
    std::unique_ptr<TFileLock> Travar() const;
    /// The packages that are offered. Raises EHttp, EAtualizacao, and what the importers raise.
    std::vector<TPacote> Listar(const TImportadores& importadores);
    /// Fetches a package, checks size and SHA-256, hands it to its importer and notes it as installed. Raises
    /// EHttp, EAtualizacao, EArquivo, and what the importer raises.
    void Instalar(const TPacote& pacote, const TImportadores& importadores,
                  const TDownloadProgress& progress);

  private:
    struct TInstalado {
        std::string Sha256;
        std::vector<std::string> Arquivos;
    };

    std::filesystem::path InstalledFile() const { return folder_ / "atualizacoes.json"; }
    std::map<std::string, TInstalado> Installed() const;
    void NoteInstalled(const TPacote& pacote, std::vector<std::string> arquivos) const;

    std::string endereco_;
    THttpClient http_;
    std::filesystem::path folder_;
};

/// SHA-256 of a file as lower-case hexadecimal. Raises EArquivoNaoLido.
std::string Sha256OfFile(const std::filesystem::path& file);

} // namespace conferix
