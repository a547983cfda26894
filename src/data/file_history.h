// What the application database keeps of files: which were opened, and what their validations ended with.
#pragma once

#include "data/database.h"
#include "data/quiet_database.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace conferix {

/// One validation; nothing of what the file says stands in it.
struct TValidationRecord {
    std::string File;          ///< path
    std::string Time;          ///< YYYY-MM-DD HH:MM:SS, local time; set by the history
    std::string Versao;        ///< of the standard; empty where the file was not identified
    std::optional<bool> Valid; ///< nothing where something other than the file kept it from being judged
    std::int64_t Errors = 0;
    std::int64_t Warnings = 0;
};

/// Recent files and the history of validations. A database that is damaged, locked, read-only or of a newer
/// program stops nobody's work: what is to be kept is lost, what is asked for is empty, and the first failure
/// is told. Waits at most a tenth of a second for another program; for one thread.
class TFileHistory {
  public:
    static constexpr std::int64_t kRecentFiles = 15;
    static constexpr std::int64_t kValidations = 5'000; ///< older ones are forgotten

    /// `onFailure`: told once, with a text for the user.
    explicit TFileHistory(TDatabase database, std::function<void(const std::string&)> onFailure = {});

    void NoteOpened(const std::string& file);
    /// Takes a file out of the recent ones.
    void Forget(const std::string& file);
    /// Newest first, at most kRecentFiles.
    std::vector<std::string> RecentFiles();

    /// Notes a validation, now. One that ends like the one of the same file before takes its place.
    void NoteValidated(const TValidationRecord& record);
    /// Newest first.
    std::vector<TValidationRecord> Validations();
    /// Empties both lists.
    void Clear();

  private:
    TQuietDatabase database_;
};

} // namespace conferix
