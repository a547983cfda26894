#include "app/cli/command_procurar.h"

#include "app/cli/commands.h"
#include "data/database_tuss.h"
#include "platform/platform.h"
#include "report/console.h"
#include "rules/tuss_validation.h"

#include <fmt/format.h>

#include <ostream>

namespace conferix {

namespace {

constexpr std::size_t kMaxTerms = 20;

std::string ValidityText(const TFoundTerm& term) {
    const std::string start = term.InicioVigencia ? "desde " + FormatUserDate(*term.InicioVigencia) : "";
    const std::string end = term.FimVigencia ? "até " + FormatUserDate(*term.FimVigencia) : "";
    return start + (start.empty() || end.empty() ? "" : " ") + end;
}

} // namespace

TJson TermsJson(const std::vector<TFoundTerm>& terms) {
    const auto date = [](const std::optional<TDate>& day) {
        return day ? TJson(FormatIsoDate(*day)) : TJson(nullptr);
    };
    TJson rows = TJson::array();
    for (const TFoundTerm& term : terms)
        rows.push_back({{"tabela", term.Tabela},
                        {"codigo", term.Codigo},
                        {"termo", term.Termo},
                        {"inicioVigencia", date(term.InicioVigencia)},
                        {"fimVigencia", date(term.FimVigencia)}});
    return rows;
}

void WriteTerms(std::ostream& out, const std::vector<TFoundTerm>& terms) {
    for (const TFoundTerm& term : terms)
        out << fmt::format("  {:<2}  {:<8}  {:<16}  {}\n", Visible(term.Tabela), Visible(term.Codigo),
                           ValidityText(term), Visible(term.Termo));
}

int RunTerminologiaProcurar(const TCliContext& context, const TProcurarOptions& options) {
    std::optional<TDate> day;
    if (!options.Data.empty()) {
        day = ParseIsoDate(options.Data);
        if (!day)
            throw EUsage(fmt::format("\"{}\" não é uma data na forma AAAA-MM-DD", options.Data));
    }
    const TDatabaseTuss database(PathFromText(context.Terminologia));
    const auto connection = database.CreateConnection();
    if (!connection->FindDamage().empty()) // a search finds less in it, and nobody would know
        throw ETerminologyNotRead(database.DatabaseFileName(), "o banco de dados está danificado");
    TTussManager manager(connection);
    const TTussSearch search(database.DatabaseFileName());
    if (!search.HasDescriptions())
        throw ETerminologyNotRead(database.DatabaseFileName(),
                                  "a base não tem as descrições dos termos. Importe a publicação da ANS: "
                                  "conferix terminologia importar ARQUIVO");
    const auto accepts = [&](const TFoundTerm& term) {
        return !day || TTussValidation(manager, *day, term.Tabela, term.Codigo).IsValid();
    };
    const std::vector<TFoundTerm> terms = search.Search(options.Texto, options.Tabela, accepts, kMaxTerms);
    std::ostream& out = context.Streams.Out;
    if (context.Json())
        out << JsonText(TermsJson(terms)) << '\n';
    else if (terms.empty())
        out << "Nenhum termo encontrado.\n";
    else
        WriteTerms(out, terms);
    if (terms.size() == kMaxTerms && !context.Json())
        out << fmt::format("Só os {} primeiros são mostrados; use mais palavras ou --tabela.\n", kMaxTerms);
    return terms.empty() ? kExitInvalid : kExitValid;
}

} // namespace conferix
