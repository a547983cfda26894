// Finding terms when the code is not known, or not right.
#pragma once

#include "data/tuss.h"

#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace SQLite {
class Database;
}

namespace conferix {

/// A term with what it stands for and its validity.
struct TFoundTerm {
    std::string Tabela;
    std::string Codigo;
    std::string Termo; ///< empty where no publication told it
    std::optional<TDate> InicioVigencia;
    std::optional<TDate> FimVigencia; ///< last day of use, where no later period follows
};

/// Searches a terminology database, read-only. Members raise ETerminologyNotRead.
class TTussSearch {
  public:
    /// Raises ETerminologyNotOpened.
    explicit TTussSearch(const std::filesystem::path& file);
    TTussSearch(const TTussSearch&) = delete;
    TTussSearch& operator=(const TTussSearch&) = delete;
    ~TTussSearch();

    /// Whether the descriptions of the terms were imported, without which nothing is found by words.
    bool HasDescriptions() const;

    /// Terms whose description has all words of a text, or words that begin so, whatever their accents and
    /// case: shorter descriptions first. `table`: a TUSS table, or empty for all. Those that `accepts`
    /// refuses are left out; at most `limit` are returned.
    std::vector<TFoundTerm> Search(std::string_view text, const std::string& table,
                                   const std::function<bool(const TFoundTerm&)>& accepts,
                                   std::size_t limit) const;

    /// Codes of a table that differ from a code by one digit, more, less or another, or by two exchanged;
    /// then the same code in other tables. Terms in force come first; at most five.
    std::vector<TFoundTerm> Similar(const std::string& table, const std::string& code) const;

    /// What a code of a table stands for; empty where no publication told it.
    std::string Description(std::string_view table, std::string_view code) const;

  private:
    std::optional<TFoundTerm> Find(const std::string& table, const std::string& code) const;

    std::filesystem::path file_;
    std::unique_ptr<SQLite::Database> database_;
    bool hasDescriptions_ = false;
};

} // namespace conferix
