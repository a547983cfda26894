#include "app/cli/commands.h"
#include "app/updater.h"
#include "data/constantes.h"
#include "data/database_tuss.h"
#include "data/import/tuss_importer.h"
#include "platform/platform.h"
#include "report/console.h"
#include "report/message_json.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <ostream>
#include <random>
#include <sstream>

namespace conferix {

namespace {

/// What a quiet command told as errors, in one line without the program's name.
std::string ToldErrors(const std::string& text) {
    constexpr std::string_view kStart = "conferix: erro: ";
    std::string reasons;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        reasons +=
            (reasons.empty() ? "" : "; ") + (line.starts_with(kStart) ? line.substr(kStart.size()) : line);
    return reasons;
}

/// Runs the import of schemas without output of its own and answers the main schemas; raises with what it
/// told as errors.
std::vector<std::string> RunImport(const TCliContext& context, const std::filesystem::path& file,
                                   const std::string& folder) {
    std::istringstream in;
    std::ostringstream out;
    std::ostringstream err;
    const TCliContext quiet{{in, out, err}, "json", folder, context.Terminologia, context.Config};
    const int status = RunEsquemasImportar(quiet, PathText(file));
    std::string reasons = ToldErrors(err.str());
    std::vector<std::string> names;
    if (!out.str().empty())
        for (const TJson& schema : TJson::parse(out.str())) {
            names.push_back(schema.at("arquivo"));
            if (const std::string failure = schema.at("erro"); !failure.empty())
                reasons += fmt::format("{}{}: {}", reasons.empty() ? "" : "; ", names.back(), failure);
        }
    if (status != kExitValid)
        throw EUpdate("o pacote contém schemas que não podem ser usados: " + reasons);
    return names;
}

/// Tries a package of schemas in a folder of its own before it goes to where schemas are used.
std::vector<std::string> ImportSchemas(const TCliContext& context, const std::filesystem::path& file) {
    const std::filesystem::path trial =
        file.parent_path() / fmt::format("prova-{:08x}", std::random_device{}());
    const std::shared_ptr<void> remove(nullptr, [&trial](void*) {
        std::error_code ignored;
        std::filesystem::remove_all(trial, ignored);
    });
    RunImport(context, file, PathText(trial));
    return RunImport(context, file, context.Esquemas);
}

bool HasSchemas(const TCliContext& context, const std::vector<std::string>& names) {
    const std::filesystem::path folder = context.SchemaFolder();
    return std::all_of(names.begin(), names.end(), [&folder](const std::string& name) {
        std::error_code ignored;
        return std::filesystem::exists(folder / PathFromText(name), ignored);
    });
}

/// Merges a package of terminology into the one in use.
void ImportTerminologyPackage(const TCliContext& context, const std::filesystem::path& file) {
    TImportOptions import;
    import.Sources = {file};
    import.Target = TDatabaseTuss::ImportTarget(PathFromText(context.Terminologia));
    import.Delivered = TDatabaseTuss::DeliveredFileName();
    ImportTerminology(import);
}

/// Who takes packages of which kind.
TPackageImporters Importers(const TCliContext& context) {
    using TPath = std::filesystem::path;
    using TNames = std::vector<std::string>;
    return {{"schemas",
             {[&context](const TPackage&, const TPath& file) { return ImportSchemas(context, file); },
              [&context](const TPackage&, const TNames& names) { return HasSchemas(context, names); }}},
            {"terminologia",
             {[&context](const TPackage&, const TPath& file) {
                  ImportTerminologyPackage(context, file);
                  return TNames(); // the database itself lists what was imported
              },
              [&context](const TPackage& package, const TNames&) {
                  return HasImport(TDatabaseTuss::ImportTarget(PathFromText(context.Terminologia)),
                                   package.Sha256);
              }}}};
}

TDownloadProgress ProgressOn(const TCliContext& context, const TPackage& package) {
    return [&context, &package, shown = -1](std::uint64_t received, std::uint64_t total) mutable {
        const int percent = static_cast<int>(received * 100 / total);
        if (context.Streams.ErrIsTerminal && percent != shown)
            context.Streams.Err << fmt::format("\r{} {}: {} %{}", Visible(package.Name),
                                               Visible(package.Version), percent, percent == 100 ? "\n" : "")
                                << std::flush;
        shown = percent;
        return true;
    };
}

TJson PackageJson(const TPackage& package, std::string_view state, const std::string& failure) {
    return {{"nome", package.Name},    {"tipo", package.Kind}, {"versao", package.Version},
            {"tamanho", package.Size}, {"estado", state},      {"erro", failure}};
}

} // namespace

int RunAtualizar(const TCliContext& context, bool verificar) {
    try {
        TUpdater update(TUpdateSettings().Address, TProxySettings(), TConstantes::ValidadorDirectory());
        const std::unique_ptr<TFileLock> lock = verificar ? nullptr : update.Lock();
        const TPackageImporters importers = Importers(context);
        TJson report = TJson::array();
        std::string text;
        int status = kExitValid;
        for (const TPackage& package : update.List(importers)) {
            std::string_view state = package.Installed ? "instalado" : "disponivel";
            std::string failure;
            if (!verificar && !package.Installed) {
                try {
                    update.Install(package, importers, ProgressOn(context, package));
                    state = "instalado";
                } catch (const std::exception& error) { // one package does not keep the others from it
                    failure = error.what();
                    context.Error(failure);
                    status = kExitUnreadable;
                    state = "falhou";
                }
            }
            report.push_back(PackageJson(package, state, failure));
            text += fmt::format("{} {} ({}, {} bytes): {}\n", Visible(package.Name), Visible(package.Version),
                                Visible(package.Kind), package.Size,
                                state == "disponivel" ? "disponível" : state);
        }
        if (context.Json())
            context.Streams.Out << JsonText(report) << '\n';
        else
            context.Streams.Out << (text.empty() ? "Não há pacotes.\n" : text);
        return status;
    } catch (const EHttp& error) {
        context.Error(error.what());
    } catch (const EUpdate& error) {
        context.Error(error.what());
    }
    return kExitUnreadable;
}

} // namespace conferix
