#pragma once

#include "report/report_writer.h"

namespace conferix {

/// An array of objects, one a file, and on request a last one about all of them.
class TJsonReport : public IReportWriter {
  public:
    explicit TJsonReport(const TReportOptions& options) : options_(options) {}

    void Begin(std::ostream& out) override;
    std::string FileText(const TFileResult& file) const override;
    void AddFile(std::ostream& out, const TFileSummary& file, std::string text) override;
    void End(std::ostream& out, const TReportTotals& totals) override;

  private:
    TReportOptions options_;
    bool empty_ = true;
};

/// The same objects, each in a line, as the files end.
class TNdjsonReport : public IReportWriter {
  public:
    explicit TNdjsonReport(const TReportOptions& options) : options_(options) {}

    bool KeepsOrder() const override { return false; }
    std::string FileText(const TFileResult& file) const override;
    void AddFile(std::ostream& out, const TFileSummary& file, std::string text) override;
    void End(std::ostream& out, const TReportTotals& totals) override;

  private:
    TReportOptions options_;
};

} // namespace conferix
