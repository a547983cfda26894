#pragma once

#include "report/report_writer.h"

#include <map>
#include <string>

namespace conferix {

/// A table for spreadsheets set up for Brazil: UTF-8 with byte-order mark, semicolons, a row a message, a row
/// for a file without any. A text that a spreadsheet would take for a formula, a date or a number, and by
/// that change, stands behind an apostrophe.
class TCsvReport : public IReportWriter {
  public:
    explicit TCsvReport(const TReportOptions& options) : options_(options) {}

    void Begin(std::ostream& out) override;
    std::string FileText(const TFileResult& file) const override;
    void AddFile(std::ostream& out, const TFileSummary& file, std::string text) override;
    void End(std::ostream& out, const TReportTotals& totals) override;

  private:
    TReportOptions options_;
    std::map<std::string, TVerdict> verdicts_; ///< by the names of the files
};

} // namespace conferix
