// Writing of terminology databases.
#pragma once

#include "data/tuss.h"

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace SQLite {
class Database;
}

namespace conferix {

/// Adds rows to a terminology database, all or none: what is not committed is gone at the end of the
/// writer's life. Members raise ETerminologyNotWritten; a row whose key exists is refused (CODIGO,
/// with TABELA where the table has it; in table 64 also the start of validity).
class TTussWriter {
  public:
    /// Opens the file, creates it and its tables where they are missing, and begins a transaction.
    explicit TTussWriter(const std::filesystem::path& file);
    /// Writes to an open database; `file` names it in error texts.
    TTussWriter(SQLite::Database& database, const std::filesystem::path& file);
    TTussWriter(const TTussWriter&) = delete;
    TTussWriter& operator=(const TTussWriter&) = delete;
    ~TTussWriter();

    /// Adds a term to a TUSS table given by its number. Raises also ETussTableWithoutEntity.
    void Insert(std::string_view table, const TTussTerm& term);
    template<int kTable>
    void Insert(const TTussTermOf<kTable>& term) {
        Insert(std::to_string(kTable), term);
    }
    void Insert(const TTuss64& row);
    void Insert(const TTussInativado& row);
    void Insert(const TCidade& row);

    /// Ends the transaction; nothing can be added afterwards.
    void Commit();

  private:
    struct TImpl;

    static std::unique_ptr<TImpl> Begin(SQLite::Database& database, const std::filesystem::path& file);

    std::unique_ptr<SQLite::Database> owned_;
    std::unique_ptr<TImpl> impl_;
};

} // namespace conferix
