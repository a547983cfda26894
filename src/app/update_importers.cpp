#include "app/update_importers.h"

#include "app/schema_import.h"
#include "app/schema_package.h"
#include "data/database_tuss.h"
#include "data/import/tuss_importer.h"
#include "platform/platform.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <random>

namespace conferix {

namespace {

using TPath = std::filesystem::path;
using TNames = std::vector<std::string>;

[[noreturn]] void Refuse(const std::string& reasons) {
    throw EUpdate("o pacote contém schemas que não podem ser usados: " + reasons);
}

/// Imports schemas and answers the main ones; raises EUpdate unless all of them can be used.
TNames ImportUsable(const TPath& file, const TPath& folder) {
    TNames names;
    try {
        std::string reasons;
        for (const TMainSchema& schema : ImportSchemas(file, folder).Schemas) {
            names.push_back(schema.FileName);
            if (!schema.Failure.empty())
                reasons +=
                    fmt::format("{}{}: {}", reasons.empty() ? "" : "; ", schema.FileName, schema.Failure);
        }
        if (names.empty())
            reasons = "não há schemas do padrão TISS (tissV*.xsd, tissMonitoramentoV*.xsd) nele";
        if (!reasons.empty())
            Refuse(reasons);
    } catch (const EInvalidPackage& error) {
        Refuse(error.what());
    }
    return names;
}

TNames ImportTried(const TPath& file, const TPath& folder) {
    const TPath trial = file.parent_path() / fmt::format("prova-{:08x}", std::random_device{}());
    const std::shared_ptr<void> remove(nullptr, [&trial](void*) {
        std::error_code ignored;
        std::filesystem::remove_all(trial, ignored);
    });
    ImportUsable(file, trial);
    return ImportUsable(file, folder);
}

bool AreThere(const TPath& folder, const TNames& names) {
    return std::ranges::all_of(names, [&folder](const std::string& name) {
        std::error_code ignored;
        return std::filesystem::exists(folder / PathFromText(name), ignored);
    });
}

} // namespace

TPackageImporters UpdateImporters(const TPath& schemas, const TPath& terminology) {
    const auto importTerms = [terminology](const TPackage&, const TPath& file) {
        TImportOptions import;
        import.Sources = {file};
        import.Target = terminology;
        import.Delivered = TDatabaseTuss::DeliveredFileName();
        ImportTerminology(import);
        return TNames(); // the database itself lists what was imported
    };
    return {{"schemas",
             {[schemas](const TPackage&, const TPath& file) { return ImportTried(file, schemas); },
              [schemas](const TPackage&, const TNames& names) { return AreThere(schemas, names); }}},
            {"terminologia", {importTerms, [terminology](const TPackage& package, const TNames&) {
                                  return HasImport(terminology, package.Sha256);
                              }}}};
}

} // namespace conferix
