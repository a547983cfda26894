// What was made of files, remembered until they change.
#pragma once

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace conferix {

/// What tells that a file was not changed since it was looked at.
struct TFileStamp {
    std::filesystem::path Path;
    std::filesystem::file_time_type Time; ///< the earliest one for a file that is not there
    std::uintmax_t Size = 0;
    bool operator==(const TFileStamp&) const = default;
};

/// The present stamp of a file, there or not.
TFileStamp StampOf(const std::filesystem::path& path);

/// Answers that were made of files, by name. Shared by all threads.
template<class Answer>
class TFileMemory {
  public:
    /// The answer of that name, unless one of its files changed since.
    std::optional<Answer> Find(const std::string& name) const {
        const std::lock_guard lock(mutex_);
        const auto found = answers_.find(name);
        if (found == answers_.end() || !std::ranges::all_of(found->second.Files, [](const TFileStamp& file) {
                return StampOf(file.Path) == file;
            }))
            return std::nullopt;
        return found->second.Value;
    }
    /// `files`: what the answer was made of, as it was before that.
    void Keep(const std::string& name, std::vector<TFileStamp> files, Answer answer) {
        const std::lock_guard lock(mutex_);
        answers_.insert_or_assign(name, TEntry{std::move(files), std::move(answer)});
    }

  private:
    struct TEntry {
        std::vector<TFileStamp> Files;
        Answer Value;
    };
    mutable std::mutex mutex_;
    std::map<std::string, TEntry> answers_;
};

} // namespace conferix
