#include "data/import/tuss_importer.h"

#include "data/import/import_errors.h"
#include "data/sha256.h"
#include "data/sqlite_reason.h"
#include "data/tuss.h"
#include "platform/whole_path.h"

#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Exception.h>
#include <SQLiteCpp/Statement.h>
#include <sqlite3.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <system_error>

namespace conferix {

namespace fs = std::filesystem;

namespace {

constexpr double kShareOfReading = 0.6;   // of the time of a large import
constexpr int kStepsBetweenLooks = 20000; // of SQLite, between two looks at the stop flag
constexpr std::uint64_t kRowsBetweenLooks = 4096;

fs::path Beside(const fs::path& file, const char* ending) {
    fs::path name = file;
    name += ending;
    return name;
}

/// Keeps other imports into the same file away for its life, by a locked file beside it.
class TImportLock {
  public:
    explicit TImportLock(const fs::path& target) : file_(Beside(target, ".trava")) {
        try {
            do {
                database_ = std::make_unique<SQLite::Database>(PathText(file_),
                                                               SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
                database_->exec("BEGIN EXCLUSIVE");
            } while (IsRemoved());
        } catch (const SQLite::Exception& error) {
            const bool isTaken = error.getErrorCode() == SQLITE_BUSY;
            throw ETerminologyNotWritten(target, isTaken ? "outra importação está em andamento"
                                                         : SqliteReason(error));
        }
    }
    TImportLock(const TImportLock&) = delete;
    TImportLock& operator=(const TImportLock&) = delete;
    ~TImportLock() {
        std::error_code failure;
        fs::remove(file_, failure); // while it is still locked, see IsRemoved
        database_.reset();
        if (failure) { // on Windows, where a file that somebody has open stays: this one, or another import's
            fs::remove(file_, failure);
        }
    }

  private:
    /// Whether another import, which was ending, removed the file between its opening and its locking here:
    /// a third one would then lock a new file of that name.
    bool IsRemoved() const {
        int isMoved = 0;
        sqlite3_file_control(database_->getHandle(), "main", SQLITE_FCNTL_HAS_MOVED, &isMoved);
        return isMoved != 0;
    }

    fs::path file_;
    std::unique_ptr<SQLite::Database> database_;
};

/// Refuses a target that exists and is something else than a database of terminology.
void CheckTarget(const fs::path& target) {
    std::error_code ignored;
    if (!fs::exists(target, ignored)) {
        return;
    }
    try {
        const SQLite::Database database(PathText(target), SQLite::OPEN_READONLY);
        SQLite::Statement query(database,
                                "SELECT COUNT(*), IFNULL(SUM(name LIKE 'TB\\_TUSS\\_%' ESCAPE '\\'), 0)"
                                " FROM sqlite_master WHERE type = 'table'");
        query.executeStep();
        if (query.getColumn(0).getInt64() > 0 && query.getColumn(1).getInt64() == 0) {
            throw ETerminologyNotWritten(target, "o arquivo não é uma base de terminologia");
        }
    } catch (const SQLite::Exception& error) {
        throw ETerminologyNotWritten(target, SqliteReason(error));
    }
}

/// A folder for what the import needs meanwhile; removed at its end, and what an interrupted one left
/// behind before it.
class TWorkFolder {
  public:
    explicit TWorkFolder(const fs::path& folder) : folder_(folder) {
        Remove();
        CreateFolder(folder_);
    }
    TWorkFolder(const TWorkFolder&) = delete;
    TWorkFolder& operator=(const TWorkFolder&) = delete;
    ~TWorkFolder() { Remove(); }
    fs::path operator/(const char* name) const { return folder_ / name; }
    const fs::path& Path() const { return folder_; }

  private:
    void Remove() const {
        std::error_code ignored;
        fs::remove_all(folder_, ignored);
    }

    fs::path folder_;
};

/// The files that a source stands for, in the order of their names.
std::vector<fs::path> FilesOf(const fs::path& source) {
    std::error_code error;
    const fs::file_status status = fs::status(source, error);
    if (!fs::is_directory(status)) {
        if (fs::exists(status) && !fs::is_regular_file(status)) {
            throw EInvalidPublication(source, "não é um arquivo comum"); // it is read twice
        }
        return {source};
    }
    std::vector<fs::path> files;
    for (auto entry = fs::recursive_directory_iterator(source, error);
         !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
        if (entry->is_regular_file(error) && MayHoldTerminology(entry->path())) {
            files.push_back(entry->path());
        }
    }
    if (error) {
        throw EInvalidPublication(source, ReasonText(error));
    }
    std::sort(files.begin(), files.end());
    return files;
}

class TImport : private IPublicationSink {
  public:
    explicit TImport(const TImportOptions& options) : options_(options) {}

