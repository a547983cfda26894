#include "report/sarif_report.h"

#include "report/file_uri.h"
#include "report/message_json.h"
#include "report/rule_guide.h"
#include "report/sarif_fixes.h"
#include "validation/validation_message.h"

#include <fmt/format.h>

#include <algorithm>
#include <ostream>
#include <utility>

namespace conferix {

namespace {

/// Stands for a rule where a message comes from none: viewers expect one.
constexpr const char* kReadingRule = "conferix.leitura";

/// What is said of the file as a whole stands at its beginning: viewers show nothing without a line.
TJson Location(const TXmlMessage& message, const std::string& uri) {
    TJson region = {{"startLine", std::max(message.Line(), 1)}};
    if (message.Line() > 0 && message.LinePos() > 0)
        region["startColumn"] = message.LinePos();
    return {{"physicalLocation", {{"artifactLocation", {{"uri", uri}}}, {"region", std::move(region)}}}};
}

const char* LevelOf(TMessageType type) {
    switch (type) {
    case TMessageType::mtError:
    case TMessageType::mtFatal:
        return "error";
    case TMessageType::mtWarning:
        return "warning";
    case TMessageType::mtInformation:
        return "note";
    case TMessageType::mtSuccess:
        break;
    }
    return "none";
}

TJson Result(const TListedMessage& listed, TSarifFixes& corrections, const std::string& uri) {
    const TXmlMessage& message = *listed.Message;
    const std::string rule = RuleName(message);
    TJson result = {{"ruleId", rule.empty() ? kReadingRule : rule}};
    if (message.MsgType() == TMessageType::mtSuccess)
        result["kind"] = "pass";
    result["level"] = LevelOf(message.MsgType());
    result["message"] = SarifMessage(TextWithoutLine(message));
    result["locations"] = TJson::array({Location(message, uri)});
    if (TJson fixes = corrections.Of(message); !fixes.empty())
        result["fixes"] = std::move(fixes);
    if (!listed.Shown && message.MsgType() != TMessageType::mtSuccess)
        result["suppressions"] =
            TJson::array({TJson{{"kind", "external"}, {"justification", "A regra está desativada."}}});
    TJson properties = {{"id", listed.Number}};
    if (!message.NumeroGuia().empty())
        properties["guia"] = message.NumeroGuia();
    if (!message.Campo().empty())
        properties["campo"] = message.Campo();
    result["properties"] = std::move(properties);
    return result;
}

TJson RuleDescriptor(const std::string& name, const IValidationIdentity& rule) {
    TJson json = {{"id", name}};
    if (rule == nullptr) {
        json["shortDescription"] = SarifMessage("Leitura e identificação do arquivo");
        json["help"] =
            SarifMessage("O que se diz do arquivo como um todo, antes de qualquer regra: se pôde ser lido, "
                         "se é XML e se é do padrão TISS.");
        return json;
    }
    json["shortDescription"] = SarifMessage(rule->Description);
    if (const TRuleText* text = TRuleGuide::Instance().Find(name)) {
        json["fullDescription"] = SarifMessage(text->ShortText);
        json["help"] = SarifMessage(text->PlainText());
        json["help"]["markdown"] = text->MarkdownBody();
    }
    return json;
}

TJson Artifact(const std::string& file) {
    return {{"location", {{"uri", FileUri(file)}}}, {"roles", TJson::array({"analysisTarget"})}};
}

/// An array, each value in a line of its own.
void PutArray(std::ostream& out, const std::vector<TJson>& values) {
    out << '[';
    for (std::size_t i = 0; i < values.size(); ++i)
        out << (i == 0 ? "\n" : ",\n") << JsonText(values[i], -1);
    out << (values.empty() ? "]" : "\n]");
}

} // namespace

void TSarifReport::Begin(std::ostream& out) {
    out << "{\n\"$schema\": \"https://docs.oasis-open.org/sarif/sarif/v2.1.0/errata01/os/schemas/"
           "sarif-schema-2.1.0.json\",\n\"version\": \"2.1.0\",\n\"runs\": [{\n"
           "\"columnKind\": \"unicodeCodePoints\",\n"
           "\"newlineSequences\": [\"\\r\\n\", \"\\n\", \"\\r\"],\n\"results\": [";
}

std::string TSarifReport::FileText(const TFileResult& file) const {
    std::string text;
    if (!file.Failure.empty())
        return text;
    const std::string uri = FileUri(file.Validation.FileName);
    TSarifFixes fixes(file, uri);
    std::map<std::string, IValidationIdentity> rules;
    for (const TListedMessage& listed : ListedMessages(file.Validation, options_)) {
        const TXmlMessage& message = *listed.Message;
        if (message.MsgType() == TMessageType::mtSuccess && message.Rule() == nullptr)
            continue; // a run without results says that all is well
        TJson result = Result(listed, fixes, uri);
        rules.emplace(result["ruleId"], message.SharedRule());
        text += (text.empty() ? "" : ",\n") + JsonText(result, -1);
    }
    const std::lock_guard lock(mutex_);
    rules_.merge(rules);
    return text;
}

void TSarifReport::AddFile(std::ostream& out, const TFileSummary& file, std::string text) {
    files_.insert(file.Arquivo);
    if (file.Verdict == TVerdict::NotVerified)
        unverified_.emplace_back(file.Arquivo, WithAdvice(file.Obstacle, file.Advice));
    if (text.empty())
        return;
    out << (empty_ ? "\n" : ",\n") << text << std::flush;
    empty_ = false;
}

void TSarifReport::End(std::ostream& out, const TReportTotals& totals) {
    out << (empty_ ? "],\n" : "\n],\n") << "\"artifacts\": ";
    std::vector<TJson> artifacts;
    for (const std::string& file : files_)
        artifacts.push_back(Artifact(file));
    PutArray(out, artifacts);
    TJson invocation = {{"executionSuccessful", unverified_.empty()},
                        {"toolExecutionNotifications", TJson::array()}};
    const auto notify = [&](const char* level, const std::string& text, TJson place) {
        invocation["toolExecutionNotifications"].push_back(
            {{"level", level},
             {"message", SarifMessage(text)},
             {"locations", TJson::array({TJson{{"physicalLocation", std::move(place)}}})}});
    };
    for (const auto& [file, reason] : unverified_)
        notify("error", reason, {{"artifactLocation", {{"uri", FileUri(file)}}}});
    for (const TGuideInTwoFiles& guide : totals.Repeated())
        notify(
            "warning", guide.Text(),
            {{"artifactLocation", {{"uri", FileUri(guide.File)}}}, {"region", {{"startLine", guide.Line}}}});
    out << ",\n\"invocations\": [" << JsonText(invocation, -1) << "],\n\"tool\": {\"driver\": {\n"
        << "\"name\": \"Conferix\",\n\"version\": \"" CONFERIX_VERSAO
           "\",\n\"semanticVersion\": \"" CONFERIX_VERSAO "\",\n\"language\": \"pt-BR\",\n\"rules\": ";
    std::vector<TJson> rules;
    for (const auto& [name, rule] : rules_)
        rules.push_back(RuleDescriptor(name, rule));
    PutArray(out, rules);
    out << "\n}}\n}]\n}\n";
}

} // namespace conferix
