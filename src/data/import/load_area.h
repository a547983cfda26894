// Where the rows of an import wait until all are read.
#pragma once

#include "data/import/recognizer.h"

#include <cstdint>
#include <memory>
#include <set>
#include <string>

namespace SQLite {
class Database;
}

namespace conferix {

/// Tables of a work database of its own, attached as "carga" to the database that is being built:
/// LINHA (terms of all tables, and municipalities), LINHA_64 and LINHA_64_SEM_TABELA (rows of table 64
/// with and without the table of their code). Members raise SQLite::Exception.
class TLoadArea {
  public:
    /// Attaches a new file, which must not exist.
    TLoadArea(SQLite::Database& database, const std::string& file);
    TLoadArea(const TLoadArea&) = delete;
    TLoadArea& operator=(const TLoadArea&) = delete;
    ~TLoadArea();

    void Add(const TPublishedRow& row, bool isHistory);
    std::uint64_t Rows() const { return rows_; }
    /// Tables of which at least one file told all terms; of table 64 as "64/" and the table of the terms.
    const std::set<std::string, std::less<>>& CompleteTables() const { return complete_; }

  private:
    struct TStatements;

    std::unique_ptr<TStatements> statements_;
    std::uint64_t rows_ = 0;
    std::set<std::string, std::less<>> complete_;
};

} // namespace conferix
