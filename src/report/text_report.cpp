#include "report/text_report.h"

#include "model/tiss_kinds.h"
#include "platform/format_settings.h"
#include "validation/solver.h"
#include "validation/validation_message.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <ostream>

namespace conferix {

namespace {

std::string Kind(const TFileResult& file) {
    const IArquivoTiss* arquivo = file.Validation.ArquivoTiss.get();
    if (arquivo == nullptr)
        return {};
    const std::string transacao = Visible(arquivo->TextoTipoTransacao());
    return fmt::format("  {}, {}, {}\n", KindOf(arquivo->TipoArquivo()).Title,
                       transacao.empty() ? "transação não informada" : transacao,
                       file.Versao.empty() ? "versão não informada" : "versão " + Visible(file.Versao));
}

std::vector<TMessageGroup> Ungrouped(std::size_t count) {
    std::vector<TMessageGroup> groups(count);
    for (std::size_t i = 0; i < count; ++i)
        groups[i].Messages = {i};
    return groups;
}

/// Column and rule of a message, which its text does not tell.
std::string Origin(const TXmlMessage& message, bool alone) {
    std::string origin;
    if (alone && message.LinePos() != 0)
        origin = fmt::format("coluna {}", message.LinePos());
    if (const std::string rule = RuleName(message); !rule.empty())
        origin += (origin.empty() ? "" : ", ") + rule;
    return origin.empty() ? origin : " (" + origin + ")";
}

constexpr const char* kCountLine = "{:>9} {:>9} {:>12}";

std::string CountColumns(const TMessageCounts& counts) {
    const auto number = [](std::size_t count) {
        return TFormatSettings::Regional().Count(static_cast<std::int64_t>(count));
    };
    return fmt::format(kCountLine, number(counts.Failures()), number(counts.Warnings()),
                       number(counts.Of(TMessageType::mtInformation)));
}

/// The findings by rule and by file.
std::string Statistics(const TReportTotals& totals) {
    const std::string heading = fmt::format(kCountLine, "erros", "avisos", "informações");
    std::string text = fmt::format("\nPor regra:\n{} {:>9}  regra\n", heading, "arquivos");
    for (const TRuleCounts* of : ByFrequency(totals.Rules()))
        text +=
            fmt::format("{} {:>9}  {}\n", CountColumns(of->Counts), of->Files,
                        of->Rule != nullptr ? fmt::format("{} ({})", of->Rule->Name, of->Rule->Description)
                                            : "leitura e identificação do arquivo");
    text += fmt::format("\nPor arquivo:\n{}  arquivo\n", heading);
    for (const TFileSummary& file : totals.Summaries())
        text += fmt::format("{}  {}\n", CountColumns(file.Counts), Visible(file.Arquivo));
    return text;
}

} // namespace

/// The corrections of a group: those of its first finding, of which the values may be its own.
std::string TTextReport::Corrections(const TXmlMessages& listed, const TMessageGroup& group) const {
    std::string text;
    const TXmlMessage& first = *listed[group.Messages.front()];
    for (std::size_t i = 0; i < first.Solvers().size(); ++i) {
        const std::string description = first.Solvers()[i]->Description();
        const bool same = std::ranges::all_of(group.Messages, [&](std::size_t index) {
            const auto& solvers = listed[index]->Solvers();
            return i < solvers.size() && solvers[i]->Description() == description;
        });
        text += palette_.Dim(fmt::format("    correção {}: {}{}", i + 1, IndentLines(description, 6),
                                         same ? "" : " (na primeira; nas outras, o que couber)")) +
                '\n';
    }
    return text;
}

std::string TTextReport::GroupLines(const TXmlMessages& listed, const TMessageGroup& group) const {
    const TXmlMessage& first = *listed[group.Messages.front()];
    return fmt::format("  {}: {}{}\n", palette_.Severity(first.MsgType(), SeverityLabel(first.MsgType())),
                       IndentLines(GroupText(listed, group), 4),
                       palette_.Dim(Origin(first, group.Messages.size() == 1))) +
           Corrections(listed, group);
}

std::string TTextReport::MessageLines(const TXmlMessages& listed) const {
    const std::vector<TMessageGroup> groups =
        options_.Detalhar ? Ungrouped(listed.size()) : GroupMessages(listed);
    std::string text;
    if (options_.AgruparPorRegra) {
        // The rules in the order of their first messages; what comes from none stands by itself.
        std::vector<std::string> order;
        std::map<std::string, std::string> ofRule;
        for (const TMessageGroup& group : groups) {
            const TXmlMessage& first = *listed[group.Messages.front()];
            const auto [lines, added] = ofRule.try_emplace(RuleName(first));
            if (added) {
                order.push_back(lines->first);
                if (first.Rule() != nullptr)
                    lines->second = palette_.Bold(first.Rule()->Description) +
                                    palette_.Dim(" (" + lines->first + ")") + '\n';
            }
            lines->second += GroupLines(listed, group);
        }
        for (const std::string& rule : order)
            text += (rule.empty() ? "" : " ") + ofRule[rule];
    } else {
        for (const TMessageGroup& group : groups)
            text += GroupLines(listed, group);
    }
    if (groups.size() < listed.size())
        text +=
            palette_.Dim("  Mensagens de mesma causa estão agrupadas; --detalhar mostra cada uma.") + '\n';
    return text;
}

std::string TTextReport::SummaryLine(const TFileResult& file) const {
    const TValidateArgs& result = file.Validation;
    std::string text = palette_.Bold(Visible(result.FileName)) + ": ";
    switch (file.Verdict()) {
    case TVerdict::Valid:
        text += palette_.Severity(TMessageType::mtSuccess, "válido");
        break;
    case TVerdict::Invalid:
        text += palette_.Severity(TMessageType::mtError, "inválido");
        break;
    case TVerdict::NotVerified:
        text += palette_.Severity(TMessageType::mtError, "não verificado");
        if (!file.Failure.empty())
            return text + fmt::format(" ({})\n", IndentLines(OneLine(file.Failure), 0));
        break;
    }
    std::string counts;
    if (const std::size_t errors = result.Counts.Failures(); errors != 0)
        counts = Counted(errors, "erro", "erros");
    if (const std::size_t warnings = result.Counts.Warnings(); warnings != 0)
        counts += (counts.empty() ? "" : ", ") + Counted(warnings, "aviso", "avisos");
    return text + (counts.empty() ? "\n" : " (" + counts + ")\n");
}

std::string TTextReport::FileText(const TFileResult& file) const {
    if (options_.Resumo)
        return SummaryLine(file);
    const TValidateArgs& result = file.Validation;
    std::string text = palette_.Bold(Visible(result.FileName)) + '\n' + Kind(file) +
                       MessageLines(MessagesOf(ListedMessages(result, options_)));
    const std::size_t errors = result.Counts.Failures();
    const std::size_t warnings = result.Counts.Warnings();
    if (!result.Verified) {
        text += palette_.Severity(TMessageType::mtError, "  Arquivo não verificado.") + '\n';
    } else if (errors != 0) {
        text += palette_.Severity(TMessageType::mtError,
                                  fmt::format("  Arquivo inválido: {}", Counted(errors, "erro", "erros")));
        if (warnings != 0)
            text += fmt::format(", {}", Counted(warnings, "aviso", "avisos"));
        text += ".\n";
    }
    return text;
}

void TTextReport::AddFile(std::ostream& out, const TFileSummary&, std::string text) {
    out << (empty_ || options_.Resumo ? "" : "\n") << text << std::flush;
    empty_ = false;
}

void TTextReport::End(std::ostream& out, const TReportTotals& totals) {
    if (options_.Estatisticas)
        out << Statistics(totals);
    if (totals.Files() < 2)
        return;
    out << fmt::format("\n{}: {}, {}", Counted(totals.Files(), "arquivo", "arquivos"),
                       Counted(totals.Of(TVerdict::Valid), "válido", "válidos"),
                       Counted(totals.Of(TVerdict::Invalid), "inválido", "inválidos"));
    if (const std::size_t unverified = totals.Of(TVerdict::NotVerified); unverified != 0)
        out << ", " << Counted(unverified, "não verificado", "não verificados");
    out << ".\n";
}

} // namespace conferix
