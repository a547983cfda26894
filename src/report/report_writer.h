// Reports of validated files, one class a format.
#pragma once

#include "app/file_validation.h"
#include "xml/xml_message.h"

#include <array>
#include <cstddef>
#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>

namespace conferix {

/// What of the findings a report shows, and how.
struct TReportOptions {
    bool Todas = false;    ///< also what was found right, and what the switched-off rules found
    bool Detalhar = false; ///< every finding by itself, in formats for people
    bool Colours = false;  ///< those of a terminal
};

/// What is left of a file once its text is made.
struct TFileSummary {
    explicit TFileSummary(const TFileResult& file);

    std::string Arquivo;
    TVerdict Verdict;
    TMessageCounts Counts;
    std::string Failure; ///< why it could not be validated
};

/// The files of a report as a whole.
class TReportTotals {
  public:
    void Add(const TFileSummary& file);
    std::size_t Files() const { return files_; }
    std::size_t Of(TVerdict verdict) const { return byVerdict_[static_cast<std::size_t>(verdict)]; }

  private:
    std::size_t files_ = 0;
    std::array<std::size_t, 3> byVerdict_{};
};

/// A report on files in one format: Begin, AddFile for each, End. A file's text is made apart from its place
/// in the report, so that files may end in another order than they are told in.
class IReportWriter {
  public:
    IReportWriter() = default;
    virtual ~IReportWriter() = default;
    IReportWriter(const IReportWriter&) = delete;
    IReportWriter& operator=(const IReportWriter&) = delete;

    /// False for reports of which each file stands for itself, to be told as soon as it is done.
    virtual bool KeepsOrder() const { return true; }
    virtual void Begin(std::ostream&) {}
    /// The text of one file. Threads may ask at the same time.
    virtual std::string FileText(const TFileResult& file) const = 0;
    /// Puts the text of a file into the report.
    virtual void AddFile(std::ostream& out, const TFileSummary& file, std::string text) = 0;
    virtual void End(std::ostream&, const TReportTotals&) {}
};

/// The writer of a format: texto, json or ndjson; null for any other.
std::unique_ptr<IReportWriter> NewReportWriter(std::string_view formato, const TReportOptions& options);

/// The messages that a report lists of a file.
struct TListedMessages {
    TListedMessages(const TValidateArgs& result, const TReportOptions& options);

    TXmlMessages Messages;
    std::vector<bool> Shown; ///< of each: the user is shown it without asking for more
};

} // namespace conferix
