#include "report/junit_report.h"

#include "report/console.h"
#include "validation/validation_message.h"
#include "xml/xml_writer.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <ostream>
#include <utility>
#include <vector>

namespace conferix {

namespace {

/// A text of one line for an attribute or element; what XML cannot hold stands as an escape.
std::string Xml(std::string_view text) {
    std::string visible = Visible(OneLine(text));
    for (const auto& [bytes, escape] :
         {std::pair("\xEF\xBF\xBE", "\\uFFFE"), std::pair("\xEF\xBF\xBF", "\\uFFFF")})
        for (std::size_t at = visible.find(bytes); at != std::string::npos; at = visible.find(bytes, at))
            visible.replace(at, 3, escape);
    return EscapeXml(visible, true);
}

std::string Line(const TXmlMessage& message) {
    return fmt::format("{}: {}", SeverityLabel(message.MsgType()), message.Msg());
}

/// The cases of a rule that fail are one.
struct TFailedRule {
    std::string Name;
    std::string Description;
    std::vector<const TXmlMessage*> Messages;
};

std::string FailedCase(const std::string& className, const TFailedRule& rule) {
    const std::size_t count = rule.Messages.size();
    std::string text = fmt::format(
        "    <testcase classname=\"{}\" name=\"{}\">\n      <failure type=\"{}\" message=\"{}{}\">",
        className, Xml(rule.Name.empty() ? "arquivo" : fmt::format("{} ({})", rule.Name, rule.Description)),
        SeverityLabel(rule.Messages.front()->MsgType()), Xml(rule.Messages.front()->Msg()),
        count == 1 ? "" : fmt::format(" (e mais {})", count - 1));
    for (const TXmlMessage* message : rule.Messages)
        text += Xml(Line(*message)) + '\n';
    return text + "</failure>\n    </testcase>\n";
}

} // namespace

void TJunitReport::Begin(std::ostream& out) {
    out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites name=\"conferix\">\n";
}

std::string TJunitReport::FileText(const TFileResult& file) const {
    std::vector<TFailedRule> failed;
    std::map<std::string, std::size_t> known;
    std::string told;
    for (const TListedMessage& listed : ListedMessages(file.Validation, options_)) {
        const TXmlMessage& message = *listed.Message;
        if (!listed.Shown || !Reaches(message.MsgType(), options_.FailingLevel())) {
            told += Xml(Line(message)) + '\n';
            continue;
        }
        const std::string name = RuleName(message);
        const auto [rule, added] = known.try_emplace(name, failed.size());
        if (added)
            failed.push_back({name, name.empty() ? std::string() : message.Rule()->Description, {}});
        failed[rule->second].Messages.push_back(&message);
    }
    const bool verified = file.Verdict() != TVerdict::NotVerified;
    const std::string name = Xml(file.Validation.FileName);
    std::string className = name; // what stands before a dot would be taken for a package
    std::ranges::replace(className, '.', '_');
    std::string cases;
    std::size_t failures = 0;
    if (file.Failure.empty()) {
        failures = failed.size();
        for (const TFailedRule& rule : failed)
            cases += FailedCase(className, rule);
    }
    if (!verified)
        cases += fmt::format("    <testcase classname=\"{}\" name=\"arquivo não verificado\">\n      "
                             "<error type=\"não verificado\" message=\"{}\"/>\n    </testcase>\n",
                             className, Xml(WithAdvice(file.Obstacle(), file.Advice())));
    else if (failures == 0)
        cases += fmt::format("    <testcase classname=\"{}\" name=\"arquivo válido\"/>\n", className);
    const std::size_t errors = verified ? 0 : 1;
    return fmt::format(
        "  <testsuite name=\"{}\" tests=\"{}\" failures=\"{}\" errors=\"{}\" skipped=\"0\">\n{}{}"
        "  </testsuite>\n",
        name, std::max<std::size_t>(1, failures + errors), failures, errors, cases,
        told.empty() ? told : fmt::format("    <system-out>{}</system-out>\n", told));
}

void TJunitReport::AddFile(std::ostream& out, const TFileSummary&, std::string text) {
    out << text << std::flush;
}

void TJunitReport::End(std::ostream& out, const TReportTotals& totals) {
    if (!totals.Repeated().empty()) { // they make no file fail
        out << fmt::format("  <testsuite name=\"{}\" tests=\"0\" failures=\"0\" errors=\"0\" "
                           "skipped=\"0\">\n    <system-out>",
                           kRepeatedGuides);
        for (const std::string& text : RepeatedGuideTexts(totals.Repeated()))
            out << Xml("aviso: " + text) << '\n';
        out << "</system-out>\n  </testsuite>\n";
    }
    out << "</testsuites>\n";
}

} // namespace conferix
