#include "app/terminology_state.h"

#include "data/database_tuss.h"
#include "data/tuss_connection.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <ctime>

namespace conferix {

namespace {

struct TKnownTable {
    std::string_view Tabela;
    std::string_view Name; ///< in the database
    std::string_view Description;
};
/// Those that rules look codes up in, and with them the municipalities.
constexpr std::array<TKnownTable, 8> kKnown = {{
    {"18", "TB_TUSS_18", "Diárias, taxas e gases medicinais"},
    {"19", "TB_TUSS_19", "Materiais e OPME"},
    {"20", "TB_TUSS_20", "Medicamentos"},
    {"22", "TB_TUSS_22", "Procedimentos e eventos em saúde"},
    {"63", "TB_TUSS_63", "Grupos de procedimentos e itens assistenciais"},
    {"64", "TB_TUSS_64", "Forma de envio à ANS"},
    {"87", "TB_TUSS_87", "Tabelas de terminologia"},
    {"municípios", "TB_CIDADE", "Códigos dos municípios"},
}};

constexpr std::string_view kSearchOnly = "Só para a procura de termos";

} // namespace

bool IsOldImport(const TTableImport& import) {
    constexpr std::time_t kSixMonths = std::time_t(183) * 24 * 60 * 60;
    const std::time_t then = std::time(nullptr) - kSixMonths;
    const std::string limit = fmt::format("{:%Y-%m-%d}", *std::localtime(&then));
    return std::ranges::any_of(kKnown,
                               [&](const TKnownTable& known) { return known.Tabela == import.Tabela; }) &&
           import.Time.substr(0, limit.size()) < limit;
}

TTerminologyState ReadTerminologyState() {
    const auto connection = TDatabaseTuss().CreateConnection();
    TTerminologyState state{connection->FileName(), !connection->FindDamage().empty(), {}};
    if (state.Damaged)
        return state;
    const std::vector<TTussTableStatistics> statistics = connection->Statistics();
    for (const TKnownTable& known : kKnown) {
        const auto found = std::ranges::find(statistics, known.Name, &TTussTableStatistics::Name);
        state.Tables.push_back({std::string(known.Tabela), known.Description, found->Installed, found->Rows,
                                found->NewestStart, std::nullopt, false});
    }
    for (TTableImport& import : NewestImports(connection->FileName())) {
        auto table = std::ranges::find(state.Tables, import.Tabela, &TTerminologyTable::Tabela);
        if (table == state.Tables.end())
            table = state.Tables.insert(
                state.Tables.end(),
                {import.Tabela, kSearchOnly, true, import.Rows, ParseIsoDate(import.NewestStart), {}, false});
        table->Old = IsOldImport(import);
        table->Import = std::move(import);
    }
    std::ranges::sort(state.Tables, {}, &TTerminologyTable::Tabela);
    return state;
}

} // namespace conferix
