// Reports of validated files, one class a format.
#pragma once

#include "app/file_validation.h"
#include "app/repeated_guides.h"
#include "validation/identity.h"
#include "xml/xml_message.h"

#include <array>
#include <cstddef>
#include <iosfwd>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace conferix {

/// A least severity, of what is shown and of what makes a file fail.
enum class TReportLevel { Erro, Aviso, Informacao };

/// The level of that name ("erro", "aviso", "informacao"); nothing for any other.
std::optional<TReportLevel> ReportLevelOf(std::string_view name);
/// True for a finding of that level or a graver one.
bool Reaches(TMessageType type, TReportLevel level);

/// What of the findings a report shows, and how.
struct TReportOptions {
    bool Todas = false;                ///< also what was found right, and what switched-off rules found
    std::optional<TReportLevel> Nivel; ///< nothing: all findings are shown, and errors make a file fail
    bool Detalhar = false;             ///< every finding by itself, in formats for people
    bool AgruparPorRegra = false;      ///< in text
    bool Resumo = false;               ///< the files without their findings: text, JSON
    bool Estatisticas = false;         ///< counts by rule and by file: text, JSON
    bool Totais = false;               ///< at the end an object about all files: JSON, NDJSON
    bool Colours = false;              ///< those of a terminal

    /// What makes a file fail.
    TReportLevel FailingLevel() const { return Nivel.value_or(TReportLevel::Erro); }
    bool Shows(TMessageType type) const;
};

/// How much was found by a rule.
struct TRuleCounts {
    IValidationIdentity Rule; ///< null for what comes from no rule
    TMessageCounts Counts;
    std::size_t Files = 0; ///< files in which it found something
};
/// By the names of the rules.
using TCountsByRule = std::map<std::string, TRuleCounts, std::less<>>;
/// The rules that found something, those with most failures first, then those with most findings.
std::vector<const TRuleCounts*> ByFrequency(const TCountsByRule& rules);

/// What is left of a file once its text is made.
struct TFileSummary {
    explicit TFileSummary(const TFileResult& file);

    std::string Arquivo;
    TVerdict Verdict;
    TMessageCounts Counts;
    TCountsByRule Rules;
    std::string Failure;  ///< why it could not be validated
    std::string Obstacle; ///< what kept it from being verified
    std::string Advice;   ///< what to do about that
};

/// What reports call the guides that are in two of their files.
inline constexpr std::string_view kRepeatedGuides = "Guias que estão em mais de um arquivo";

/// The files of a report as a whole.
class TReportTotals {
  public:
    /// With `statistics`, files and rules are remembered one by one.
    explicit TReportTotals(bool statistics) : statistics_(statistics) {}

    void Add(const TFileSummary& file);
    std::size_t Files() const { return files_; }
    std::size_t Of(TVerdict verdict) const { return byVerdict_[static_cast<std::size_t>(verdict)]; }
    const TMessageCounts& Counts() const { return counts_; }
    const TCountsByRule& Rules() const { return rules_; }
    /// In the order in which they were added.
    const std::vector<TFileSummary>& Summaries() const { return summaries_; }
    /// Guides that are in two of the files; they change no verdict.
    void SetRepeated(std::vector<TGuideInTwoFiles> repeated) { repeated_ = std::move(repeated); }
    const std::vector<TGuideInTwoFiles>& Repeated() const { return repeated_; }

  private:
    bool statistics_;
    std::size_t files_ = 0;
    std::array<std::size_t, 3> byVerdict_{};
    TMessageCounts counts_;
    TCountsByRule rules_;
    std::vector<TFileSummary> summaries_;
    std::vector<TGuideInTwoFiles> repeated_;
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

/// The writer of a format: texto, json, ndjson, sarif, junit, csv or html; null for any other.
std::unique_ptr<IReportWriter> NewReportWriter(std::string_view formato, const TReportOptions& options);

/// A message in a report.
struct TListedMessage {
    std::shared_ptr<const TXmlMessage> Message;
    /// 1-based within the file and alike in every run; of what a user is shown without asking for more, the
    /// number by which its correction is asked for.
    std::size_t Number;
    bool Shown; ///< without asking for more
};

/// The messages that a report lists of a file.
std::vector<TListedMessage> ListedMessages(const TValidateArgs& result, const TReportOptions& options);

/// The messages alone.
TXmlMessages MessagesOf(const std::vector<TListedMessage>& listed);

/// What kept a file from being verified, followed by what to do about it, if that is known.
std::string WithAdvice(const std::string& obstacle, const std::string& advice);

/// What a message says, after the guide and field that it is about: for reports that tell the line apart.
std::string TextWithoutLine(const TXmlMessage& message);

} // namespace conferix
