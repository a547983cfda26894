// Import of the regulator's publications into the terminology database.
#pragma once

#include "data/import/publication_reader.h"
#include "data/import/tuss_merge.h"

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace conferix {

/// What to import, and where to.
struct TImportOptions {
    /// Files of any layout, and folders, which stand for all such files below them.
    std::vector<std::filesystem::path> sources;
    /// The database that is written; made from the delivered one where it does not exist.
    std::filesystem::path target;
    /// The database that came with the program; read only. Empty or absent: there is none.
    std::filesystem::path delivered;
    /// Forget what the database knew of the tables that the sources tell whole.
    bool replace = false;
    /// Is told now and then what is worked on, and how far the whole is (0 to 1); may be empty.
    std::function<void(const std::string& what, double fraction)> onProgress;
    /// Set from anywhere to stop the import; may be null.
    const std::atomic<bool>* stop = nullptr;
};

/// What one file held of a table.
struct TFileTable {
    std::int64_t linhas = 0;
    std::string inicioMaisRecente; ///< AAAA-MM-DD; empty where no row has a start
};

/// A file that was read.
struct TImportedFile {
    std::filesystem::path arquivo;
    std::string sha256;
    std::map<std::string, TFileTable> tabelas;
    std::int64_t naoEntendidas = 0;
};

/// How many rows that were not understood a report holds of a file.
inline constexpr std::int64_t kNotUnderstoodKept = 1000;

/// What an import did.
struct TImportReport {
    std::filesystem::path database;
    std::vector<TImportedFile> arquivos;
    TChanges tabelas;
    std::vector<TLinhaNaoEntendida> naoEntendidas; ///< file after file, the first kNotUnderstoodKept of each
    std::vector<std::string> ignorados;            ///< files that hold no terminology
    std::vector<std::string> semDatas;             ///< files and sheets whose dates were not recognized
    std::int64_t semTabela = 0;                    ///< codes of table 64 that no table of terms holds yet
};

/// Imports all sources or none. The new database is built beside the target and takes its place in one
/// step: who reads the old one is not disturbed. Raises EPublicacaoInvalida, EImportacaoInterrompida,
/// ETerminologiaNaoGravada, EArquivoNaoGravado, EPastaNaoCriada; the target is then as it was.
TImportReport ImportTerminology(const TImportOptions& options);

/// Removes the imported database, so that the delivered one is used again; false when there is none.
/// Raises ETerminologiaNaoGravada, also while an import runs.
bool RemoveImportedTerminology(const std::filesystem::path& imported);

/// The newest import of a table.
struct TCarga {
    std::string tabela;
    std::string arquivo;
    std::string sha256;
    std::string data; ///< AAAA-MM-DD HH:MM:SS, local time
    std::int64_t linhas = 0;
    std::string inicioMaisRecente;
};

/// What a database says of its imports: the newest of each table, by number; none for a database without.
/// Raises ETerminologiaNaoConsultada.
std::vector<TCarga> NewestImports(const std::filesystem::path& database);

/// True when a database exists and a file of that SHA-256 is among its imports. Raises
/// ETerminologiaNaoConsultada.
bool HasImport(const std::filesystem::path& database, const std::string& sha256);

} // namespace conferix
