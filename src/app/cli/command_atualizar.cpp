#include "app/atualizacao.h"
#include "app/cli/commands.h"
#include "app/cli/message_json.h"
#include "data/constantes.h"
#include "data/database_tuss.h"
#include "data/importacao/tuss_importer.h"
#include "sistema/sistema.h"

#include <fmt/format.h>

#include <ostream>
#include <random>
#include <sstream>

namespace conferix {

namespace {

/// Runs the import of schemas without output of its own; raises with what it told as errors.
void RunImport(const TCliContext& context, const std::filesystem::path& file, const std::string& folder) {
    std::istringstream in;
    std::ostringstream out;
    std::ostringstream err;
    const TCliContext quiet{{in, out, err}, "json", folder, context.Terminologia, context.Config};
    if (RunEsquemasImportar(quiet, PathText(file)) != kExitValid)
        throw EAtualizacao("o pacote contém schemas que não podem ser usados. " + err.str());
}

/// Tries a package of schemas in a folder of its own before it goes to where schemas are used.
void ImportSchemas(const TCliContext& context, const std::filesystem::path& file) {
    const std::filesystem::path trial =
        file.parent_path() / fmt::format("prova-{:08x}", std::random_device{}());
    const std::shared_ptr<void> remove(nullptr, [&trial](void*) {
        std::error_code ignored;
        std::filesystem::remove_all(trial, ignored);
    });
    RunImport(context, file, PathText(trial));
    RunImport(context, file, context.Esquemas);
}

/// Merges a package of terminology into the one in use.
void ImportTerminologyPackage(const TCliContext& context, const std::filesystem::path& file) {
    TImportOptions import;
    import.sources = {file};
    import.target = TDatabaseTuss::ImportTarget(PathFromText(context.Terminologia));
    import.delivered = TDatabaseTuss::DeliveredFileName();
    ImportTerminology(import);
}

/// Who takes packages of which kind.
TImportadores Importers(const TCliContext& context) {
    return {{"schemas",
             [&context](const TPacote&, const std::filesystem::path& file) { ImportSchemas(context, file); }},
            {"terminologia", [&context](const TPacote&, const std::filesystem::path& file) {
                 ImportTerminologyPackage(context, file);
             }}};
}

TDownloadProgress ProgressOn(const TCliContext& context, const TPacote& package) {
    return [&context, &package, shown = -1](std::uint64_t received, std::uint64_t total) mutable {
        const int percent = static_cast<int>(received * 100 / total);
        if (context.Streams.ErrIsTerminal && percent != shown)
            context.Streams.Err << fmt::format("\r{} {}: {} %{}", package.Nome, package.Versao, percent,
                                               percent == 100 ? "\n" : "")
                                << std::flush;
        shown = percent;
        return true;
    };
}

TJson PackageJson(const TPacote& package, std::string_view state, const std::string& failure) {
    return {{"nome", package.Nome},       {"tipo", package.Tipo}, {"versao", package.Versao},
            {"tamanho", package.Tamanho}, {"estado", state},      {"erro", failure}};
}

} // namespace

int RunAtualizar(const TCliContext& context, bool verificar) {
    try {
        TAtualizacao update(TAtualizacaoSettings().Endereco, TProxySettings(),
                            TConstantes::ValidadorDirectory());
        const TImportadores importers = Importers(context);
        TJson report = TJson::array();
        std::string text;
        int status = kExitValid;
        for (const TPacote& package : update.Listar()) {
            std::string_view state = package.Instalado ? "instalado" : "disponivel";
            std::string failure;
            if (!verificar && !package.Instalado) {
                try {
                    update.Instalar(package, importers, ProgressOn(context, package));
                    state = "instalado";
                } catch (const std::exception& error) { // one package does not keep the others from it
                    failure = error.what();
                    context.Error(failure);
                    status = kExitUnreadable;
                    state = "falhou";
                }
            }
            report.push_back(PackageJson(package, state, failure));
            text += fmt::format("{} {} ({}, {} bytes): {}\n", package.Nome, package.Versao, package.Tipo,
                                package.Tamanho, state == "disponivel" ? "disponível" : state);
        }
        if (context.Json())
            context.Streams.Out << JsonText(report) << '\n';
        else
            context.Streams.Out << (text.empty() ? "Não há pacotes.\n" : text);
        return status;
    } catch (const EHttp& error) {
        context.Error(error.what());
    } catch (const EAtualizacao& error) {
        context.Error(error.what());
    }
    return kExitUnreadable;
}

} // namespace conferix
