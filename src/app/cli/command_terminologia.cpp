#include "app/cli/command_importar.h"
#include "app/cli/command_procurar.h"
#include "app/cli/commands.h"
#include "app/terminology_state.h"
#include "data/database_tuss.h"
#include "platform/format_settings.h"
#include "platform/platform.h"
#include "report/console.h"
#include "report/message_json.h"
#include "rules/tuss_validation.h"

#include <fmt/format.h>

#include <ostream>

namespace conferix {

namespace {

std::string DateText(const TDate& date) {
    return fmt::format("{:04}-{:02}-{:02}", static_cast<int>(date.year()),
                       static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
}

/// Nothing that a damaged database says of itself is worth showing.
int ShowDamage(const TCliContext& context, const ITussConnection& connection,
               const std::vector<std::string>& damage) {
    const std::string file = PathText(connection.FileName());
    if (context.Json())
        context.Streams.Out << JsonText({{"arquivo", file},
                                         {"integra", false},
                                         {"danos", damage},
                                         {"tabelas", TJson::array()},
                                         {"cargas", TJson::array()}})
                            << '\n';
    context.Error(
        fmt::format("A base de terminologia \"{}\" está danificada. Importe as publicações da ANS em uma "
                    "base nova, ou volte à que veio com o programa: conferix terminologia restaurar.",
                    file));
    return kExitUnreadable;
}

} // namespace

int RunTerminologiaEstado(const TCliContext& context) {
    const auto connection = context.TerminologyFactory().CreateConnection();
    if (const std::vector<std::string> damage = connection->FindDamage(); !damage.empty())
        return ShowDamage(context, *connection, damage);
    const std::vector<TTussTableStatistics> tables = connection->Statistics();
    const std::vector<TTableImport> imports = NewestImports(connection->FileName());
    for (const std::string& warning : OldImports(imports))
        context.Warning(warning);
    std::ostream& out = context.Streams.Out;
    if (context.Json()) {
        TJson rows = TJson::array();
        for (const TTussTableStatistics& table : tables)
            rows.push_back({{"tabela", table.Name},
                            {"registros", table.Rows},
                            {"instalada", table.Installed},
                            {"inicioMaisRecente",
                             table.NewestStart ? TJson(DateText(*table.NewestStart)) : TJson(nullptr)}});
        out << JsonText({{"arquivo", PathText(connection->FileName())},
                         {"integra", true},
                         {"danos", TJson::array()},
                         {"tabelas", std::move(rows)},
                         {"cargas", ImportsJson(imports)}})
            << '\n';
        return kExitValid;
    }
    out << "Base de terminologia: " << Visible(PathText(connection->FileName())) << '\n';
    out << "Verificação do arquivo: nenhum dano encontrado\n";
    const TFormatSettings formats = TFormatSettings::Regional();
    for (const TTussTableStatistics& table : tables) {
        std::string state = "não instalada";
        if (table.Installed)
            state = fmt::format(
                "{} registros{}", formats.Count(table.Rows),
                table.NewestStart ? ", início de vigência mais recente " + DateText(*table.NewestStart) : "");
        out << fmt::format("  {:<56} {}\n", TableTitle(table.Name), state);
    }
    WriteImports(out, imports);
    return kExitValid;
}

int RunTerminologiaConsultar(const TCliContext& context, const TConsultarOptions& options) {
    const std::optional<TDate> date = ParseIsoDate(options.Data);
    if (!date)
        throw EUsage(fmt::format("\"{}\" não é uma data na forma AAAA-MM-DD", options.Data));
    TTussManager manager(context.TerminologyFactory().CreateConnection());
    const std::unique_ptr<TTussValidation> term =
        options.Consolidado
            ? std::make_unique<TTuss64Validation>(manager, *date, options.Tabela, options.Codigo)
            : std::make_unique<TTussValidation>(manager, *date, options.Tabela, options.Codigo);
    std::string missing;
    try {
        if (options.Consolidado)
            missing = manager.MissingTable64(options.Tabela);
        else if (!manager.IsInstalled(options.Tabela))
            missing = options.Tabela;
    } catch (const ETussTableWithoutEntity& error) {
        throw EUsage(error.what());
    }
    std::ostream& out = context.Streams.Out;
    if (!missing.empty()) {
        const std::string notVerified = NotInstalledText(missing);
        if (context.Json())
            out << JsonText({{"resultado", nullptr}, {"mensagem", notVerified}}) << '\n';
        else
            out << notVerified << '\n';
        return kExitUnreadable;
    }
    std::vector<TFoundTerm> similar;
    if (term->ValidationReturn() == TTussResult::NotFound)
        similar = TTussSearch(TDatabaseTuss(PathFromText(context.Terminologia)).DatabaseFileName())
                      .Similar(options.Tabela, options.Codigo);
    if (context.Json()) {
        TJson answer = {{"resultado", static_cast<int>(term->ValidationReturn())},
                        {"mensagem", term->ValidationMessage()}};
        if (!similar.empty())
            answer["parecidos"] = TermsJson(similar);
        out << JsonText(answer) << '\n';
    } else if (term->IsValid())
        out << fmt::format("O termo de código {} da tabela {} da TUSS é válido em {}.\n",
                           Visible(options.Codigo), options.Tabela, FormatUserDate(*date));
    else
        out << Visible(term->ValidationMessage()) << '\n';
    if (!context.Json() && !similar.empty()) {
        out << "Parecidos:\n";
        WriteTerms(out, similar);
    }
    return term->IsValid() ? kExitValid : kExitInvalid;
}

} // namespace conferix
