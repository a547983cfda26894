#include "report/csv_report.h"

#include "report/console.h"
#include "report/csv_cell.h"
#include "validation/solver.h"
#include "validation/validation_message.h"

#include <ostream>
#include <string>

namespace conferix {

namespace {

constexpr std::string_view kVerdicts[] = {"válido", "inválido", "não verificado"};

/// The cells that every row of a file begins with.
std::string Name(const std::string& file, TVerdict verdict) {
    return CsvCell(file) + ';' + CsvCell(kVerdicts[static_cast<std::size_t>(verdict)]) + ';';
}

/// A number that tells a place; none where the place is not known.
std::string Place(std::int32_t number) {
    return number > 0 ? std::to_string(number) : std::string();
}

std::string Corrections(const TXmlMessage& message) {
    std::string text;
    for (const auto& solver : message.Solvers())
        text += (text.empty() ? "" : " | ") + solver->Description();
    return text;
}

} // namespace

void TCsvReport::Begin(std::ostream& out) {
    out << "\xEF\xBB\xBF"
           "Arquivo;Situação;Gravidade;Linha;Coluna;Guia;Campo;Regra;Mensagem;Correções\r\n";
}

std::string TCsvReport::FileText(const TFileResult& file) const {
    const std::string name = Name(file.Validation.FileName, file.Verdict());
    const std::string obstacle = file.Obstacle();
    const std::string advice = file.Advice();
    std::string text;
    for (const TListedMessage& listed : ListedMessages(file.Validation, options_)) {
        const TXmlMessage& message = *listed.Message;
        text += name + CsvCell(SeverityLabel(message.MsgType())) + ';' + Place(message.Line()) + ';' +
                Place(message.LinePos()) + ';' + CsvCell(message.NumeroGuia()) + ';' +
                CsvCell(message.Campo()) + ';' + CsvCell(RuleName(message)) + ';' +
                CsvCell(message.Reason() == obstacle ? WithAdvice(obstacle, advice) : message.Reason()) +
                ';' + CsvCell(Corrections(message)) + "\r\n";
    }
    return text.empty() ? name + ";;;;;;;\r\n" : text;
}

void TCsvReport::AddFile(std::ostream& out, const TFileSummary& file, std::string text) {
    out << text << std::flush;
    verdicts_[file.Arquivo] = file.Verdict;
}

void TCsvReport::End(std::ostream& out, const TReportTotals& totals) {
    for (const TGuideInTwoFiles& guide : totals.Repeated())
        out << Name(guide.File, verdicts_.at(guide.File)) + CsvCell(SeverityLabel(TMessageType::mtWarning)) +
                   ';' + Place(guide.Line) + ";;" + CsvCell(guide.Number) + ";;;" + CsvCell(guide.Text()) +
                   ";\r\n";
}

} // namespace conferix
