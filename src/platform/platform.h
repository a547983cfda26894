// The calls that differ between operating systems. No file of other folders asks which system it runs on.
#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <iosfwd>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

namespace conferix {

/// A file or folder that could not be used; the text is `action "file": reason`.
class EFile : public std::runtime_error {
  public:
    EFile(const std::string& action, const std::filesystem::path& file, const std::string& reason);

    const std::filesystem::path& FileName() const { return fileName_; }
    /// The reason alone, in Portuguese, without full stop.
    const std::string& Reason() const { return reason_; }

  private:
    std::filesystem::path fileName_;
    std::string reason_;
};

/// A file could not be read whole.
class EFileNotRead : public EFile {
  public:
    EFileNotRead(const std::filesystem::path& file, const std::string& reason);
};

/// A file could not be written; an older file of that name is as it was.
class EFileNotWritten : public EFile {
  public:
    EFileNotWritten(const std::filesystem::path& file, const std::string& reason);
};

/// A file was not written because it is no longer the one that was read; the reason says what became of it.
class EFileChanged : public EFileNotWritten {
  public:
    EFileChanged(const std::filesystem::path& file, const std::string& reason);
};

/// A folder could not be created.
class EFolderNotCreated : public EFile {
  public:
    EFolderNotCreated(const std::filesystem::path& folder, const std::string& reason);
};

/// Nothing in the environment tells where the user's application data live.
class EDataFolderUnknown : public std::runtime_error {
  public:
    EDataFolderUnknown();
};

/// Separators of the user's locale in UTF-8; both are empty when the locale cannot be read.
struct TRegionalSeparators {
    std::string Decimal;
    std::string Thousands;
};

/// The largest file that is read, in bytes.
inline constexpr std::uintmax_t kMaxFileBytes = 2'000'000'000;

/// Portuguese text of a system error, in lower case and without full stop; for errors that the
/// program does not know, the system's own text.
std::string ReasonText(const std::error_code& error);

/// A path as UTF-8 text.
std::string PathText(const std::filesystem::path& path);

/// The path that a UTF-8 text names.
std::filesystem::path PathFromText(const std::string& text);

/// Value of an environment variable in UTF-8; empty when it is not set.
std::string GetEnvironment(const std::string& name);

/// The file of the running program, links resolved.
std::filesystem::path ExecutablePath();

/// The program's data folder, which need not exist: CONFERIX_DADOS names it whole; else it is
/// "Brenvo/Conferix" under the folder that the system keeps for the user's application data.
/// Raises EDataFolderUnknown.
std::filesystem::path DataFolder();

/// Creates a folder and its parents; an existing folder is left alone. Raises EFolderNotCreated.
void CreateFolder(const std::filesystem::path& folder);

/// By what a file is known to be the one that was read, unchanged.
struct TFileStamp {
    std::uint64_t Device = 0;
    std::uint64_t File = 0;   ///< number within the device
    std::uint64_t Size = 0;   ///< in bytes
    std::int64_t Changed = 0; ///< time of the last change, in the finest unit of the system
    bool operator==(const TFileStamp&) const = default;
};

/// The stamp of a file as it is now; nothing for what is no regular file.
std::optional<TFileStamp> StampOf(const std::filesystem::path& file);

/// All bytes of a file, pipe or device up to its end. `stamp`: set to what the file was before it was read;
/// to nothing for a pipe or device. Raises EFileNotRead, also for more than `limit` bytes and for a pipe to
/// which nobody writes.
std::string ReadWholeFile(const std::filesystem::path& file, std::uintmax_t limit = kMaxFileBytes,
                          std::optional<TFileStamp>* stamp = nullptr);

/// All bytes of a stream up to its end; `name` stands for it in errors. Raises EFileNotRead, also for more
/// than `limit` bytes, of which no more are read.
std::string ReadWholeStream(std::istream& stream, const std::string& name,
                            std::uintmax_t limit = kMaxFileBytes);

/// Replaces the content of a file in one step: the bytes go to a new file beside it, for its owner alone,
/// which is flushed, given the owner, rights, access list and extended attributes of the old one and renamed
/// over it. A symbolic link stays and its target is replaced; a pipe or device is simply written to. Raises
/// EFileNotWritten, after which the old file is untouched and nothing is left beside it; also where something
/// of the old file cannot be kept, and for a file with further hard links. `expected`: raises EFileChanged
/// when the file is another, has changed or is gone. `copy`: what is replaced is kept under this name.
void WriteFileAtomically(const std::filesystem::path& file, std::string_view bytes,
                         const std::optional<TFileStamp>& expected = std::nullopt,
                         const std::filesystem::path& copy = {});

/// A name that no file has: that of `file` with `suffix` at its end, or with "-2", "-3"... after that.
std::filesystem::path FreeName(const std::filesystem::path& file, const std::string& suffix);

/// The same as WriteFileAtomically for a copy of another file, which is as accessible as that one: to its
/// owner alone where that one is gone or others own it.
void WriteCopyAtomically(const std::filesystem::path& file, std::string_view bytes,
                         const std::filesystem::path& original);

/// From here on, signals that end the process remove the temporary files of writing first, and writing beyond
/// the permitted size of files is an error and no end. For programs, at their beginning.
void RemoveTemporaryFilesAtSignals();

/// Puts a finished file, flushed to disk, in the place of another in its folder, whose owner, rights and
/// attributes it takes; who has the old one open goes on reading it or, where the system wants that, has ten
/// seconds to close it. A symbolic link stays and its target is replaced. Raises EFileNotWritten, after which
/// the old file is untouched.
void ReplaceFileBy(const std::filesystem::path& file, const std::filesystem::path& finished);

/// Holds a file for one at a time, between processes and within one. The file is made when it is missing and
/// stays behind; the hold ends with the object or the process.
class TFileLock {
  public:
    /// With `wait`, returns once the file is held; else Held() tells whether it is. Raises
    /// EFileNotWritten.
    TFileLock(const std::filesystem::path& file, bool wait);
    TFileLock(const TFileLock&) = delete;
    TFileLock& operator=(const TFileLock&) = delete;
    ~TFileLock();

    bool Held() const { return descriptor_ >= 0; }

  private:
    int descriptor_ = -1;
};

/// Whether a stream is an interactive terminal.
bool IsTerminal(std::FILE* stream);

/// Decimal and thousands separators of the user's locale, read anew at each call and without
/// touching the locale that the process has set.
TRegionalSeparators RegionalSeparators();

} // namespace conferix
