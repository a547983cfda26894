// Brings what an import read into the terminology database.
#pragma once

#include "data/import/load_area.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <string>

namespace SQLite {
class Database;
}

namespace conferix {

/// What an import did to the terms of a table; of table 64, to the pairs of table and code.
struct TTableChanges {
    std::int64_t Added = 0;
    std::int64_t Changed = 0;
    std::int64_t Ended = 0; ///< no longer in force, and were so, or were not known, before
    std::int64_t Same = 0;
    std::int64_t Removed = 0; ///< only when the import replaces

    bool operator==(const TTableChanges&) const = default;
};

/// By number of table, "municípios" for the municipalities.
using TChanges = std::map<std::string, TTableChanges, std::less<>>;

/// Creates, where they are missing, the tables that only imports need: TB_TUSS_PERIODO (the periods of a
/// term but the one in its table), TB_TUSS_64_SEM_TABELA (rows of table 64 whose publication does not tell
/// the table of the code), TB_TUSS_TERMO and TB_TUSS_BUSCA (what the codes stand for, and its word index),
/// TB_CARGA (what was imported when). Raises SQLite::Exception.
void CreateImportTables(SQLite::Database& database);

/// Adds the codes of the delivered database that this one lacks: tables 63 and 87, municipalities. Raises
/// SQLite::Exception.
void MergeDelivered(SQLite::Database& database, const std::filesystem::path& delivered);

/// Merges all loaded rows. The result depends on the rows alone, not on their order. `replace`: what the
/// database knew of the tables of which all terms were told is forgotten. `onProgress` gets 0 to 1 and may
/// raise. Raises SQLite::Exception.
TChanges MergeLoaded(SQLite::Database& database, const TLoadArea& loaded, bool replace,
                     const std::function<void(double)>& onProgress);

/// Rows of table 64 whose code is in no table yet. Raises SQLite::Exception.
std::int64_t CountWithoutTable(SQLite::Database& database);

} // namespace conferix
