// What the rules of one run know of the terminology.
#pragma once

#include "data/tuss_connection.h"

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace conferix {

/// A rule that consults the terminology was made without one; the fault of who made it.
class EManagerNotDefined : public std::runtime_error {
  public:
    EManagerNotDefined() : std::runtime_error("Manager not defined.") {}
};

/// What the terminology says of one term.
struct TTussTermLookups {
    TDateLookup start;        ///< first day of use
    TDateLookup inactivation; ///< last day of use of a term taken out of use
};

/// The terminology for the rules of one run: remembers each answer, since a lot asks for the same few codes
/// thousands of times. Shared by the rules; for one thread. Raises what the connection raises
/// (ETerminologyNotRead, ETussTableWithoutEntity).
class TTussManager {
  public:
    /// Raises EManagerNotDefined without a connection.
    explicit TTussManager(std::shared_ptr<const ITussConnection> connection);

    /// The answers live as long as the manager.
    const TTussTermLookups& Term(std::string_view table, std::string_view code);
    /// The periods of a term in domain table 64, in ascending order of their start.
    const std::vector<TTuss64>& Table64(std::string_view table, std::string_view code);
    /// Whether a municipality has this code, with or without check digit.
    bool HasCity(std::string_view code);
    /// Whether any term of a TUSS table is known, without which its codes cannot be judged.
    bool IsInstalled(std::string_view table) const { return connection_->IsInstalled(table); }
    /// What domain table 64 lacks to judge the terms of a table: itself where it has no row at all, its terms
    /// of that table, or nothing (empty).
    std::string MissingTable64(std::string_view table) const;
    bool AreCitiesInstalled() const { return connection_->AreCitiesInstalled(); }

  private:
    template<class Answer>
    using TMemory = std::unordered_map<std::string, Answer>;

    /// Key of a table and a code; valid until the next call.
    const std::string& Key(std::string_view table, std::string_view code);

    std::shared_ptr<const ITussConnection> connection_;
    std::string key_;
    TMemory<TTussTermLookups> terms_;
    TMemory<std::vector<TTuss64>> periods_;
    TMemory<bool> cities_;
};

/// What is said of a table that is not installed, named as in "22" or by MissingTable64.
std::string NotInstalledText(std::string_view table);

} // namespace conferix
