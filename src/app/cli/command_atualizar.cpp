#include "app/cli/commands.h"
#include "app/notices.h"
#include "app/update_importers.h"
#include "app/updater.h"
#include "data/constantes.h"
#include "data/database_tuss.h"
#include "platform/platform.h"
#include "report/console.h"
#include "report/message_json.h"

#include <fmt/format.h>

#include <memory>
#include <ostream>

namespace conferix {

namespace {

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
        const TPackageImporters importers = UpdateImporters(
            context.SchemaFolder(), TDatabaseTuss::ImportTarget(PathFromText(context.Terminologia)));
        TJson report = TJson::array();
        std::string text;
        int status = kExitValid;
        std::vector<TPackage> packages = update.List(importers);
        for (TPackage& package : packages) {
            std::string_view state = package.Installed ? "instalado" : "disponivel";
            std::string failure;
            if (!verificar && !package.Installed) {
                try {
                    update.Install(package, importers, ProgressOn(context, package));
                    state = "instalado";
                    package.Installed = true;
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
        if (!packages.empty() || !update.Published().empty())
            Notify([&](TNoticeBox& box) { NoteUpdates(box, packages, update.Published()); });
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
