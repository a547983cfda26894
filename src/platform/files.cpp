#include "platform/file_calls.h"
#include "platform/format_settings.h"
#include "platform/platform.h"
#include "platform/portable_name.h"
#include "platform/temporary_file.h"

#include <algorithm>
#include <chrono>
#include <istream>
#include <new>
#include <system_error>

namespace conferix {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kFirstBlock = 65536;
/// Read at once. A string is filled with zeros as it grows, which costs little where they stay in the cache.
constexpr std::size_t kPiece = std::size_t{256} * 1024;
constexpr int kMaxLinks = 40;
// For those who read a base of data: the validation of a large file.
constexpr std::chrono::milliseconds kOneReading{10000};

const std::string kIsFolder = "é uma pasta, não um arquivo";
const std::string kNoMemory = "memória insuficiente";

// The file that a chain of symbolic links ends in, whether or not it exists.
fs::path FollowLinks(fs::path file) {
    for (int links = 0; fs::is_symlink(fs::symlink_status(file)); ++links) {
        if (links == kMaxLinks) {
            throw std::system_error(std::make_error_code(std::errc::too_many_symbolic_link_levels));
        }
        file = file.parent_path() / fs::read_symlink(file);
    }
    return file;
}

void RequireUnchanged(const fs::path& target, const TFileStamp& expected, const fs::path& file) {
    const std::optional<TFileStamp> now = StampOf(target);
    if (!now) {
        throw EFileChanged(file, "outro programa o removeu depois que foi lido");
    }
    if (now->Device != expected.Device || now->File != expected.File) {
        throw EFileChanged(file, "outro programa o substituiu depois que foi lido");
    }
    if (*now != expected) {
        throw EFileChanged(file, "outro programa o alterou depois que foi lido");
    }
}

void WriteInto(const fs::path& pipeOrDevice, std::string_view bytes) {
    TDescriptor descriptor(TDescriptor::OpenForWriting(pipeOrDevice));
    descriptor.WriteAll(bytes);
    descriptor.Close();
}

// Gives a copy the attributes of its original, or leaves it to its owner alone.
void TakeAttributesIfPossible(const TDescriptor& copy, const fs::path& original, const fs::path& file) {
    try {
        TakeAttributes(copy, original, file);
    } catch (const EFileNotWritten&) {   // NOLINT(bugprone-empty-catch): what could not be taken stays strict
    } catch (const std::system_error&) { // NOLINT(bugprone-empty-catch): the original is gone
    }
}

/// Why a file could not be used. Windows finds no file where a part of its path is none that could hold it,
/// or where its name is longer than names may be.
std::string FileReason(const fs::path& file, const std::error_code& failure) {
    constexpr std::size_t kMaxName = 255;
    if (failure != std::errc::no_such_file_or_directory) {
        return ReasonText(failure);
    }
    if (file.filename().native().size() > kMaxName) {
        return ReasonText(std::make_error_code(std::errc::filename_too_long));
    }
    for (fs::path part = file.parent_path(); part.has_relative_path(); part = part.parent_path()) {
        std::error_code unreachable;
        const fs::file_status status = fs::status(part, unreachable);
        if (fs::exists(status)) {
            return ReasonText(fs::is_directory(status) ? failure
                                                       : std::make_error_code(std::errc::not_a_directory));
        }
    }
    return ReasonText(failure);
}

/// Why a file was not written; of one whose folder is missing no file is looked for.
std::string ReasonNotWritten(const fs::path& file, const std::error_code& failure) {
    const fs::path folder = file.parent_path();
    std::error_code unreachable;
    return failure == std::errc::no_such_file_or_directory && !folder.empty() &&
                   fs::status(folder, unreachable).type() == fs::file_type::not_found
               ? "a pasta \"" + PathText(folder) + "\" não existe"
               : FileReason(file, failure);
}

/// Writes bytes into a new file, gives it what `takeAttributes` says and puts it in its place; `keep` is
/// called with the old file when nothing but that is left to do.
template<class TTake, class TKeep>
void Replace(const fs::path& file, std::string_view bytes, const std::optional<TFileStamp>& expected,
             TTake takeAttributes, TKeep keep) {
    std::error_code ignored;
    const fs::file_status status = fs::status(file, ignored);
    if (fs::is_directory(status)) {
        throw EFileNotWritten(file, kIsFolder);
    }
    if (NamesDevice(file)) {
        throw EFileNotWritten(file, kDeviceReason);
    }
    try {
        if (fs::exists(status) && !fs::is_regular_file(status)) {
            return WriteInto(file, bytes);
        }
        const fs::path target = FollowLinks(file);
        const bool replaces = fs::exists(target);
        if (replaces) {
            CheckReplaceable(target, file, kMoment);
        }
        TTemporaryFile::RemoveStale(target.parent_path());
        TTemporaryFile temporary(target);
        temporary.Descriptor().WriteAll(bytes);
        if (expected) {
            RequireUnchanged(target, *expected, file);
        }
        takeAttributes(temporary.Descriptor(), target, replaces);
        temporary.Descriptor().Flush();
        if (replaces) {
            keep(target);
        }
        if (expected) {
            RequireUnchanged(target, *expected, file);
        }
        temporary.RenameTo(target, replaces);
    } catch (const std::system_error& failure) {
        throw EFileNotWritten(file, ReasonNotWritten(file, failure.code()));
    }
}

std::string TooLargeText(std::uintmax_t limit) {
    return "tem mais de " + TFormatSettings::Regional().Count(static_cast<std::int64_t>(limit)) +
           " bytes, o máximo que o programa lê";
}

std::string ReadAll(const fs::path& file, std::uintmax_t limit, std::optional<TFileStamp>* stamp) {
    const TDescriptor descriptor(TDescriptor::OpenForReading(file));
    const TOpenFile opened = descriptor.Describe();
    if (stamp != nullptr) {
        *stamp = opened.IsRegular ? std::optional(opened.Stamp) : std::nullopt;
    }
    const std::uint64_t expected = opened.IsRegular ? opened.Stamp.Size : 0;
    if (expected > limit) {
        throw EFileNotRead(file, TooLargeText(limit));
    }
    // One byte more than expected, so that the end of the file shows in the second call.
    const std::size_t first = expected > 0 ? static_cast<std::size_t>(expected) + 1 : kFirstBlock;
    std::string content;
    // Room behind the content for letters that take two bytes in UTF-8; while it is not used it costs
    // nothing.
    content.reserve(first + first / 16);
    std::size_t filled = 0;
    for (std::size_t got = 1; got > 0; filled += got) {
        if (filled > limit) {
            throw EFileNotRead(file, TooLargeText(limit));
        }
        const std::size_t room = first > filled ? first - filled : kPiece;
        content.resize(filled + std::min(room, kPiece));
        char* const to = content.data() + filled;
        const std::size_t count = content.size() - filled;
        got = filled == 0 ? descriptor.ReadFirst(to, count, file) : descriptor.Read(to, count);
    }
    content.resize(filled);
    return content;
}

} // namespace

