#include "data/import/load_area.h"

#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Statement.h>

namespace conferix {

struct TLoadArea::TStatements {
    explicit TStatements(SQLite::Database& database)
        : term(database, "INSERT INTO carga.LINHA VALUES (?, ?, ?, ?, ?, ?)"),
          table64(database, "INSERT INTO carga.LINHA_64 VALUES (?, ?, ?, ?, ?, ?, ?, 1)"),
          withoutTable(database, "INSERT INTO carga.LINHA_64_SEM_TABELA VALUES (?, ?, ?, ?, ?)") {}

    SQLite::Statement term;
    SQLite::Statement table64;
    SQLite::Statement withoutTable;
};

namespace {

/// Prepares the working database: it is thrown away after any failure, so nothing is written twice.
SQLite::Database& Attached(SQLite::Database& database, const std::string& file) {
    SQLite::Statement attach(database, "ATTACH ? AS carga");
    attach.bind(1, file);
    attach.exec();
    database.exec("PRAGMA carga.journal_mode = OFF;"
                  "PRAGMA carga.synchronous = OFF;"
                  "CREATE TABLE carga.LINHA (TABELA, CODIGO, INICIO, FIM, IMPLANTACAO, TERMO);"
                  // ATUAL: 0 for rows that are not of this import.
                  "CREATE TABLE carga.LINHA_64 (TABELA, CODIGO, INICIO, FIM, IMPLANTACAO, CONSOLIDADO, GRUPO,"
                  " ATUAL);"
                  "CREATE TABLE carga.LINHA_64_SEM_TABELA (CODIGO, INICIO, FIM, IMPLANTACAO, CONSOLIDADO)");
    return database;
}

} // namespace

TLoadArea::TLoadArea(SQLite::Database& database, const std::string& file)
    : statements_(std::make_unique<TStatements>(Attached(database, file))) {}

TLoadArea::~TLoadArea() = default;

void TLoadArea::Add(const TPublishedRow& row, bool isHistory) {
    const bool is64 = row.Tabela == "64";
    SQLite::Statement& insert = !is64                       ? statements_->term
                                : row.TabelaDoTermo.empty() ? statements_->withoutTable
                                                            : statements_->table64;
    int column = 0;
    const auto bind = [&](const std::string& text) { insert.bindNoCopy(++column, text); };
    if (!is64) {
        bind(row.Tabela);
    } else if (!row.TabelaDoTermo.empty()) {
        bind(row.TabelaDoTermo);
    }
    bind(row.Codigo);
    bind(row.Period.Start);
    bind(row.Period.End);
    bind(row.Period.ImplementationEnd);
    if (!is64) {
        bind(row.Termo);
    } else {
        insert.bind(++column, row.EnvioConsolidado ? 1 : 0);
        if (!row.TabelaDoTermo.empty()) {
            bind(row.Grupo);
        }
    }
    insert.exec();
    insert.reset();
    ++rows_;
    if (!isHistory) {
        complete_.insert(is64 ? "64/" + row.TabelaDoTermo : row.Tabela);
    }
}

} // namespace conferix
