#include "app/cli/command_importar.h"

#include "app/cli/commands.h"
#include "app/cli/progress.h"
#include "app/terminology_state.h"
#include "data/database_tuss.h"
#include "data/import/tuss_importer.h"
#include "platform/format_settings.h"
#include "platform/platform.h"
#include "report/console.h"
#include "report/message_json.h"

#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <ostream>

namespace conferix {

namespace {

std::atomic<bool> interrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free); // a signal handler sets it

/// While it lives, a signal (Ctrl-C, the end of the session) stops the import and not the process, so that
/// everything is left in order.
class TInterruptGuard {
  public:
    explicit TInterruptGuard(int signal) : signal_(signal), previous_(std::signal(signal, &Interrupt)) {
        if (previous_ == SIG_IGN) // NOLINT(performance-no-int-to-ptr): the system's own constant
            std::signal(signal, SIG_IGN);
    }
    TInterruptGuard(const TInterruptGuard&) = delete;
    TInterruptGuard& operator=(const TInterruptGuard&) = delete;
    ~TInterruptGuard() { std::signal(signal_, previous_); }

  private:
    static void Interrupt(int /*signal*/) { interrupted = true; }

    int signal_;
    void (*previous_)(int);
};

TJson ReportJson(const TImportReport& report) {
    TJson tables = TJson::array();
    for (const auto& [table, changes] : report.Tables)
        tables.push_back({{"tabela", table},
                          {"novos", changes.Added},
                          {"alterados", changes.Changed},
                          {"encerrados", changes.Ended},
                          {"iguais", changes.Same},
                          {"retirados", changes.Removed}});
    TJson files = TJson::array();
    for (const TImportedFile& file : report.Files) {
        TJson rows = TJson::object();
        for (const auto& [table, content] : file.Tables)
            rows[table] = content.Rows;
        files.push_back({{"arquivo", PathText(file.File)},
                         {"sha256", file.Sha256},
                         {"linhas", std::move(rows)},
                         {"naoEntendidas", file.Rejected}});
    }
    TJson lines = TJson::array();
    for (const TRejectedRow& line : report.Rejected)
        lines.push_back({{"arquivo", line.File}, {"linha", line.Row}, {"motivo", line.Reason}});
    return {{"base", PathText(report.Database)}, {"tabelas", std::move(tables)},
            {"arquivos", std::move(files)},      {"naoEntendidas", std::move(lines)},
            {"ignorados", report.Ignored},       {"semDatas", report.WithoutDates},
            {"semTabela", report.WithoutTable}};
}

/// The lines that were not understood, the first of each file.
void WriteRejectedRows(std::ostream& out, const TImportReport& report, const TFormatSettings& formats) {
    constexpr std::int64_t kShown = 20;
    std::int64_t total = 0;
    for (const TImportedFile& file : report.Files)
        total += file.Rejected;
    if (total == 0)
        return;
    out << fmt::format("Linhas que não puderam ser entendidas: {}\n", formats.Count(total));
    std::int64_t shown = 0;
    auto line = report.Rejected.begin();
    for (const TImportedFile& file : report.Files) {
        const std::int64_t kept = std::min(file.Rejected, kRejectedRowsKept);
        const auto nextFile = line + kept;
        const auto end = line + std::min(kept, kShown);
        shown += end - line;
        for (; line != end; ++line)
            out << fmt::format("  {}, {}: {}\n", Visible(line->File), line->Place(), Visible(line->Reason));
        line = nextFile;
    }
    if (shown < total)
        out << fmt::format("  e mais {}\n", formats.Count(total - shown));
}

void WriteReport(const TCliContext& context, const TImportReport& report) {
    std::ostream& out = context.Streams.Out;
    const TFormatSettings formats = TFormatSettings::Regional();
    const bool hasRemoved = std::any_of(report.Tables.begin(), report.Tables.end(),
                                        [](const auto& table) { return table.second.Removed > 0; });
    out << "Base de terminologia: " << Visible(PathText(report.Database)) << '\n';
    out << fmt::format("  {:<10} {:>11} {:>11} {:>11} {:>11}{}\n", "tabela", "novos", "alterados",
                       "encerrados", "iguais", hasRemoved ? "   retirados" : "");
    for (const auto& [table, changes] : report.Tables)
        out << fmt::format("  {:<10} {:>11} {:>11} {:>11} {:>11}{}\n", table, formats.Count(changes.Added),
                           formats.Count(changes.Changed), formats.Count(changes.Ended),
                           formats.Count(changes.Same),
                           hasRemoved ? fmt::format(" {:>11}", formats.Count(changes.Removed)) : "");
    if (report.WithoutTable > 0)
        out << fmt::format("Códigos da tabela 64 que ainda não estão em nenhuma tabela de termos: {}. Serão "
                           "usados quando ela for importada.\n",
                           formats.Count(report.WithoutTable));
    for (const std::string& file : report.Ignored)
        out << fmt::format("Sem terminologia, não foi usado: {}\n", Visible(file));
    for (const std::string& file : report.WithoutDates)
        out << fmt::format(
            "Nenhuma coluna de datas foi reconhecida (\"Data de início de vigência\", \"Data de "
            "fim de vigência\"), os termos foram tomados como sempre vigentes: {}\n",
            Visible(file));
    WriteRejectedRows(out, report, formats);
}

TImportReport ImportWithProgress(const TCliContext& context, TImportOptions import) {
    interrupted = false;
    const TInterruptGuard key(SIGINT);
    const TInterruptGuard end(SIGTERM);
#if defined(SIGHUP)
    const TInterruptGuard hangUp(SIGHUP);
#endif
    constexpr std::size_t kSteps = 100;
    TProgressBar progress(context.Streams.Err, context.Streams.ErrIsTerminal, kSteps);
    import.Stop = &interrupted;
    import.OnProgress = [&](const std::string& what, double fraction) {
        progress.Set(what, static_cast<std::size_t>(fraction * kSteps));
};
return ImportTerminology(import);
} // namespace

} // namespace conferix

