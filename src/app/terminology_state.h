// What is installed of the terminology, and how old it is.
#pragma once

#include "data/import/tuss_importer.h"
#include "data/tuss_search.h"
#include "platform/iso_date.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace conferix {

/// A table of the terminology that rules use, or that was imported for the search.
struct TTerminologyTable {
    std::string Tabela; ///< its number; "municípios"
    std::string_view Description;
    bool Installed = false;
    std::int64_t Rows = 0;
    std::optional<TDate> NewestStart;   ///< latest start of validity
    std::optional<TTableImport> Import; ///< the newest; none for what came with the program
    bool Old = false;                   ///< rules use it, and the import is older than six months

    /// False for the municipalities, which have codes alone.
    bool IsOfTerms() const;
    /// Whether it is there, and how old it is.
    std::string_view StateText() const;
};

struct TTerminologyState {
    std::filesystem::path File;
    bool Damaged = false;                  ///< the tables are then not listed
    bool Imported = false;                 ///< false: the one that came with the program
    std::vector<TTerminologyTable> Tables; ///< by number

    /// What there is, in a sentence or two.
    std::string Summary() const;
};

/// How users know a table of the database: "Tabela 22, Procedimentos e eventos em saúde"; its own name where
/// they do not.
std::string TableTitle(std::string_view nameInDatabase);

/// Whether rules use the table of an import, and it is older than six months.
bool IsOldImport(const TTableImport& import);

/// What a user has to know of an import beside the changes, a line each: what was not understood or not
/// used. Empty where there is nothing.
std::string NotesOf(const TImportReport& report);

/// Terms that were found.
struct TFoundTerms {
    std::vector<TFoundTerm> Terms;
    std::string Note; ///< that there are none, or more than are answered; empty otherwise
};

/// Terms by words of their description, or by a whole code, in a table, or in all where that is empty: at
/// most `limit`. Raises ETerminologyNotOpened, ETerminologyNotRead.
TFoundTerms SearchTerminology(const std::string& text, const std::string& table, std::size_t limit);

/// Reads the database in use whole. Raises ETerminologyNotOpened, ETerminologyNotRead.
TTerminologyState ReadTerminologyState();

} // namespace conferix
