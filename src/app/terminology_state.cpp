#include "app/terminology_state.h"

#include "data/database_tuss.h"
#include "data/import/recognizer.h"
#include "data/plain_text.h"
#include "data/tuss_connection.h"
#include "platform/format_settings.h"
#include "platform/platform.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <chrono>
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
    {kCities, "TB_CIDADE", "Códigos dos municípios"},
}};

/// The day on which a file was written.
std::string DateOf(const std::filesystem::path& file) {
    std::error_code unknown;
    const auto written = std::filesystem::last_write_time(file, unknown);
    if (unknown)
        return "data desconhecida";
    const std::time_t time = std::chrono::system_clock::to_time_t(
        std::chrono::time_point_cast<std::chrono::system_clock::duration>(
            std::chrono::file_clock::to_sys(written)));
    return fmt::format("{:%d/%m/%Y}", *std::localtime(&time));
}

constexpr std::string_view kSearchOnly = "Só para a procura de termos";

} // namespace

std::string TableTitle(std::string_view nameInDatabase) {
    if (nameInDatabase == kTableTussInativado)
        return "Códigos inativados";
    const auto known = std::ranges::find(kKnown, nameInDatabase, &TKnownTable::Name);
    if (known == kKnown.end())
        return std::string(nameInDatabase);
    return known->Tabela == kCities ? std::string(known->Description)
                                    : fmt::format("Tabela {}, {}", known->Tabela, known->Description);
}

bool IsOldImport(const TTableImport& import) {
    constexpr std::time_t kSixMonths = std::time_t(183) * 24 * 60 * 60;
    const std::time_t then = std::time(nullptr) - kSixMonths;
    const std::string limit = fmt::format("{:%Y-%m-%d}", *std::localtime(&then));
    return std::ranges::any_of(kKnown,
                               [&](const TKnownTable& known) { return known.Tabela == import.Tabela; }) &&
           import.Time.substr(0, limit.size()) < limit;
}

bool TTerminologyTable::IsOfTerms() const {
    return Tabela != kCities && Tabela != "64";
}

std::string_view TTerminologyTable::StateText() const {
    if (!Installed)
        return "Não instalada";
    return Old ? "Importada há mais de seis meses" : "Instalada";
}

std::string TTerminologyState::Summary() const {
    if (Damaged)
        return fmt::format(
            "A base de terminologia \"{}\" está danificada. Importe as publicações da ANS em uma "
            "base nova, ou volte à que veio com o programa.",
            PathText(File));
    std::string missing;
    for (const TTerminologyTable& table : Tables)
        if (!table.Installed)
            missing += (missing.empty() ? "" : ", ") + table.Tabela;
    return fmt::format("{} {}{}",
                       Imported ? "Base com o que foi importado neste computador:"
                                : fmt::format("Base que veio com o programa, de {}:", DateOf(File)),
                       PathText(File),
                       missing.empty()
                           ? std::string()
                           : fmt::format("\nNão instaladas: {}. Os códigos dessas tabelas não são "
                                         "verificados.",
                                         missing));
}

std::string NotesOf(const TImportReport& report) {
    const TFormatSettings formats = TFormatSettings::Regional();
    std::string notes;
    const auto add = [&notes](const std::string& line) { notes += line + "\n"; };
    if (report.WithoutTable > 0)
        add(fmt::format(
            "Códigos da tabela 64 que ainda não estão em nenhuma tabela de termos: {}. Serão usados "
            "quando ela for importada.",
            formats.Count(report.WithoutTable)));
    for (const std::string& file : report.Ignored)
        add("Sem terminologia, não foi usado: " + file);
    for (const std::string& file : report.WithoutDates)
        add("Sem colunas de datas, os termos foram tomados como sempre vigentes: " + file);
    std::int64_t rejected = 0;
    for (const TImportedFile& file : report.Files)
        rejected += file.Rejected;
    if (rejected > 0)
        add(fmt::format("Linhas que não puderam ser entendidas: {}", formats.Count(rejected)));
    for (const TRejectedRow& row : report.Rejected)
        add(fmt::format("  {}, {}: {}", row.File, row.Place(), row.Reason));
    if (rejected > static_cast<std::int64_t>(report.Rejected.size()))
        add("  e outras");
    return notes;
}

TFoundTerms SearchTerminology(const std::string& text, const std::string& table, std::size_t limit) {
    const TTussSearch search(TDatabaseTuss().DatabaseFileName());
    constexpr std::size_t kFewestLetters = 3; // fewer stand at the beginning of half of all terms
    TFoundTerms found;
    if (PlainText(text).size() < kFewestLetters) {
        found.Note =
            fmt::format("Escreva ao menos {} letras da descrição, ou o código inteiro.", kFewestLetters);
        return found;
    }
    if (text.find_first_not_of("0123456789") == std::string::npos) {
        found.Terms = search.Similar({}, text);
        std::erase_if(found.Terms, [&](const auto& term) { return !table.empty() && term.Tabela != table; });
    } else if (!search.HasDescriptions()) {
        found.Note = "A base não tem as descrições dos termos. Importe a publicação da ANS.";
        return found;
    } else {
        found.Terms = search.Search(
            text, table, [](const TFoundTerm&) { return true; }, limit + 1);
    }
    if (found.Terms.empty())
        found.Note = "Nenhum termo encontrado.";
    if (found.Terms.size() > limit) {
        found.Terms.pop_back();
        found.Note = fmt::format("Só os {} primeiros são mostrados; use mais palavras.", limit);
    }
    return found;
}

TTerminologyState ReadTerminologyState() {
    const auto connection = TDatabaseTuss().CreateConnection();
    TTerminologyState state{connection->FileName(), !connection->FindDamage().empty(), false, {}};
    state.Imported = state.File != TDatabaseTuss::DeliveredFileName();
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
