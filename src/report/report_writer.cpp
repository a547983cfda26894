#include "report/report_writer.h"

#include "report/csv_report.h"
#include "report/html_report.h"
#include "report/json_report.h"
#include "report/junit_report.h"
#include "report/sarif_report.h"
#include "report/text_report.h"
#include "validation/validation_message.h"

#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace conferix {

std::optional<TReportLevel> ReportLevelOf(std::string_view name) {
    if (name == "erro")
        return TReportLevel::Erro;
    if (name == "aviso")
        return TReportLevel::Aviso;
    if (name == "informacao" || name == "informação")
        return TReportLevel::Informacao;
    return std::nullopt;
}

bool Reaches(TMessageType type, TReportLevel level) {
    switch (type) {
    case TMessageType::mtError:
    case TMessageType::mtFatal:
        return true;
    case TMessageType::mtWarning:
        return level != TReportLevel::Erro;
    case TMessageType::mtInformation:
        return level == TReportLevel::Informacao;
    case TMessageType::mtSuccess:
        break;
    }
    return false;
}

bool TReportOptions::Shows(TMessageType type) const {
    // A success is the verdict on the file, or asked for by name.
    return !Nivel || type == TMessageType::mtSuccess || Reaches(type, *Nivel);
}

std::vector<const TRuleCounts*> ByFrequency(const TCountsByRule& rules) {
    std::vector<const TRuleCounts*> sorted;
    for (const auto& [name, counts] : rules)
        sorted.push_back(&counts);
    std::ranges::stable_sort(sorted, std::greater<>(), [](const TRuleCounts* of) {
        return std::pair(of->Counts.Failures(), of->Counts.Findings());
    });
    return sorted;
}

TFileSummary::TFileSummary(const TFileResult& file)
    : Arquivo(file.Validation.FileName), Verdict(file.Verdict()), Counts(file.Validation.Counts),
      Failure(file.Failure), Obstacle(file.Obstacle()), Advice(file.Advice()) {
    const auto countsOf = [this](const IValidationIdentity& rule) -> TMessageCounts& {
        TRuleCounts& counts = Rules[rule != nullptr ? rule->Name : std::string()];
        counts.Rule = rule;
        counts.Files = 1;
        return counts.Counts;
    };
    for (const auto& message : file.Validation.ValidationMessages)
        if (message->MsgType() != TMessageType::mtSuccess)
            countsOf(message->SharedRule()).Add(message->MsgType());
    for (const TUnkeptFindings& of : file.Validation.Unlisted)
        countsOf(of.Rule) += of.Counts;
}

void TReportTotals::Add(const TFileSummary& file) {
    ++files_;
    ++byVerdict_[static_cast<std::size_t>(file.Verdict)];
    counts_ += file.Counts;
    if (!statistics_)
        return;
    for (const auto& [name, of] : file.Rules) {
        TRuleCounts& counts = rules_[name];
        counts.Rule = of.Rule;
        counts.Counts += of.Counts;
        ++counts.Files;
    }
    summaries_.push_back(file);
}

std::unique_ptr<IReportWriter> NewReportWriter(std::string_view formato, const TReportOptions& options) {
    if (formato == "texto")
        return std::make_unique<TTextReport>(options);
    if (formato == "json")
        return std::make_unique<TJsonReport>(options);
    if (formato == "ndjson")
        return std::make_unique<TNdjsonReport>(options);
    if (formato == "html")
        return std::make_unique<THtmlReport>(options);
    if (formato == "sarif")
        return std::make_unique<TSarifReport>(options);
    if (formato == "junit")
        return std::make_unique<TJunitReport>(options);
    if (formato == "csv")
        return std::make_unique<TCsvReport>(options);
    return nullptr;
}

std::vector<TListedMessage> ListedMessages(const TValidateArgs& result, const TReportOptions& options) {
    std::vector<TListedMessage> listed;
    const auto list = [&](const std::shared_ptr<const TXmlMessage>& message, std::size_t number, bool shown) {
        if (options.Shows(message->MsgType()))
            listed.push_back({message, number, shown});
    };
    const TXmlMessages& shown = result.ValidationMessages;
    if (!options.Todas) {
        for (std::size_t i = 0; i < shown.size(); ++i)
            list(shown[i], i + 1, true);
        return listed;
    }
    // What the run found, then what the controller added for the user.
    std::unordered_map<const TXmlMessage*, std::size_t> numbers;
    for (std::size_t i = 0; i < shown.size(); ++i)
        numbers.emplace(shown[i].get(), i + 1);
    std::unordered_set<const TXmlMessage*> found;
    std::size_t last = shown.size();
    for (const auto& message : result.AllMessages) {
        found.insert(message.get());
        const auto number = numbers.find(message.get());
        if (number != numbers.end())
            list(message, number->second, true);
        else
            list(message, ++last, false);
    }
    for (const auto& message : shown)
        if (!found.contains(message.get()))
            list(message, numbers[message.get()], true);
    return listed;
}

TXmlMessages MessagesOf(const std::vector<TListedMessage>& listed) {
    TXmlMessages messages;
    for (const TListedMessage& of : listed)
        messages.push_back(of.Message);
    return messages;
}

std::string WithAdvice(const std::string& obstacle, const std::string& advice) {
    return advice.empty() ? obstacle : obstacle + ". " + advice;
}

std::string TextWithoutLine(const TXmlMessage& message) {
    std::string text;
    if (!message.NumeroGuia().empty())
        text += fmt::format("[Guia: {}] ", message.NumeroGuia());
    if (!message.Campo().empty())
        text += fmt::format("[Campo: {}] ", message.Campo());
    return text + message.Reason();
}

} // namespace conferix
