#pragma once

#include "app/message_groups.h"
#include "report/console.h"
#include "report/report_writer.h"

namespace conferix {

/// Text for people, as a terminal shows it.
class TTextReport : public IReportWriter {
  public:
    explicit TTextReport(const TReportOptions& options) : options_(options), palette_(options.Colours) {}

    std::string FileText(const TFileResult& file) const override;
    void AddFile(std::ostream& out, const TFileSummary& file, std::string text) override;
    void End(std::ostream& out, const TReportTotals& totals) override;

  private:
    /// The file in a line.
    std::string SummaryLine(const TFileResult& file) const;
    std::string MessageLines(const TXmlMessages& listed) const;
    std::string GroupLines(const TXmlMessages& listed, const TMessageGroup& group) const;
    std::string Corrections(const TXmlMessages& listed, const TMessageGroup& group) const;

    TReportOptions options_;
    TPalette palette_;
    bool empty_ = true;
};

} // namespace conferix
