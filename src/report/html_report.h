#pragma once

#include "report/report_writer.h"
#include "report/rule_guide.h"

#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace conferix {

/// One HTML document for people, on screen and paper, that refers to nothing outside itself: of several files
/// an index, then file by file what was found and how it is mended, then an appendix that explains the rules
/// that found something. What would make it too large is left out, and the document says so.
class THtmlReport : public IReportWriter {
  public:
    explicit THtmlReport(const TReportOptions& options) : options_(options) {}

    std::string FileText(const TFileResult& file) const override;
    void AddFile(std::ostream& out, const TFileSummary& file, std::string text) override;
    void End(std::ostream& out, const TReportTotals& totals) override;

  private:
    struct TFilePart {
        TFileSummary Summary;
        std::string Text;
    };

    void WriteIndex(std::ostream& out, const TReportTotals& totals) const;
    void WriteAppendix(std::ostream& out) const;

    TReportOptions options_;
    std::vector<TFilePart> files_;
    std::size_t size_ = 0; ///< bytes of the texts
    mutable std::mutex mutex_;
    mutable std::set<const TRuleText*> explained_; ///< gathered while texts are made
};

} // namespace conferix
