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
    std::vector<std::filesystem::path> Sources;
    /// The database that is written; made from the delivered one where it does not exist.
    std::filesystem::path Target;
    /// The database that came with the program; read only. Empty or absent: there is none.
    std::filesystem::path Delivered;
    /// Forget what the database knew of the tables that the sources tell whole.
    bool Replace = false;
    /// Is told now and then what is worked on, and how far the whole is (0 to 1); may be empty.
    std::function<void(const std::string& what, double fraction)> OnProgress;
    /// Set from anywhere to stop the import; may be null.
    const std::atomic<bool>* Stop = nullptr;
};

/// What one file held of a table.
struct TFileTable {
    std::int64_t Rows = 0;
    std::string NewestStart; ///< AAAA-MM-DD; empty where no row has a start
};

/// A file that was read.
struct TImportedFile {
    std::filesystem::path File;
    std::string Sha256;
    std::map<std::string, TFileTable> Tables;
    std::int64_t Rejected = 0;
};

/// How many rows that were not understood a report holds of a file.
inline constexpr std::int64_t kRejectedRowsKept = 1000;

/// What an import did.
struct TImportReport {
    std::filesystem::path Database;
    std::vector<TImportedFile> Files;
    TChanges Tables;
    std::vector<TRejectedRow> Rejected;    ///< file after file, the first kRejectedRowsKept of each
    std::vector<std::string> Ignored;      ///< files that hold no terminology
    std::vector<std::string> WithoutDates; ///< files and sheets whose dates were not recognized
    std::int64_t WithoutTable = 0;         ///< codes of table 64 that no table of terms holds yet
};

/// Imports all sources or none. The new database is built beside the target and takes its place in one
/// step: who reads the old one is not disturbed. Raises EInvalidPublication, EImportInterrupted,
/// ETerminologyNotWritten, EFileNotWritten, EFolderNotCreated; the target is then as it was.
TImportReport ImportTerminology(const TImportOptions& options);

/// Removes the imported database, so that the delivered one is used again; false when there is none.
/// Raises ETerminologyNotWritten, also while an import runs.
bool RemoveImportedTerminology(const std::filesystem::path& imported);

/// The newest import of a table.
struct TTableImport {
    std::string Tabela;
    std::string File;
    std::string Sha256;
    std::string Time; ///< AAAA-MM-DD HH:MM:SS, local time
    std::int64_t Rows = 0;
    std::string NewestStart;
};

/// What a database says of its imports: the newest of each table, by number; none for a database without.
/// Raises ETerminologyNotRead.
std::vector<TTableImport> NewestImports(const std::filesystem::path& database);

/// True when a database exists and a file of that SHA-256 is among its imports. Raises
/// ETerminologyNotRead.
bool HasImport(const std::filesystem::path& database, const std::string& sha256);

} // namespace conferix
