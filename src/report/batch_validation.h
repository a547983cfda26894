// Many files, one after the other, with a report on all of them.
#pragma once

#include "app/file_validation.h"
#include "app/input_files.h"
#include "app/repeated_guides.h"
#include "data/file_history.h"
#include "report/report_writer.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace conferix {

/// What a list of files shows of one.
struct TBatchRow {
    std::string File;
    std::optional<TVerdict> Verdict; ///< nothing: not yet validated
    std::string Tipo;                ///< kind and transaction; empty where the file was not identified
    std::string Versao;
    std::size_t Errors = 0;
    std::size_t Warnings = 0;
    std::string Note; ///< why it could not be judged, and guides that another file holds as well

    std::string_view VerdictText() const;
    /// What the history keeps of a validated file.
    TValidationRecord Record() const;
};

/// Validates files, each when it is asked to; who shows them lives on between two of them. Reports are made
/// of what was validated so far: their texts wait in temporary files, not in memory. For one thread.
class TBatchValidation {
  public:
    TBatchValidation(TFileValidator validator, std::vector<TInput> inputs);
    /// Files and folders, with their subfolders, by the installed schemas and terminology and the rules that
    /// are switched on. Raises EInvalidConfig.
    static std::unique_ptr<TBatchValidation> OfInstalled(const std::vector<std::string>& names);
    ~TBatchValidation();
    TBatchValidation(const TBatchValidation&) = delete;
    TBatchValidation& operator=(const TBatchValidation&) = delete;

    const std::vector<TBatchRow>& Rows() const { return rows_; }
    std::size_t Done() const { return done_; }
    bool Finished() const { return done_ == rows_.size(); }
    const TReportTotals& Totals() const { return totals_; }

    /// Validates the next file, of row Done(). Not once it is Finished.
    void ValidateNext();

    /// The report on the files validated so far: json or csv. Raises EFileNotWritten where it could not wait.
    std::string Report(std::string_view formato) const;
    /// The same as a file: in the format that its extension names (*.json, *.csv), else JSON. Raises
    /// EFileNotWritten.
    void SaveReport(const std::filesystem::path& file) const;

  private:
    class TSpool;

    void NoteRepeated(std::size_t row, const TValidateArgs& validation);

    TFileValidator validator_;
    std::vector<TInput> inputs_;
    std::vector<TBatchRow> rows_;
    std::size_t done_ = 0;
    TReportTotals totals_{false};
    std::vector<TFileSummary> summaries_;
    std::vector<std::unique_ptr<TSpool>> spools_; ///< one a format
    TRepeatedGuides repeated_;
};

} // namespace conferix
