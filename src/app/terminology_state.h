// What is installed of the terminology, and how old it is.
#pragma once

#include "data/import/tuss_importer.h"
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
};

struct TTerminologyState {
    std::filesystem::path File;
    bool Damaged = false;                  ///< the tables are then not listed
    std::vector<TTerminologyTable> Tables; ///< by number
};

/// Whether rules use the table of an import, and it is older than six months.
bool IsOldImport(const TTableImport& import);

/// Reads the database in use whole. Raises ETerminologyNotOpened, ETerminologyNotRead.
TTerminologyState ReadTerminologyState();

} // namespace conferix
