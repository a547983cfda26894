// What the rules of one run share.
#pragma once

#include "rules/tuss_manager.h"

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>

namespace conferix {

class TValidation;
struct TGuiaFields;

/// What all rules of one run know: made once, before the rules, and handed to each of them.
struct TRunContext {
    std::string VersaoTiss;                     ///< of the file, as "3.04.00"; empty where nothing is visited
    std::filesystem::path SchemaFile;           ///< full path of the main XSD file
    std::shared_ptr<TTussManager> Terminologia; ///< null where no code is judged
    /// What each rule has told of tables that are not installed; no name: the municipalities.
    std::set<std::pair<const TValidation*, std::string>> Notices;

    // Set by the rules about a monitoring lot while it is visited.
    std::chrono::local_seconds Referencia;  ///< what the dates of a guide have to be before
    std::optional<std::string> Competencia; ///< month that the lot speaks of, as "202301"
    const TGuiaFields* Guia = nullptr;      ///< the guide whose rules run
};

using TRunContextPtr = std::shared_ptr<TRunContext>;

/// The context of a run over a file. `tuss`: terminology; null where no code is judged.
inline TRunContextPtr NewRunContext(std::string versaoTiss, std::filesystem::path schemaFile,
                                    const std::shared_ptr<const ITussConnection>& tuss) {
    auto run = std::make_shared<TRunContext>();
    run->VersaoTiss = std::move(versaoTiss);
    run->SchemaFile = std::move(schemaFile);
    if (tuss != nullptr)
        run->Terminologia = std::make_shared<TTussManager>(tuss);
    return run;
}

} // namespace conferix
