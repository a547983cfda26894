#pragma once

#include "report/report_writer.h"

#include <map>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace conferix {

/// SARIF 2.1.0: a run with a result a message, the rules that found something with their texts, and the
/// corrections as replacements. What kept a file from being verified is a
/// notification of the run.
class TSarifReport : public IReportWriter {
  public:
    explicit TSarifReport(const TReportOptions& options) : options_(options) {}

    void Begin(std::ostream& out) override;
    std::string FileText(const TFileResult& file) const override;
    void AddFile(std::ostream& out, const TFileSummary& file, std::string text) override;
    void End(std::ostream& out, const TReportTotals& totals) override;

  private:
    TReportOptions options_;
    bool empty_ = true;
    std::set<std::string> files_;                                 ///< each once, however often it was given
    std::vector<std::pair<std::string, std::string>> unverified_; ///< file, reason
    mutable std::mutex mutex_;
    mutable std::map<std::string, IValidationIdentity> rules_; ///< that results name; null: of no rule
};

} // namespace conferix
