// The program's own database.
#pragma once

#include "platform/platform.h"

#include <filesystem>
#include <memory>
#include <string>

namespace SQLite {
class Database;
}

namespace conferix {

/// The application database could not be opened, created or migrated.
class EDatabaseNotOpened : public EFile {
  public:
    EDatabaseNotOpened(const std::filesystem::path& file, const std::string& reason);
};

/// The application database "conferix.db". Its schema has a version (user_version of the file); table
/// TB_MIGRACAO tells when each version was reached. Members raise EDatabaseNotOpened.
class TDatabase {
  public:
    /// The schema version that this program works with.
    static int SchemaVersion();

    /// `file` where one is given, else "conferix.db" in the data folder, which is created when missing.
    explicit TDatabase(const std::filesystem::path& file = {});

    const std::filesystem::path& DatabaseFileName() const { return fileName_; }

    bool ExistsDatabase() const;

    /// Creates the file where it is missing, with the present schema.
    void Build() const;

    /// Brings the schema of an existing file up to date, one version after another; refuses a file that a
    /// newer program has migrated.
    void Update() const;

    /// Opens an existing file for reading and writing.
    std::unique_ptr<SQLite::Database> CreateConnection() const;

  private:
    std::filesystem::path fileName_;
};

} // namespace conferix
