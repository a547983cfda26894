// Files that exist only until they take the place of another. For the sources of this folder.
#pragma once

#include "platform/file_calls.h"

#include <atomic>
#include <filesystem>

namespace conferix {

/// A new file in the folder of its target, for its owner alone; gone at the end of its life, and at the
/// signals of RemoveTemporaryFilesAtSignals(), unless renamed over the target. It is locked while it lives,
/// so that those that a killed process left can be told from the others. Raises std::system_error.
class TTemporaryFile {
  public:
    explicit TTemporaryFile(const std::filesystem::path& target);
    TTemporaryFile(const TTemporaryFile&) = delete;
    TTemporaryFile& operator=(const TTemporaryFile&) = delete;
    ~TTemporaryFile();

    const TDescriptor& Descriptor() const { return descriptor_; }
    void RenameTo(const std::filesystem::path& target, bool replaces);

    /// Removes the temporary files in a folder that no living process holds; of calls shortly after one
    /// another for one folder only the first looks.
    static void RemoveStale(const std::filesystem::path& folder);

  private:
    int Create(const std::filesystem::path& target);
    void Forget();

    std::filesystem::path path_;
    std::atomic<std::filesystem::path::value_type*>* registered_ = nullptr; ///< where a signal finds the name
    TDescriptor descriptor_;
};

} // namespace conferix
