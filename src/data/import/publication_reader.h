// Walks through what the user downloaded, down to the rows.
#pragma once

#include "data/import/recognizer.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace conferix {

/// A row that was not understood.
struct TRejectedRow {
    std::string File;      ///< with the names of the packages and the sheet that hold it
    std::uint64_t Row = 0; ///< 1-based; in JSON the object
    std::string Reason;
    bool IsRecord = false; ///< of JSON

    /// "linha 3", "registro 3".
    std::string Place() const { return (IsRecord ? "registro " : "linha ") + std::to_string(Row); }
};

/// Takes what is read.
class IPublicationSink {
  public:
    IPublicationSink() = default;
    IPublicationSink(const IPublicationSink&) = delete;
    IPublicationSink& operator=(const IPublicationSink&) = delete;
    virtual ~IPublicationSink() = default;

    /// `isHistory`: from a list of changes only.
    virtual void OnRow(const TPublishedRow& row, bool isHistory) = 0;
    virtual void OnRejected(TRejectedRow line) = 0;
    /// A file inside of a package that holds no terminology.
    virtual void OnPassedOver(const std::string& file) = 0;
    /// A file or sheet with terms of a table that has dates, but no column that is known as a date.
    virtual void OnMissingDates(const std::string& file) = 0;
    /// How much of the file is read, 0 to 1; may raise to stop.
    virtual void OnProgress(const std::string& what, double fraction) = 0;
};

/// Whether a file in a folder or package may hold terminology: by its ending, and not a lock file.
bool MayHoldTerminology(const std::filesystem::path& file);

/// Reads one file of any layout. Raises EInvalidPublication and what the sink raises.
class TPublicationReader {
  public:
    /// `workFolder`: an existing folder for unpacked files, which are removed after use.
    TPublicationReader(std::filesystem::path workFolder, IPublicationSink& sink)
        : workFolder_(std::move(workFolder)), sink_(sink) {}

    void Read(const std::filesystem::path& file);

  private:
    /// A part of the user's file: its share of the progress.
    struct TPart {
        std::filesystem::path ShownAs;
        std::string Table; ///< that the names of the packages speak of
        double From = 0;
        double To = 1;
        int Depth = 0;
    };

    void ReadFile(const std::filesystem::path& file, const TPart& part);
    void ReadZip(const std::filesystem::path& file, const TPart& part);
    void ReadPackage(TZipArchive& archive, const TPart& part);
    void ReadWorkbook(TZipArchive& archive, const TPart& part);
    void ReadStream(IByteSource& source, std::uint64_t bytes, const TPart& part);
    TRowHandler Handler(TRecognizer& recognizer, std::string where, bool isJson);

    std::filesystem::path workFolder_;
    IPublicationSink& sink_;
};

} // namespace conferix
