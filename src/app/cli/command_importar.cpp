#include "app/cli/command_importar.h"

#include "app/cli/commands.h"
#include "app/cli/message_json.h"
#include "app/cli/progress.h"
#include "data/database_tuss.h"
#include "data/import/tuss_importer.h"
#include "platform/format_settings.h"
#include "platform/platform.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <ctime>
#include <ostream>

namespace conferix {

namespace {

std::atomic<bool> interrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free); // a signal handler sets it

/// While it lives, Ctrl-C stops the import and not the process, so that everything is left in order.
class TInterruptGuard {
  public:
    TInterruptGuard() {
        interrupted = false;
        previous_ = std::signal(SIGINT, &Interrupt);
    }
    TInterruptGuard(const TInterruptGuard&) = delete;
    TInterruptGuard& operator=(const TInterruptGuard&) = delete;
    ~TInterruptGuard() { std::signal(SIGINT, previous_); }

  private:
    static void Interrupt(int /*signal*/) { interrupted = true; }

    void (*previous_)(int);
};

TJson ReportJson(const TImportReport& report) {
    TJson tables = TJson::array();
    for (const auto& [table, changes] : report.tabelas)
        tables.push_back({{"tabela", table},
                          {"novos", changes.novos},
                          {"alterados", changes.alterados},
                          {"encerrados", changes.encerrados},
                          {"iguais", changes.iguais},
                          {"retirados", changes.retirados}});
    TJson files = TJson::array();
    for (const TImportedFile& file : report.arquivos) {
        TJson rows = TJson::object();
        for (const auto& [table, content] : file.tabelas)
            rows[table] = content.linhas;
        files.push_back({{"arquivo", PathText(file.arquivo)},
                         {"sha256", file.sha256},
                         {"linhas", std::move(rows)},
                         {"naoEntendidas", file.naoEntendidas}});
    }
    TJson lines = TJson::array();
    for (const TLinhaNaoEntendida& line : report.naoEntendidas)
        lines.push_back({{"arquivo", line.arquivo}, {"linha", line.linha}, {"motivo", line.motivo}});
    return {{"base", PathText(report.database)}, {"tabelas", std::move(tables)},
            {"arquivos", std::move(files)},      {"naoEntendidas", std::move(lines)},
            {"ignorados", report.ignorados},     {"semDatas", report.semDatas},
            {"semTabela", report.semTabela}};
}

/// The lines that were not understood, the first of each file.
void WriteNotUnderstood(std::ostream& out, const TImportReport& report, const TFormatSettings& formats) {
    constexpr std::int64_t kShown = 20;
    std::int64_t total = 0;
    for (const TImportedFile& file : report.arquivos)
        total += file.naoEntendidas;
    if (total == 0)
        return;
    out << fmt::format("Linhas que não puderam ser entendidas: {}\n", formats.Count(total));
    std::int64_t shown = 0;
    auto line = report.naoEntendidas.begin();
    for (const TImportedFile& file : report.arquivos) {
        const std::int64_t kept = std::min(file.naoEntendidas, kNotUnderstoodKept);
        const auto nextFile = line + kept;
        const auto end = line + std::min(kept, kShown);
        shown += end - line;
        for (; line != end; ++line)
            out << fmt::format("  {}, {}: {}\n", line->arquivo, line->Lugar(), line->motivo);
        line = nextFile;
    }
    if (shown < total)
        out << fmt::format("  e mais {}\n", formats.Count(total - shown));
}

void WriteReport(const TCliContext& context, const TImportReport& report) {
    std::ostream& out = context.Streams.Out;
    const TFormatSettings formats = TFormatSettings::Regional();
    const bool hasRemoved = std::any_of(report.tabelas.begin(), report.tabelas.end(),
                                        [](const auto& table) { return table.second.retirados > 0; });
    out << "Base de terminologia: " << PathText(report.database) << '\n';
    out << fmt::format("  {:<10} {:>11} {:>11} {:>11} {:>11}{}\n", "tabela", "novos", "alterados",
                       "encerrados", "iguais", hasRemoved ? "   retirados" : "");
    for (const auto& [table, changes] : report.tabelas)
        out << fmt::format("  {:<10} {:>11} {:>11} {:>11} {:>11}{}\n", table, formats.Count(changes.novos),
                           formats.Count(changes.alterados), formats.Count(changes.encerrados),
                           formats.Count(changes.iguais),
                           hasRemoved ? fmt::format(" {:>11}", formats.Count(changes.retirados)) : "");
    if (report.semTabela > 0)
        out << fmt::format("Códigos da tabela 64 que ainda não estão em nenhuma tabela de termos: {}. Serão "
                           "usados quando ela for importada.\n",
                           formats.Count(report.semTabela));
    for (const std::string& file : report.ignorados)
        out << fmt::format("Sem terminologia, não foi usado: {}\n", file);
    for (const std::string& file : report.semDatas)
        out << fmt::format(
            "Nenhuma coluna de datas foi reconhecida (\"Data de início de vigência\", \"Data de "
            "fim de vigência\"), os termos foram tomados como sempre vigentes: {}\n",
            file);
    WriteNotUnderstood(out, report, formats);
}

TImportReport ImportWithProgress(const TCliContext& context, TImportOptions import) {
    const TInterruptGuard guard;
    constexpr std::size_t kSteps = 100;
    TProgressBar progress(context.Streams.Err, context.Streams.ErrIsTerminal, kSteps);
    import.stop = &interrupted;
    import.onProgress = [&](const std::string& what, double fraction) {
        progress.Set(what, static_cast<std::size_t>(fraction * kSteps));
};
return ImportTerminology(import);
} // namespace

/// Whether rules look codes up in a table; the others serve the search only.
bool IsJudged(std::string_view table) {
    constexpr std::string_view kJudged[] = {"18", "19", "20", "22", "63", "64", "87"};
    return std::find(std::begin(kJudged), std::end(kJudged), table) != std::end(kJudged);
}

} // namespace conferix

