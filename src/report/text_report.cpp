#include "report/text_report.h"

#include "model/tiss_exceptions.h"
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

std::string Heading(TEnumTipoArquivoTiss tipo, std::string_view transacao, std::string_view versao) {
    return fmt::format("  {}, {}, {}\n", KindOf(tipo).Title,
                       transacao.empty() ? "transação não informada" : Visible(transacao),
                       versao.empty() ? "versão não informada" : "versão " + Visible(versao));
}

/// What a file is, also where its version is missing or unknown; empty for no file of the standard.
std::string Kind(const TFileResult& file) {
    if (const IArquivoTiss* arquivo = file.Validation.ArquivoTiss.get())
        return Heading(arquivo->TipoArquivo(), arquivo->TextoTipoTransacao(), file.Versao);
    const TXmlDocument* document = file.Validation.Unidentified.get();
    if (document == nullptr)
        return {};
    std::string versao;
    try {
        const TEnumTipoArquivoTiss tipo = TArquivoTissBase::GetTipoArquivoTiss(*document);
        try {
            versao = TArquivoTissBase::GetVersaoTissDetectada(*document);
        } catch (const ETissVersionNotFound&) { // told as an error too
        }
        return Heading(tipo,
                       ValueOf(document->Element()->Find("cabecalho/identificacaoTransacao/tipoTransacao")),
                       versao);
    } catch (const EInvalidTissFile&) { // likewise
        return {};
    }
}

/// Column and rule of a message, which its text does not tell.
std::string Origin(const TXmlMessage& message, bool alone, bool withRule) {
    if (message.Kind() == TFindingKind::Run)
        return {};
    std::string origin;
    if (alone && message.LinePos() != 0)
        origin = fmt::format("coluna {}", message.LinePos());
    if (const std::string rule = RuleName(message); withRule && !rule.empty())
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
    std::string text;
    if (!totals.Rules().empty())
        text = fmt::format("\nPor regra:\n{} {:>9}  regra\n", heading, "arquivos");
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
std::string TTextReport::Corrections(const TXmlMessages& listed, const TMessageGroup& group,
                                     std::size_t margin) const {
    std::string text;
    const TXmlMessage& first = *listed[group.Messages.front()];
    for (std::size_t i = 0; i < first.Solvers().size(); ++i) {
        const std::string description = first.Solvers()[i]->Description();
        const bool same = std::ranges::all_of(group.Messages, [&](std::size_t index) {
            const auto& solvers = listed[index]->Solvers();
            return i < solvers.size() && solvers[i]->Description() == description;
        });
        text += palette_.Dim(fmt::format("{}correção {}: {}{}", std::string(margin, ' '), i + 1,
                                         IndentLines(description, margin + 2),
                                         same ? "" : " (na primeira; nas outras, o que couber)")) +
                '\n';
    }
    return text;
}

std::string TTextReport::GroupLines(const TXmlMessages& listed, const TMessageGroup& group,
                                    std::size_t margin) const {
    const TXmlMessage& first = *listed[group.Messages.front()];
    const std::string origin = Origin(first, group.Count == 1, !options_.AgruparPorRegra);
    return fmt::format("{}{}: {}{}\n", std::string(margin, ' '),
                       palette_.Severity(first.MsgType(), SeverityLabel(first.MsgType())),
                       IndentLines(GroupText(listed, group), margin + 2), palette_.Dim(origin)) +
           Corrections(listed, group, margin + 2);
}

std::string TTextReport::LinesByRule(const TXmlMessages& listed,
                                     const std::vector<TMessageGroup>& groups) const {
    std::map<std::string, std::string> ofRule;
    std::string ofRun;
    for (const TMessageGroup& group : groups) {
        const TXmlMessage& first = *listed[group.Messages.front()];
        (first.Kind() == TFindingKind::Run ? ofRun : ofRule[RuleName(first)]) += GroupLines(listed, group, 4);
    }
    std::string text = ofRun.empty() ? ofRun : "  " + palette_.Bold("Sobre esta conferência") + '\n' + ofRun;
    for (const auto& message : listed) { // in the order in which rules found something first
        const auto lines = ofRule.extract(RuleName(*message));
        if (lines.empty())
            continue;
        text += lines.key().empty() ? "  " + palette_.Bold("O arquivo como um todo") + '\n'
                                    : fmt::format("  {}{}\n", palette_.Bold(message->Rule()->Description),
                                                  palette_.Dim(" (" + lines.key() + ")"));
        text += lines.mapped();
    }
    return text;
}

std::string TTextReport::MessageLines(const TValidateArgs& result) const {
    const TXmlMessages listed = MessagesOf(ListedMessages(result, options_));
    std::vector<TMessageGroup> groups =
        options_.Detalhar ? UngroupedMessages(listed) : GroupMessages(listed, result.Unlisted);
    SortByLine(listed, groups);
    std::string text;
    if (options_.AgruparPorRegra)
        text = LinesByRule(listed, groups);
    else
        for (const TMessageGroup& group : groups)
            text += GroupLines(listed, group, 2);
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
    std::string text = palette_.Bold(Visible(result.FileName)) + '\n' + Kind(file) + MessageLines(result);
    const std::size_t errors = result.Counts.Failures();
    const std::size_t warnings = result.Counts.Warnings();
    const std::string advice = file.Advice();
    if (!result.Verified) {
        text += palette_.Severity(TMessageType::mtError, "  Arquivo não verificado.");
        text += (advice.empty() ? "" : ' ' + Visible(advice)) + '\n';
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
    if (!totals.Repeated().empty())
        out << '\n' << kRepeatedGuides << ":\n";
    for (const std::string& text : RepeatedGuideTexts(totals.Repeated()))
        out << "  " << palette_.Severity(TMessageType::mtWarning, "aviso") << ": " << Visible(text) << '\n';
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