    TImportReport Run() {
        const fs::path target = AbsolutePath(options_.Target);
        std::error_code ignored;
        if (!options_.Delivered.empty() && fs::equivalent(target, options_.Delivered, ignored)) {
            throw ETerminologyNotWritten(target, "é a base que veio com o programa, que não é alterada");
        }
        std::vector<fs::path> files;
        for (const fs::path& source : options_.Sources) {
            const std::vector<fs::path> found = FilesOf(source);
            if (found.empty()) {
                throw EInvalidPublication(source,
                                          "a pasta não tem nenhum arquivo ZIP, XLSX, CSV, TXT ou JSON");
            }
            files.insert(files.end(), found.begin(), found.end());
        }
        CreateFolder(target.parent_path());
        CheckTarget(target);
        const TImportLock lock(target);
        const TWorkFolder work(Beside(target, ".importacao"));
        const fs::path built = work / "tuss.db";
        report_.Database = target;
        try {
            Build(files, target, built, work);
        } catch (const SQLite::Exception& error) {
            Look(); // an interrupted statement is no failure of its own
            throw ETerminologyNotWritten(target, SqliteReason(error));
        }
        Tell("gravação", 1);
        ReplaceFileBy(target, built);
        return std::move(report_);
    }

  private:
    void Build(const std::vector<fs::path>& files, const fs::path& target, const fs::path& built,
               const TWorkFolder& work) {
        CopyBase(target, built);
        SQLite::Database database(PathText(built), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
        // The file is thrown away after any failure and flushed before it is used.
        database.exec("PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF; PRAGMA locking_mode = EXCLUSIVE;"
                      "PRAGMA temp_store = FILE; PRAGMA cache_size = -65536");
        sqlite3_progress_handler(
            database.getHandle(), kStepsBetweenLooks,
            [](void* self) { return static_cast<TImport*>(self)->Stopped() ? 1 : 0; }, this);
        CreateImportTables(database);
        std::error_code ignored;
        if (fs::exists(options_.Delivered, ignored)) {
            MergeDelivered(database, options_.Delivered);
        }
        TLoadArea area(database, PathText(work / "carga.db"));
        area_ = &area;
        database.exec("BEGIN");
        for (std::size_t i = 0; i < files.size(); ++i) {
            from_ = kShareOfReading * static_cast<double>(i) / static_cast<double>(files.size());
            share_ = kShareOfReading / static_cast<double>(files.size());
            ReadFile(files[i], work);
        }
        if (area.Rows() == 0) {
            throw EInvalidPublication(options_.Sources.front(), NothingFound());
        }
        report_.Tables = MergeLoaded(database, area, options_.Replace, [this](double fraction) {
            Tell("consolidação", kShareOfReading + (1 - kShareOfReading) * fraction);
        });
        report_.WithoutTable = CountWithoutTable(database);
        Record(database);
        database.exec("COMMIT");
    }

    void CopyBase(const fs::path& target, const fs::path& built) const {
        std::error_code error;
        const bool isThere = fs::exists(target, error);
        const fs::path& base = isThere ? target : options_.Delivered;
        if (base.empty() || !fs::exists(base, error)) {
            return;
        }
        if (fs::copy_file(base, built, error)) {
            fs::permissions(built, fs::perms::owner_write, fs::perm_options::add, error);
        }
        if (error) {
            throw ETerminologyNotWritten(target, ReasonText(error));
        }
    }

    void ReadFile(const fs::path& file, const TWorkFolder& work) {
        TImportedFile& read = report_.Files.emplace_back();
        read.File = file;
        const std::uint64_t rowsBefore = area_->Rows();
        TPublicationReader(work.Path(), *this).Read(file);
        read.Sha256 = Sha256OfFile(file);
        const bool isNamed =
            std::find(options_.Sources.begin(), options_.Sources.end(), file) != options_.Sources.end();
        if (isNamed && area_->Rows() == rowsBefore) {
            throw EInvalidPublication(file, NothingFound());
        }
    }

    std::string NothingFound() const {
        if (!report_.Rejected.empty() && report_.Files.back().Rejected > 0) {
            const TRejectedRow& line = report_.Rejected.back();
            return "nenhuma linha pôde ser entendida (" + line.File + ", " + line.Place() + ": " +
                   line.Reason +
                   "). O nome do arquivo diz a tabela quando as colunas não a dizem: \"Tabela 18.csv\"";
        }
        return "não foi encontrada nenhuma tabela da TUSS. São lidas as publicações da ANS em ZIP, XLSX, "
               "CSV, TXT "
               "e JSON, com as colunas \"Código do Termo\" e \"Termo\"";
    }

    void OnRow(const TPublishedRow& row, bool isHistory) override {
        TFileTable& table = report_.Files.back().Tables[row.Tabela];
        ++table.Rows;
        table.NewestStart = std::max(table.NewestStart, row.Period.Start);
        area_->Add(row, isHistory);
        if (area_->Rows() % kRowsBetweenLooks == 0) {
            Look();
        }
    }

    void OnRejected(TRejectedRow line) override {
        if (++report_.Files.back().Rejected <= kRejectedRowsKept) {
            report_.Rejected.push_back(std::move(line));
        }
    }

    void OnPassedOver(const std::string& file) override { report_.Ignored.push_back(file); }

    void OnMissingDates(const std::string& file) override { report_.WithoutDates.push_back(file); }

    void OnProgress(const std::string& what, double fraction) override {
        Tell(what, from_ + share_ * fraction);
    }

    void Tell(const std::string& what, double fraction) {
        Look();
        if (options_.OnProgress) {
            options_.OnProgress(what, fraction);
        }
    }

    bool Stopped() const { return options_.Stop != nullptr && options_.Stop->load(); }

    void Look() const {
        if (Stopped()) {
            throw EImportInterrupted();
        }
    }

    void Record(SQLite::Database& database) const {
        SQLite::Statement insert(database, "INSERT INTO TB_CARGA VALUES (?, ?, datetime('now', 'localtime'),"
                                           " ?, ?, NULLIF(?, ''))");
        for (const TImportedFile& file : report_.Files) {
            for (const auto& [table, content] : file.Tables) {
                insert.bind(1, PathText(file.File.filename()));
                insert.bind(2, file.Sha256);
                insert.bind(3, table);
                insert.bind(4, content.Rows);
                insert.bind(5, content.NewestStart);
                insert.exec();
                insert.reset();
            }
        }
    }

    const TImportOptions& options_;
    TImportReport report_;
    TLoadArea* area_ = nullptr;
    double from_ = 0; ///< progress at the beginning of the present file
    double share_ = 0;
};

} // namespace

TImportReport ImportTerminology(const TImportOptions& options) {
    return TImport(options).Run();
}

bool RemoveImportedTerminology(const fs::path& imported) {
    std::error_code error;
    if (!fs::exists(imported, error)) {
        return false;
    }
    const TImportLock lock(imported);
    if (!fs::remove(imported, error) && error) {
        throw ETerminologyNotWritten(imported, ReasonText(error));
    }
    return true;
}

bool HasImport(const fs::path& database, const std::string& sha256) {
    std::error_code ignored;
    if (!fs::exists(database, ignored)) {
        return false;
    }
    try {
        SQLite::Database opened(PathText(AbsolutePath(database)), SQLite::OPEN_READONLY);
        if (!opened.tableExists("TB_CARGA")) {
            return false;
        }
        SQLite::Statement query(opened, "SELECT 1 FROM TB_CARGA WHERE SHA256 = ? LIMIT 1");
        query.bind(1, sha256);
        return query.executeStep();
    } catch (const SQLite::Exception& error) {
        throw ETerminologyNotRead(database, SqliteReason(error));
    }
}

std::vector<TTableImport> NewestImports(const fs::path& database) {
    try {
        const SQLite::Database opened(PathText(AbsolutePath(database)), SQLite::OPEN_READONLY);
        std::vector<TTableImport> imports;
        if (!opened.tableExists("TB_CARGA")) {
            return imports;
        }
        SQLite::Statement query(opened, "SELECT TABELA, ARQUIVO, SHA256, DATA, LINHAS,"
                                        " IFNULL(INICIO_MAIS_RECENTE, '') FROM TB_CARGA WHERE ROWID IN"
                                        " (SELECT MAX(ROWID) FROM TB_CARGA GROUP BY TABELA) ORDER BY TABELA");
        while (query.executeStep()) {
            imports.push_back({query.getColumn(0).getString(), query.getColumn(1).getString(),
                               query.getColumn(2).getString(), query.getColumn(3).getString(),
                               query.getColumn(4).getInt64(), query.getColumn(5).getString()});
        }
        return imports;
    } catch (const SQLite::Exception& error) {
        throw ETerminologyNotRead(database, SqliteReason(error));
    }
}

} // namespace conferix