int RunTerminologiaImportar(const TCliContext& context, const TImportarOptions& options) {
    TImportOptions import;
    for (const std::string& source : options.Origens)
        import.Sources.push_back(PathFromText(source));
    import.Target = TDatabaseTuss::ImportTarget(PathFromText(context.Terminologia));
    import.Delivered = TDatabaseTuss::DeliveredFileName();
    import.Replace = options.Substituir;
    const TImportReport report = ImportWithProgress(context, std::move(import));
    if (context.Json())
        context.Streams.Out << JsonText(ReportJson(report)) << '\n';
    else
        WriteReport(context, report);
    return kExitValid;
}

int RunTerminologiaRestaurar(const TCliContext& context) {
    if (!context.Terminologia.empty())
        throw EUsage("restaurar desfaz as importações na pasta de dados; não use com --terminologia");
    const std::filesystem::path imported = TDatabaseTuss::ImportedFileName();
    const bool removed = RemoveImportedTerminology(imported);
    if (context.Json())
        context.Streams.Out << JsonText({{"restaurada", removed},
                                         {"base", PathText(TDatabaseTuss().DatabaseFileName())}})
                            << '\n';
    else
        context.Streams.Out << (removed ? "As importações foram desfeitas. Base de terminologia em uso: "
                                        : "Não há importações a desfazer. Base de terminologia em uso: ")
                            << Visible(PathText(TDatabaseTuss().DatabaseFileName())) << '\n';
    return kExitValid;
}

std::vector<std::string> OldImports(const std::vector<TTableImport>& imports) {
    std::vector<std::string> warnings;
    for (const TTableImport& import : imports)
        if (IsOldImport(import))
            warnings.push_back(
                fmt::format("A importação mais recente da tabela {} é de {}, há mais de seis meses. "
                            "Importe a publicação atual da ANS: conferix terminologia importar "
                            "ARQUIVO.",
                            import.Tabela, import.Time.substr(0, std::string_view("AAAA-MM-DD").size())));
    return warnings;
}

TJson ImportsJson(const std::vector<TTableImport>& imports) {
    TJson rows = TJson::array();
    for (const TTableImport& import : imports)
        rows.push_back(
            {{"tabela", import.Tabela},
             {"data", import.Time},
             {"arquivo", import.File},
             {"sha256", import.Sha256},
             {"linhas", import.Rows},
             {"inicioMaisRecente", import.NewestStart.empty() ? TJson(nullptr) : TJson(import.NewestStart)}});
    return rows;
}

void WriteImports(std::ostream& out, const std::vector<TTableImport>& imports) {
    if (imports.empty())
        return;
    out << "Importação mais recente de cada tabela:\n";
    const TFormatSettings formats = TFormatSettings::Regional();
    for (const TTableImport& import : imports)
        out << fmt::format("  {:<10} {}  {} {}{}  {}\n", import.Tabela, import.Time,
                           formats.Count(import.Rows), import.Rows == 1 ? "linha" : "linhas",
                           import.NewestStart.empty() ? "" : ", início mais recente " + import.NewestStart,
                           Visible(import.File));
}

} // namespace conferix
