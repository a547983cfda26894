#include "report/json_report.h"

#include "app/message_groups.h"
#include "model/tiss_kinds.h"
#include "report/message_json.h"

#include <ostream>

namespace conferix {

namespace {

/// For each message the number of its group, 1-based.
std::vector<std::size_t> GroupNumbers(const TXmlMessages& messages) {
    std::vector<std::size_t> numbers(messages.size());
    const std::vector<TMessageGroup> groups = GroupMessages(messages);
    for (std::size_t number = 0; number < groups.size(); ++number)
        for (const std::size_t index : groups[number].Messages)
            numbers[index] = number + 1;
    return numbers;
}

std::string FileJson(const TFileResult& file, const TReportOptions& options, int indent) {
    const TValidateArgs& result = file.Validation;
    const TListedMessages listed(result, options);
    const std::vector<std::size_t> groups = GroupNumbers(listed.Messages);
    const IArquivoTiss* arquivo = result.ArquivoTiss.get();
    std::size_t unlisted = 0;
    for (const TUnkeptFindings& of : result.Unlisted)
        unlisted += of.Counts.Findings();
    const TJson json = {
        {"arquivo", result.FileName},
        {"xmlValido", result.ValidXml},
        {"valido", VerdictJson(result)},
        {"estado", result.FileStateFlags.Names()},
        {"tipoArquivo", arquivo != nullptr ? NameOf(arquivo->TipoArquivo()) : std::string_view{}},
        {"tipoTransacao", arquivo != nullptr ? NameOf(arquivo->TipoTransacao()) : std::string_view{}},
        {"versao", file.Versao},
        {"erros", result.Counts.Failures()},
        {"avisos", result.Counts.Warnings()},
        {"ocultas", result.HiddenCount},
        {"naoListadas", unlisted},
        {"mensagens", TJson::array()}};
    // The list goes in message by message: all of them as one value would take many times their text.
    TJsonList list(JsonText(json, indent), indent);
    for (std::size_t i = 0; i < listed.Messages.size(); ++i) {
        TJson message = MessageJson(*listed.Messages[i], listed.Shown[i]);
        message["grupo"] = groups[i];
        list.Add(message);
    }
    return list.Take();
}

} // namespace

void TJsonReport::Begin(std::ostream& out) {
    out << "[";
}

std::string TJsonReport::FileText(const TFileResult& file) const {
    return FileJson(file, options_, 2);
}

void TJsonReport::AddFile(std::ostream& out, const TFileSummary&, std::string text) {
    out << (empty_ ? "\n" : ",\n") << text;
    empty_ = false;
}

void TJsonReport::End(std::ostream& out, const TReportTotals&) {
    out << (empty_ ? "]\n" : "\n]\n");
}

std::string TNdjsonReport::FileText(const TFileResult& file) const {
    return FileJson(file, options_, -1);
}

void TNdjsonReport::AddFile(std::ostream& out, const TFileSummary&, std::string text) {
    out << text << '\n' << std::flush;
}

} // namespace conferix
