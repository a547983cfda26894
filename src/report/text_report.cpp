#include "report/text_report.h"

#include "model/tiss_kinds.h"
#include "validation/solver.h"
#include "validation/validation_message.h"

#include <fmt/format.h>

#include <algorithm>
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

std::string TTextReport::FileText(const TFileResult& file) const {
    const TValidateArgs& result = file.Validation;
    const TXmlMessages listed = TListedMessages(result, options_).Messages;
    std::string text = palette_.Bold(Visible(result.FileName)) + '\n' + Kind(file);
    const std::vector<TMessageGroup> groups =
        options_.Detalhar ? Ungrouped(listed.size()) : GroupMessages(listed);
    for (const TMessageGroup& group : groups) {
        const TXmlMessage& first = *listed[group.Messages.front()];
        text +=
            fmt::format("  {}: {}{}\n", palette_.Severity(first.MsgType(), SeverityLabel(first.MsgType())),
                        IndentLines(GroupText(listed, group), 4),
                        palette_.Dim(Origin(first, group.Messages.size() == 1)));
        text += Corrections(listed, group);
    }
    if (groups.size() < listed.size())
        text +=
            palette_.Dim("  Mensagens de mesma causa estão agrupadas; --detalhar mostra cada uma.") + '\n';
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
    out << (empty_ ? "" : "\n") << text << std::flush;
    empty_ = false;
}

void TTextReport::End(std::ostream& out, const TReportTotals& totals) {
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
