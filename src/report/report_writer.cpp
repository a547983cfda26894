#include "report/report_writer.h"

#include "report/json_report.h"
#include "report/text_report.h"

#include <unordered_set>

namespace conferix {

TFileSummary::TFileSummary(const TFileResult& file)
    : Arquivo(file.Validation.FileName), Verdict(file.Verdict()), Counts(file.Validation.Counts),
      Failure(file.Failure) {}

void TReportTotals::Add(const TFileSummary& file) {
    ++files_;
    ++byVerdict_[static_cast<std::size_t>(file.Verdict)];
}

std::unique_ptr<IReportWriter> NewReportWriter(std::string_view formato, const TReportOptions& options) {
    if (formato == "texto")
        return std::make_unique<TTextReport>(options);
    if (formato == "json")
        return std::make_unique<TJsonReport>(options);
    if (formato == "ndjson")
        return std::make_unique<TNdjsonReport>(options);
    return nullptr;
}

TListedMessages::TListedMessages(const TValidateArgs& result, const TReportOptions& options) {
    if (!options.Todas) {
        Messages = result.ValidationMessages;
        Shown.assign(Messages.size(), true);
        return;
    }
    // What the run found, then what the controller added for the user.
    std::unordered_set<const TXmlMessage*> shown;
    for (const auto& message : result.ValidationMessages)
        shown.insert(message.get());
    std::unordered_set<const TXmlMessage*> found;
    for (const auto& message : result.AllMessages) {
        found.insert(message.get());
        Messages.push_back(message);
        Shown.push_back(shown.contains(message.get()));
    }
    for (const auto& message : result.ValidationMessages)
        if (!found.contains(message.get())) {
            Messages.push_back(message);
            Shown.push_back(true);
        }
}

} // namespace conferix
