#include "app/program_versions.h"

#include "app/terminology_state.h"
#include "data/database_tuss.h"
#include "model/tiss_kinds.h"
#include "platform/platform.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>

namespace conferix {

std::vector<std::pair<std::string, std::string>> ProgramVersions(const TSchemaFolder& schemas) {
    std::vector<std::pair<std::string, std::string>> versions;
    try {
        std::map<std::string_view, std::string> newest;
        std::size_t imported = 0;
        for (const std::string& file : schemas.FileNames()) {
            const auto name = ParseSchemaFileName(file);
            if (!name)
                continue;
            std::string& version = newest[name->Kind->Label];
            version = std::max(version, name->Versao);
            if (schemas.Origin(file) == TSchemaOrigin::Imported)
                ++imported;
        }
        for (const auto& [label, version] : newest)
            versions.emplace_back(fmt::format("Schema mais novo ({})", label), version);
        versions.emplace_back("Schemas importados", fmt::format("{}", imported));
    } catch (const EFile& error) {
        versions.emplace_back("Schemas", error.what());
    }
    try {
        versions.emplace_back("Terminologia", ReadTerminologyState().Summary());
    } catch (const std::exception& error) {
        versions.emplace_back("Terminologia", error.what());
    }
    return versions;
}

} // namespace conferix
