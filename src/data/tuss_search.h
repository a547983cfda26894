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
struct TTermoEncontrado {
    std::string tabela;
    std::string codigo;
    std::string termo; ///< empty where no publication told it
    std::optional<TDate> inicioVigencia;
    std::optional<TDate> fimVigencia; ///< last day of use, where no later period follows
};

/// Searches a terminology database, read-only. Members raise ETerminologiaNaoConsultada.
class TTussBusca {
  public:
    /// Raises ETerminologiaNaoAberta.
    explicit TTussBusca(const std::filesystem::path& file);
    TTussBusca(const TTussBusca&) = delete;
    TTussBusca& operator=(const TTussBusca&) = delete;
    ~TTussBusca();

    /// Whether the descriptions of the terms were imported, without which nothing is found by words.
    bool HasDescriptions() const;

    /// Terms whose description has all words of a text, or words that begin so, whatever their accents and
    /// case: shorter descriptions first. `table`: a TUSS table, or empty for all. Those that `accepts`
    /// refuses are left out; at most `limit` are returned.
    std::vector<TTermoEncontrado> Search(std::string_view text, const std::string& table,
                                         const std::function<bool(const TTermoEncontrado&)>& accepts,
                                         std::size_t limit) const;

    /// Codes of a table that differ from a code by one digit, more, less or another, or by two exchanged;
    /// then the same code in other tables. Terms in force come first; at most five.
    std::vector<TTermoEncontrado> Similar(const std::string& table, const std::string& code) const;

  private:
    std::optional<TTermoEncontrado> Find(const std::string& table, const std::string& code) const;

    std::filesystem::path file_;
    std::unique_ptr<SQLite::Database> database_;
    bool hasDescriptions_ = false;
};

} // namespace conferix
