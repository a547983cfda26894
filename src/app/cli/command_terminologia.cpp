#include "app/cli/commands.h"
#include "app/cli/message_json.h"
#include "sistema/format_settings.h"
#include "sistema/sistema.h"

#include <fmt/format.h>

#include <ostream>

namespace conferix {

namespace {

std::string DateText(const TDate& date) {
    return fmt::format("{:04}-{:02}-{:02}", static_cast<int>(date.year()),
                       static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
}

} // namespace

int RunTerminologiaEstado(const TCliContext& context) {
    const auto connection = context.TerminologyFactory().CreateConnection();
    const std::vector<TTussTableStatistics> tables = connection->Statistics();
    std::ostream& out = context.Streams.Out;
    if (context.Json()) {
        TJson rows = TJson::array();
        for (const TTussTableStatistics& table : tables)
            rows.push_back({{"tabela", table.name},
                            {"registros", table.rows},
                            {"inicioMaisRecente",
                             table.newestStart ? TJson(DateText(*table.newestStart)) : TJson(nullptr)}});
        out << JsonText({{"arquivo", PathText(connection->FileName())}, {"tabelas", std::move(rows)}})
            << '\n';
        return kExitValid;
    }
    out << "Base de terminologia: " << PathText(connection->FileName()) << '\n';
    const TFormatSettings formats = TFormatSettings::Regional();
    for (const TTussTableStatistics& table : tables) {
        std::string state = "não instalada";
        if (table.rows > 0)
            state = fmt::format(
                "{} registros{}", formats.Count(table.rows),
                table.newestStart ? ", início de vigência mais recente " + DateText(*table.newestStart) : "");
        out << fmt::format("  {:<18} {}\n", table.name, state);
    }
    return kExitValid;
}

} // namespace conferix
