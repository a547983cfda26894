#include "data/tuss_writer.h"

#include "data/sql_statement.h"
#include "data/sqlite_reason.h"

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
            PathText(fs::absolute(file)), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE, kBusyTimeoutMs);
    } catch (const SQLite::Exception& error) {
        throw ETerminologiaNaoGravada(file, SqliteReason(error));
    }
}

} // namespace

struct TTussWriter::TImpl {
    TImpl(SQLite::Database& target, const fs::path& name)
        : file(name), database(target), transaction(target, SQLite::TransactionBehavior::IMMEDIATE) {
        for (const TTussTable& table : TussTables()) {
            database.exec(table.createSql);
            inserts.emplace(table.name, TSqlStatement::Insert(database, table.name, table.columns));
        }
    }

    void Insert(std::string_view table, std::vector<std::optional<std::string>> values) {
        TSqlStatement& insert = inserts.find(table)->second;
        try {
            insert.Start(std::move(values));
            insert.Step();
            insert.Reset();
        } catch (const SQLite::Exception& error) {
            throw ETerminologiaNaoGravada(file, SqliteReason(error) + " (" + std::string(table) + ": " +
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
        throw ETerminologiaNaoGravada(file, SqliteReason(error));
    }
}

void TTussWriter::Insert(std::string_view table, const TTussTermo& term) {
    impl_->Insert(TussTableName(table),
                  {term.codigo, DateText(term.dataInicioVigencia), DateText(term.dataFimImplantacao)});
}

void TTussWriter::Insert(const TTuss64& row) {
    impl_->Insert(kTableTuss64, {row.tabela, row.codigo, row.envioConsolidado ? "1" : "0",
                                 row.grupo.empty() ? std::nullopt : std::optional(row.grupo),
                                 DateText(row.dataInicioVigencia), DateText(row.dataFimVigencia),
                                 DateText(row.dataFimImplantacao)});
}

void TTussWriter::Insert(const TTussInativado& row) {
    impl_->Insert(kTableTussInativado, {row.tabela, row.codigo, DateText(row.dataFimVigencia)});
}

void TTussWriter::Insert(const TCidade& row) {
    impl_->Insert(kTableCidade, {row.codigo});
}

void TTussWriter::Commit() {
    try {
        impl_->transaction.commit();
    } catch (const SQLite::Exception& error) {
        throw ETerminologiaNaoGravada(impl_->file, SqliteReason(error));
    }
}

} // namespace conferix
