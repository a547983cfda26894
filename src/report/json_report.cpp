#include "report/json_report.h"

#include "app/message_groups.h"
#include "model/tiss_kinds.h"
#include "platform/utf8.h"
#include "report/file_uri.h"
#include "report/message_json.h"

#include <ostream>

namespace conferix {

namespace {

/// For each message the number of its group, 1-based.
std::vector<std::size_t> GroupNumbers(const TXmlMessages& messages, const TValidateArgs& result) {
    std::vector<std::size_t> numbers(messages.size());
    const std::vector<TMessageGroup> groups = GroupMessages(messages, result.Unlisted);
    for (std::size_t number = 0; number < groups.size(); ++number)
        for (const std::size_t index : groups[number].Messages)
            numbers[index] = number + 1;
    return numbers;
}

/// What was found by rules, those that found most first.
TJson RulesJson(const TCountsByRule& rules, bool withFiles) {
    TJson json = TJson::array();
    for (const TRuleCounts* of : ByFrequency(rules)) {
        TJson rule = {{"validacao", of->Rule != nullptr ? of->Rule->Name : std::string()},
                      {"contagens", CountsJson(of->Counts)}};
        if (withFiles)
            rule["arquivos"] = of->Files;
        json.push_back(std::move(rule));
    }
    return json;
}

/// What every object begins with.
TJson Heading() {
    return {{"versaoFormato", kJsonFormatVersion}, {"versaoPrograma", CONFERIX_VERSAO}};
}

/// What is said of all files together.
TJson TotalsJson(const TReportTotals& totals, const TReportOptions& options) {
    TJson repeated = TJson::array();
    for (const TGuideInTwoFiles& guide : totals.Repeated())
        repeated.push_back({{"guia", guide.Number},
                            {"arquivo", guide.File},
                            {"linha", guide.Line},
                            {"outroArquivo", guide.OtherFile},
                            {"outraLinha", guide.OtherLine}});
    TJson sums = {{"arquivos", totals.Files()},
                  {"validos", totals.Of(TVerdict::Valid)},
                  {"invalidos", totals.Of(TVerdict::Invalid)},
                  {"naoVerificados", totals.Of(TVerdict::NotVerified)},
                  {"contagens", CountsJson(totals.Counts())},
                  {"guiasRepetidas", std::move(repeated)}};
    if (options.Estatisticas)
        sums["regras"] = RulesJson(totals.Rules(), true);
    TJson json = Heading();
    json["totais"] = std::move(sums);
    return json;
}

std::string FileJson(const TFileResult& file, const TReportOptions& options, int indent) {
    const TValidateArgs& result = file.Validation;
    const IArquivoTiss* arquivo = result.ArquivoTiss.get();
    std::size_t unlisted = 0;
    for (const TUnkeptFindings& of : result.Unlisted)
        unlisted += of.Counts.Findings();
    TJson json = Heading();
    json["arquivo"] = result.FileName;
    if (FindMalformedUtf8(result.FileName) != result.FileName.size())
        json["arquivoCodificado"] = PercentEncoded(result.FileName);
    json["xmlValido"] = result.ValidXml;
    json["valido"] = VerdictJson(result);
    json["estado"] = result.FileStateFlags.Names();
    json["tipoArquivo"] = arquivo != nullptr ? NameOf(arquivo->TipoArquivo()) : std::string_view{};
    json["tipoTransacao"] = arquivo != nullptr ? NameOf(arquivo->TipoTransacao()) : std::string_view{};
    json["versao"] = file.Versao;
    json["esquemaAproximado"] = result.ApproximateSchema;
    json["erros"] = result.Counts.Failures();
    json["avisos"] = result.Counts.Warnings();
    json["contagens"] = CountsJson(result.Counts);
    json["ocultas"] = result.HiddenCount;
    json["naoListadas"] = unlisted;
    if (const std::string advice = file.Advice(); !advice.empty())
        json["orientacao"] = advice;
    if (options.Estatisticas)
        json["regras"] = RulesJson(TFileSummary(file).Rules, false);
    if (options.Resumo)
        return JsonText(json, indent);
    json["mensagens"] = TJson::array();
    // The list goes in message by message: all of them as one value would take many times their text.
    TJsonList list(JsonText(json, indent), indent);
    const std::vector<TListedMessage> listed = ListedMessages(result, options);
    const std::vector<std::size_t> groups = GroupNumbers(MessagesOf(listed), result);
    for (std::size_t i = 0; i < listed.size(); ++i) {
        TJson message = MessageJson(*listed[i].Message, listed[i].Number, listed[i].Shown);
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

void TJsonReport::End(std::ostream& out, const TReportTotals& totals) {
    if (options_.Totais)
        out << (empty_ ? "\n" : ",\n") << JsonText(TotalsJson(totals, options_), 2);
    out << (empty_ && !options_.Totais ? "]\n" : "\n]\n");
}

std::string TNdjsonReport::FileText(const TFileResult& file) const {
    return FileJson(file, options_, -1);
}

void TNdjsonReport::AddFile(std::ostream& out, const TFileSummary&, std::string text) {
    out << text << '\n' << std::flush;
}

void TNdjsonReport::End(std::ostream& out, const TReportTotals& totals) {
    if (options_.Totais)
        out << JsonText(TotalsJson(totals, options_), -1) << '\n';
}

} // namespace conferix
