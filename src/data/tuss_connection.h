// Look-ups in the terminology database.
#pragma once

#include "data/tuss.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace conferix {

class TTussWriter;

/// Answer of a look-up of one row's date: the row may be missing, and so may its date.
struct TDateLookup {
    bool Found = false;
    std::optional<TDate> Date;
};

/// What a table of the database holds.
struct TTussTableStatistics {
    std::string Name;
    std::int64_t Rows = 0;
    std::optional<TDate> NewestStart; ///< latest start of validity; none where the table has no such dates
    bool Installed = false;           ///< has Rows; a table of terms also where all of them were inactivated
};

/// An open terminology database; never written to. It sees the file as it was at opening, and an import
/// waits for its end, so its life is one validation, or those of one run over many files. For one thread at a
/// time. Codes and table numbers are compared as text. The look-ups raise ETerminologyNotRead when the file
/// fails them, also for a date that does not have the form YYYY-MM-DD, and where a row is missing of a
/// damaged table.
class TTussConnection {
  public:
    /// Opens a database file and checks its tables. Raises ETerminologyNotOpened.
    explicit TTussConnection(const std::filesystem::path& file);
    TTussConnection(const TTussConnection&) = delete;
    TTussConnection& operator=(const TTussConnection&) = delete;
    ~TTussConnection();

    /// A database in memory that holds the rows written by `fill`, or none.
    static std::shared_ptr<TTussConnection> InMemory(const std::function<void(TTussWriter&)>& fill = {});

    const std::filesystem::path& FileName() const;

    /// First day of use of a term. Raises also ETussTableWithoutEntity.
    TDateLookup StartOfValidity(std::string_view table, std::string_view code) const;

    /// Last day of use of a term that was inactivated; any table number may be asked for.
    TDateLookup Inactivation(std::string_view table, std::string_view code) const;

    /// The periods of a term in domain table 64, in ascending order of their start, an unknown start first.
    std::vector<TTuss64> Table64(std::string_view table, std::string_view code) const;

    /// Whether a municipality has this code, with or without check digit.
    bool HasCity(std::string_view code) const;

    /// Whether any term of a TUSS table is known, be it an inactivated one; asked of the file once a table.
    /// Raises also ETussTableWithoutEntity.
    bool IsInstalled(std::string_view table) const;

    /// Whether domain table 64 has any row; and whether it has any for the terms of a TUSS table, since each
    /// table's part of it comes in a file of its own. Raises also ETussTableWithoutEntity.
    bool IsTable64Installed() const;
    bool IsTable64InstalledFor(std::string_view table) const;

    /// Whether the table of municipalities has any row; asked of the file once.
    bool AreCitiesInstalled() const;

    /// Content of the nine tables, in their order. Reads the tables whole.
    std::vector<TTussTableStatistics> Statistics() const;

    /// What SQLite's quick check of the whole file finds, in SQLite's words; none for a sound one.
    std::vector<std::string> FindDamage() const;

  private:
    struct TImpl;

    explicit TTussConnection(std::unique_ptr<TImpl> impl);

    std::unique_ptr<TImpl> impl_;
};

/// There is one kind of connection; callers depend on this name.
using ITussConnection = TTussConnection;

} // namespace conferix
