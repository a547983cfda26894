#include "data/database.h"

#include "data/constantes.h"
#include "data/sqlite_reason.h"
#include "platform/whole_path.h"

#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Exception.h>
#include <SQLiteCpp/Statement.h>
#include <SQLiteCpp/Transaction.h>

#include <array>
#include <system_error>

namespace conferix {

namespace fs = std::filesystem;

namespace {

constexpr int kBusyTimeoutMs = 5000;

// What leads from each schema version to the next; entries are added, never changed.
constexpr std::array kMigrations = {
    "CREATE TABLE TB_MIGRACAO (VERSAO INTEGER NOT NULL PRIMARY KEY, DATA TEXT NOT NULL)",
    "CREATE TABLE TB_ARQUIVO_RECENTE (ORDEM INTEGER NOT NULL PRIMARY KEY, CAMINHO TEXT NOT NULL UNIQUE);"
    "CREATE TABLE TB_VALIDACAO (ID INTEGER NOT NULL PRIMARY KEY AUTOINCREMENT, CAMINHO TEXT NOT NULL, "
    "DATA TEXT NOT NULL, VERSAO TEXT NOT NULL, VALIDO INTEGER, ERROS INTEGER NOT NULL, "
    "AVISOS INTEGER NOT NULL);"
    "CREATE INDEX IX_VALIDACAO_CAMINHO ON TB_VALIDACAO (CAMINHO)",
    "CREATE TABLE TB_AVISO (NUMERO INTEGER NOT NULL PRIMARY KEY AUTOINCREMENT, ASSUNTO TEXT NOT NULL, "
    "CHAVE TEXT NOT NULL, DATA TEXT NOT NULL, NIVEL TEXT NOT NULL, TITULO TEXT NOT NULL, "
    "TEXTO TEXT NOT NULL, ENDERECO TEXT NOT NULL, LIDO INTEGER NOT NULL DEFAULT 0, "
    "EXCLUIDO INTEGER NOT NULL DEFAULT 0, UNIQUE (ASSUNTO, CHAVE))",
};

std::unique_ptr<SQLite::Database> Open(const fs::path& file, int flags) {
    std::error_code ignored;
    const fs::file_status status = fs::status(file, ignored);
    if (fs::is_directory(status)) {
        throw EDatabaseNotOpened(file, ReasonText(std::make_error_code(std::errc::is_a_directory)));
    }
    if (!fs::exists(status) && (flags & SQLite::OPEN_CREATE) == 0) {
        throw EDatabaseNotOpened(file,
                                 ReasonText(std::make_error_code(std::errc::no_such_file_or_directory)));
    }
    try {
        return std::make_unique<SQLite::Database>(PathText(AbsolutePath(file)), flags, kBusyTimeoutMs);
    } catch (const SQLite::Exception& error) {
        throw EDatabaseNotOpened(file, SqliteReason(error));
    }
}

void Apply(SQLite::Database& database, int version) {
    database.exec(kMigrations[static_cast<std::size_t>(version - 1)]);
    SQLite::Statement record(database, "INSERT INTO TB_MIGRACAO (VERSAO, DATA) VALUES (?, datetime('now'))");
    record.bind(1, version);
    record.exec();
    database.exec("PRAGMA user_version = " + std::to_string(version));
}

void Migrate(SQLite::Database& database, const fs::path& file) {
    try {
        // Two programs may start at once: the second waits here and then finds nothing to do.
        SQLite::Transaction transaction(database, SQLite::TransactionBehavior::IMMEDIATE);
        const int present = database.execAndGet("PRAGMA user_version").getInt();
        if (present > TDatabase::SchemaVersion()) {
            throw EDatabaseNotOpened(file, "foi gravado por uma versão mais nova do programa");
        }
        for (int version = present + 1; version <= TDatabase::SchemaVersion(); ++version) {
            Apply(database, version);
        }
        transaction.commit();
    } catch (const SQLite::Exception& error) {
        throw EDatabaseNotOpened(file, SqliteReason(error));
    }
}

} // namespace

EDatabaseNotOpened::EDatabaseNotOpened(const fs::path& file, const std::string& reason)
    : EFile("Não foi possível abrir o banco de dados", file, reason) {}

int TDatabase::SchemaVersion() {
    return static_cast<int>(kMigrations.size());
}

TDatabase::TDatabase(const fs::path& file)
    : fileName_(file.empty() ? TConstantes::ValidadorDirectory() / "conferix.db" : file) {}

bool TDatabase::ExistsDatabase() const {
    std::error_code ignored;
    return fs::is_regular_file(fileName_, ignored);
}

void TDatabase::Build() const {
    Migrate(*Open(fileName_, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE), fileName_);
}

void TDatabase::Update() const {
    Migrate(*CreateConnection(), fileName_);
}

std::unique_ptr<SQLite::Database> TDatabase::CreateConnection() const {
    return Open(fileName_, SQLite::OPEN_READWRITE);
}

} // namespace conferix
