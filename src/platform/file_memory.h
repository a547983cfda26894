// What was made of files, remembered until they change.
#pragma once

#include "platform/platform.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace conferix {

/// A file as it was when it was looked at.
struct TSeenFile {
    std::filesystem::path Path;
    std::optional<TFileStamp> Stamp; ///< nothing for a file that is not there
    bool operator==(const TSeenFile&) const = default;
};
inline TSeenFile SeeFile(const std::filesystem::path& path) {
    return {path, StampOf(path)};
}

/// Answers that were made of files, by name. Shared by all threads.
template<class Answer>
class TFileMemory {
  public:
    /// The answer of that name, unless one of its files changed since.
    std::optional<Answer> Find(const std::string& name) const {
        // Files are looked at outside of the lock: other threads ask meanwhile.
        const std::shared_ptr<const TEntry> entry = Entry(name);
        if (entry == nullptr || !std::ranges::all_of(entry->Files, [](const TSeenFile& file) {
                return SeeFile(file.Path) == file;
            }))
            return std::nullopt;
        return entry->Value;
    }
    /// `files`: what the answer was made of, as it was before that.
    void Keep(const std::string& name, std::vector<TSeenFile> files, Answer answer) {
        auto entry = std::make_shared<const TEntry>(TEntry{std::move(files), std::move(answer)});
        const std::lock_guard lock(mutex_);
        answers_.insert_or_assign(name, std::move(entry));
    }

  private:
    struct TEntry {
        std::vector<TSeenFile> Files;
        Answer Value;
    };
    std::shared_ptr<const TEntry> Entry(const std::string& name) const {
        const std::lock_guard lock(mutex_);
        const auto found = answers_.find(name);
        return found != answers_.end() ? found->second : nullptr;
    }

    mutable std::mutex mutex_;
    std::map<std::string, std::shared_ptr<const TEntry>> answers_;
};

} // namespace conferix
