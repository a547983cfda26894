#include "report/csv_report.h"

#include "report/console.h"
#include "validation/solver.h"
#include "validation/validation_message.h"

#include <algorithm>
#include <ostream>
#include <string>

namespace conferix {

namespace {

constexpr std::string_view kVerdicts[] = {"válido", "inválido", "não verificado"};
/// Spreadsheets keep so many digits of a number.
constexpr std::size_t kKeptDigits = 15;

/// True for a text that a spreadsheet would not show as it is.
bool IsChangedBySpreadsheets(std::string_view text) {
    if (text.empty())
        return false;
    if (std::string_view("=+-@'").find(text.front()) != std::string_view::npos)
        return true;
    // Figures with signs between may be an amount, a date or a time, and "1E5" is a number.
    const auto ofNumber = [](char c) {
        return (c >= '0' && c <= '9') || std::string_view(".,/:-eE ").find(c) != std::string_view::npos;
    };
    if (!std::ranges::all_of(text, ofNumber) || text.find_first_of("0123456789") == std::string_view::npos)
        return false;
    const bool digits = text.find_first_not_of("0123456789") == std::string_view::npos;
    return !digits || text.size() > kKeptDigits || (text.front() == '0' && text.size() > 1);
}

std::string Cell(std::string_view text) {
    const std::string visible = Visible(OneLine(text));
    std::string cell = IsChangedBySpreadsheets(visible) ? "\"'" : "\"";
    for (const char c : visible)
        cell += c == '"' ? "\"\"" : std::string(1, c);
    return cell + '"';
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
    const std::string name = Cell(file.Validation.FileName) + ';' +
                             Cell(kVerdicts[static_cast<std::size_t>(file.Verdict())]) + ';';
    std::string text;
    for (const TListedMessage& listed : ListedMessages(file.Validation, options_)) {
        const TXmlMessage& message = *listed.Message;
        text += name + Cell(SeverityLabel(message.MsgType())) + ';' + Place(message.Line()) + ';' +
                Place(message.LinePos()) + ';' + Cell(message.NumeroGuia()) + ';' + Cell(message.Campo()) +
                ';' + Cell(RuleName(message)) + ';' + Cell(message.Reason()) + ';' +
                Cell(Corrections(message)) + "\r\n";
    }
    return text.empty() ? name + ";;;;;;;\r\n" : text;
}

void TCsvReport::AddFile(std::ostream& out, const TFileSummary&, std::string text) {
    out << text << std::flush;
}

} // namespace conferix