TFileLock::TFileLock(const fs::path& file, bool wait) {
    try {
        TDescriptor descriptor(TDescriptor::OpenForLocking(file));
        if (descriptor.LockWhole(wait)) {
            descriptor_ = descriptor.Give();
        }
    } catch (const std::system_error& error) {
        throw EFileNotWritten(file, ReasonText(error.code()));
    }
}

TFileLock::~TFileLock() {
    if (Held()) {
        const TDescriptor released(descriptor_);
    }
}

std::string ReadWholeFile(const fs::path& file, std::uintmax_t limit, std::optional<TFileStamp>* stamp) {
    std::error_code ignored;
    if (fs::is_directory(file, ignored)) {
        throw EFileNotRead(file, kIsFolder);
    }
    if (NamesDevice(file)) {
        throw EFileNotRead(file, kDeviceReason);
    }
    try {
        return ReadAll(file, limit, stamp);
    } catch (const std::system_error& failure) {
        throw EFileNotRead(file, FileReason(file, failure.code()));
    } catch (const std::bad_alloc&) {
        throw EFileNotRead(file, kNoMemory);
    }
}

std::string ReadWholeStream(std::istream& stream, const std::string& name, std::uintmax_t limit) {
    const fs::path file = PathFromText(name);
    try {
        std::string content;
        std::string block(kFirstBlock, '\0');
        while (stream.read(block.data(), static_cast<std::streamsize>(block.size())), stream.gcount() > 0) {
            content.append(block, 0, static_cast<std::size_t>(stream.gcount()));
            if (content.size() > limit) {
                throw EFileNotRead(file, TooLargeText(limit));
            }
        }
        if (stream.bad()) {
            throw EFileNotRead(file, ReasonText(std::make_error_code(std::errc::io_error)));
        }
        return content;
    } catch (const std::bad_alloc&) {
        throw EFileNotRead(file, kNoMemory);
    }
}

void WriteFileAtomically(const fs::path& file, std::string_view bytes,
                         const std::optional<TFileStamp>& expected, const fs::path& copy) {
    Replace(
        file, bytes, expected,
        [&](const TDescriptor& written, const fs::path& target, bool replaces) {
            if (replaces) {
                TakeAttributes(written, target, file);
            } else {
                TakeUsualRights(written);
            }
        },
        [&](const fs::path& target) {
            if (!copy.empty()) {
                WriteCopyAtomically(copy, ReadWholeFile(target), target);
            }
        });
}

fs::path FreeName(const fs::path& file, const std::string& suffix) {
    fs::path free = file;
    free += suffix;
    std::error_code unreadable;
    for (int number = 2; fs::exists(fs::symlink_status(free, unreadable)); ++number) {
        (free = file) += suffix + '-' + std::to_string(number);
    }
    return free;
}

void WriteCopyAtomically(const fs::path& file, std::string_view bytes, const fs::path& original) {
    Replace(
        file, bytes, std::nullopt,
        [&](const TDescriptor& written, const fs::path&, bool) {
            TakeAttributesIfPossible(written, original, file);
        },
        [](const fs::path&) {});
}

void ReplaceFileBy(const fs::path& file, const fs::path& finished) {
    try {
        const fs::path target = FollowLinks(file);
        const bool replaces = fs::exists(target);
        TDescriptor descriptor(TDescriptor::OpenFinished(finished));
        if (replaces) {
            CheckReplaceable(target, file, kOneReading);
            TakeAttributes(descriptor, target, file);
        }
        descriptor.Flush();
        descriptor.Close();
        RenameDurably(finished, target, replaces);
    } catch (const std::system_error& failure) {
        throw EFileNotWritten(file, ReasonText(failure.code()));
    }
}

} // namespace conferix
