// The schemas that are installed, and those that the regulator publishes.
#pragma once

#include "app/schema_folder.h"
#include "model/tiss_kinds.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace conferix {

/// The main schema of one version.
struct TMainSchema {
    const TTissKind* Kind = nullptr;
    std::string Versao;
    std::string FileName;
    TSchemaOrigin Origin = TSchemaOrigin::Missing;
    bool Approximate = false; ///< built in, for a version whose schemas were never published
    std::string Failure;      ///< why it does not compile; empty when it does

    /// Where it comes from, and whether it can be used.
    std::string StateText() const;
};

/// Every version that the program supports, and whatever else is installed, by kind and version; each that is
/// there is compiled. Raises EFileNotRead.
std::vector<TMainSchema> ListSchemas(const TSchemaFolder& folder);

/// Why schemas of the user's folder cannot be used, a sentence each; none where all can. Raises EFileNotRead.
std::vector<std::string> UnusableSchemas(const TSchemaFolder& folder);

/// What an import of schemas did.
struct TSchemaImport {
    std::size_t Files = 0;            ///< installed
    std::vector<TMainSchema> Schemas; ///< those that the source holds, with what is wrong with them

    bool Failed() const;
    /// What was installed and what was not, a line a schema that cannot be used.
    std::string Summary() const;
};

/// Installs the schemas of a folder, or of a ZIP file as the regulator publishes it, in `target`, which is
/// made when it is missing; those that do not compile are left out. Raises EInvalidPackage, EFile.
TSchemaImport ImportSchemas(const std::filesystem::path& source, const std::filesystem::path& target);

/// Goes back to the built-in schemas of a version; answers the main schemas that were removed, with where
/// they come from now. Raises EFile.
std::vector<TMainSchema> RemoveSchemas(const TSchemaFolder& folder, const std::string& versao);

} // namespace conferix