int RunTerminologiaImportar(const TCliContext& context, const TImportarOptions& options) {
    TImportOptions import;
    for (const std::string& source : options.Origens)
        import.sources.push_back(PathFromText(source));
    import.target = TDatabaseTuss::ImportTarget(PathFromText(context.Terminologia));
    import.delivered = TDatabaseTuss::DeliveredFileName();
    import.replace = options.Substituir;
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
                            << PathText(TDatabaseTuss().DatabaseFileName()) << '\n';
    return kExitValid;
}

std::vector<std::string> OldImports(const std::vector<TCarga>& imports) {
    constexpr std::time_t kSixMonths = std::time_t(183) * 24 * 60 * 60;
    const std::time_t then = std::time(nullptr) - kSixMonths;
    const std::string limit = fmt::format("{:%Y-%m-%d}", *std::localtime(&then));
    std::vector<std::string> warnings;
    for (const TCarga& import : imports)
        if (IsJudged(import.tabela) && import.data.substr(0, limit.size()) < limit)
            warnings.push_back(
                fmt::format("A importação mais recente da tabela {} é de {}, há mais de seis meses. "
                            "Importe a publicação atual da ANS: conferix terminologia importar "
                            "ARQUIVO.",
                            import.tabela, import.data.substr(0, limit.size())));
    return warnings;
}

TJson ImportsJson(const std::vector<TCarga>& imports) {
    TJson rows = TJson::array();
    for (const TCarga& import : imports)
        rows.push_back(
            {{"tabela", import.tabela},
             {"data", import.data},
             {"arquivo", import.arquivo},
             {"sha256", import.sha256},
             {"linhas", import.linhas},
             {"inicioMaisRecente",
              import.inicioMaisRecente.empty() ? TJson(nullptr) : TJson(import.inicioMaisRecente)}});
    return rows;
}

void WriteImports(std::ostream& out, const std::vector<TCarga>& imports) {
    if (imports.empty())
        return;
    out << "Importação mais recente de cada tabela:\n";
    const TFormatSettings formats = TFormatSettings::Regional();
    for (const TCarga& import : imports)
        out << fmt::format(
            "  {:<10} {}  {} {}{}  {}\n", import.tabela, import.data, formats.Count(import.linhas),
            import.linhas == 1 ? "linha" : "linhas",
            import.inicioMaisRecente.empty() ? "" : ", início mais recente " + import.inicioMaisRecente,
            import.arquivo);
}

} // namespace conferix
