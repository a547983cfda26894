#pragma once

#include "report/report_writer.h"

namespace conferix {

/// JUnit's XML, which build servers show: a suite a file; in it a failed case for each rule that found what
/// makes the file fail, or one case that passed. What does not make it fail stands in the suite's output, and
/// a file that was not verified is a case with an error.
class TJunitReport : public IReportWriter {
  public:
    explicit TJunitReport(const TReportOptions& options) : options_(options) {}

    void Begin(std::ostream& out) override;
    std::string FileText(const TFileResult& file) const override;
    void AddFile(std::ostream& out, const TFileSummary& file, std::string text) override;
    void End(std::ostream& out, const TReportTotals& totals) override;

  private:
    TReportOptions options_;
};

} // namespace conferix
