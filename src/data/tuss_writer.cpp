#include "data/tuss_writer.h"

#include "data/sql_statement.h"
#include "data/sqlite_reason.h"
#include "platform/whole_path.h"

#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Exception.h>
#include <SQLiteCpp/Transaction.h>

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace conferix {

namespace fs = std::filesystem;

namespace {

// Readers hold the file for moments only.
constexpr int kBusyTimeoutMs = 5000;

std::optional<std::string> DateText(const std::optional<TDate>& date) {
    return date ? std::optional(FormatIsoDate(*date)) : std::nullopt;
}

std::unique_ptr<SQLite::Database> OpenForWriting(const fs::path& file) {
    try {
        return std::make_unique<SQLite::Database>(
            PathText(AbsolutePath(file)), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE, kBusyTimeoutMs);
    } catch (const SQLite::Exception& error) {
        throw ETerminologyNotWritten(file, SqliteReason(error));
    }
}

} // namespace

struct TTussWriter::TImpl {
    TImpl(SQLite::Database& target, const fs::path& name)
        : file(name), database(target), transaction(target, SQLite::TransactionBehavior::IMMEDIATE) {
        for (const TTussTable& table : TussTables()) {
            database.exec(table.CreateSql);
            inserts.emplace(table.Name, TSqlStatement::Insert(database, table.Name, table.Columns));
        }
    }

    void Insert(std::string_view table, std::vector<std::optional<std::string>> values) {
        TSqlStatement& insert = inserts.find(table)->second;
        try {
            insert.Start(std::move(values));
            insert.Step();
            insert.Reset();
        } catch (const SQLite::Exception& error) {
            throw ETerminologyNotWritten(file, SqliteReason(error) + " (" + std::string(table) + ": " +
                                                   insert.DescribeParams() + ")");
        }
    }

    fs::path file;
    SQLite::Database& database;
    SQLite::Transaction transaction;
    std::map<std::string, TSqlStatement, std::less<>> inserts;
};

TTussWriter::TTussWriter(const fs::path& file) : owned_(OpenForWriting(file)), impl_(Begin(*owned_, file)) {}

TTussWriter::TTussWriter(SQLite::Database& database, const fs::path& file) : impl_(Begin(database, file)) {}

TTussWriter::~TTussWriter() = default;

std::unique_ptr<TTussWriter::TImpl> TTussWriter::Begin(SQLite::Database& database, const fs::path& file) {
    try {
        return std::make_unique<TImpl>(database, file);
    } catch (const SQLite::Exception& error) {
        throw ETerminologyNotWritten(file, SqliteReason(error));
    }
}

void TTussWriter::Insert(std::string_view table, const TTussTerm& term) {
    impl_->Insert(TussTableName(table),
                  {term.Codigo, DateText(term.DataInicioVigencia), DateText(term.DataFimImplantacao)});
}

void TTussWriter::Insert(const TTuss64& row) {
    impl_->Insert(kTableTuss64, {row.Tabela, row.Codigo, row.EnvioConsolidado ? "1" : "0",
                                 row.Grupo.empty() ? std::nullopt : std::optional(row.Grupo),
                                 DateText(row.DataInicioVigencia), DateText(row.DataFimVigencia),
                                 DateText(row.DataFimImplantacao)});
}

void TTussWriter::Insert(const TTussInativado& row) {
    impl_->Insert(kTableTussInativado, {row.Tabela, row.Codigo, DateText(row.DataFimVigencia)});
}

void TTussWriter::Insert(const TCidade& row) {
    impl_->Insert(kTableCidade, {row.Codigo});
}

void TTussWriter::Commit() {
    try {
        impl_->transaction.commit();
    } catch (const SQLite::Exception& error) {
        throw ETerminologyNotWritten(impl_->file, SqliteReason(error));
    }
}

} // namespace conferix
