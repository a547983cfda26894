// The system's calls on open files, alike on all systems. For the sources of this folder.
#pragma once

#include "platform/platform.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace conferix {

/// The last error of the system in this thread.
std::error_code LastError();
/// Raises the last error of the system as std::system_error.
[[noreturn]] void ThrowLastError();

/// What the open file of a descriptor is.
struct TOpenFile {
    bool IsRegular = false;
    TFileStamp Stamp;
};

/// An open file, closed at the end of its life. Members raise std::system_error.
class TDescriptor {
  public:
    explicit TDescriptor(int descriptor);
    TDescriptor(const TDescriptor&) = delete;
    TDescriptor& operator=(const TDescriptor&) = delete;
    ~TDescriptor() { Release(); }

    static int OpenForReading(const std::filesystem::path& file);
    /// Waits some seconds for somebody to read from a pipe; then raises EFileNotWritten.
    static int OpenForWriting(const std::filesystem::path& file);
    /// A file of the user's own, which takes the attributes of another as well.
    static int OpenFinished(const std::filesystem::path& file);
    /// A new file for its owner alone; negative, with LastError(), when there is one of that name.
    static int CreateNew(const std::filesystem::path& file);
    static int OpenForLocking(const std::filesystem::path& file);

    int Get() const { return descriptor_; }
    /// Gives the descriptor away.
    int Give();
    TOpenFile Describe() const;
    /// The first call after OpenForReading, which answers as Read does: waits some seconds for somebody to
    /// write to a pipe; then raises EFileNotRead.
    std::size_t ReadFirst(char* to, std::size_t count, const std::filesystem::path& file) const;
    /// The number of bytes read, 0 at the end.
    std::size_t Read(char* to, std::size_t count) const;
    /// The number of bytes written, at least one of those given.
    std::size_t Write(std::string_view bytes) const;
    void WriteAll(std::string_view bytes) const;
    /// Returns when all is on disk.
    void Flush() const;
    void Release() noexcept;
    /// Network file systems report a failed write no earlier than here.
    void Close();
    /// Closes the file where an open one cannot be renamed.
    void ReleaseForRenaming();
    /// False when another holds the file and `wait` is off.
    bool LockWhole(bool wait) const;
    /// False once the file has lost its name, where the system can tell.
    bool HasName() const;

  private:
    int descriptor_;
};

/// Gives a new file the owner, the rights, the access list and the extended attributes of an old one. Raises
/// EFileNotWritten, in the name of `file`, where one of them cannot be kept.
void TakeAttributes(const TDescriptor& descriptor, const std::filesystem::path& of,
                    const std::filesystem::path& file);
/// Gives a new file the rights that any new file of the user has.
void TakeUsualRights(const TDescriptor& descriptor);
/// Raises EFileNotWritten, in the name of `file`, for a file that must not be replaced: write-protected, or
/// with further names that would go on naming the old content. Where an open file cannot be replaced, waits
/// up to `patience` for others to close it, then raises std::system_error.
void CheckReplaceable(const std::filesystem::path& target, const std::filesystem::path& file,
                      std::chrono::milliseconds patience);
/// For programs that open each new file for a moment, as scanners for viruses and indexers do.
inline constexpr std::chrono::milliseconds kMoment{500};
/// Why a file with further names is not replaced.
inline constexpr const char* kOtherNames =
    "o arquivo tem outros nomes (ligações físicas), que continuariam com o conteúdo "
    "antigo; grave com outro nome";
/// Removes a file unless a living process holds it locked.
void RemoveIfUnheld(const std::filesystem::path& file);
/// Puts a file in the place of another, and the folder on disk.
void RenameDurably(const std::filesystem::path& from, const std::filesystem::path& to, bool replaces);

int ProcessId();

} // namespace conferix
