// The calls of POSIX systems on files.
#include "platform/file_calls.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>
#if defined(__linux__)
#include <sys/xattr.h>
#elif defined(__APPLE__)
#include <copyfile.h>
#endif

namespace conferix {

namespace fs = std::filesystem;

namespace {

// Some systems take no more than 2^31 - 1 bytes in one call.
constexpr std::size_t kMaxTransfer = 1U << 30;

using TClock = std::chrono::steady_clock;
// How long the other side of a pipe may take to come.
constexpr std::chrono::milliseconds kPipePatience{3000};
constexpr std::chrono::milliseconds kPipeLook{20};

bool IsPipe(const fs::path& file) {
    std::error_code ignored;
    return fs::is_fifo(file, ignored);
}

// From here on, calls on the descriptor wait.
void MakeBlocking(int descriptor) {
    ::fcntl(descriptor, F_SETFL, ::fcntl(descriptor, F_GETFL) & ~O_NONBLOCK);
}

TFileStamp MakeStamp(const struct stat& info) {
#if defined(__APPLE__)
    const timespec& changed = info.st_ctimespec;
#else
    const timespec& changed = info.st_ctim;
#endif
    constexpr std::int64_t kNanoseconds = 1'000'000'000;
    return {static_cast<std::uint64_t>(info.st_dev), static_cast<std::uint64_t>(info.st_ino),
            static_cast<std::uint64_t>(info.st_size),
            static_cast<std::int64_t>(changed.tv_sec) * kNanoseconds + changed.tv_nsec};
}

} // namespace

std::error_code LastError() {
    return {errno, std::generic_category()};
}

// Opening a pipe would wait for a writer, for ever where none comes.
int TDescriptor::OpenForReading(const fs::path& file) {
    return ::open(file.c_str(), O_RDONLY | O_CLOEXEC | (IsPipe(file) ? O_NONBLOCK : 0));
}

std::size_t TDescriptor::ReadFirst(char* to, std::size_t count, const fs::path& file) const {
    if ((::fcntl(descriptor_, F_GETFL) & O_NONBLOCK) == 0) {
        return Read(to, count);
    }
    for (const TClock::time_point start = TClock::now();;) {
        const ssize_t got = ::read(descriptor_, to, std::min(count, kMaxTransfer));
        if (got > 0 || (got < 0 && errno == EAGAIN)) { // somebody writes
            MakeBlocking(descriptor_);
            return got > 0 ? static_cast<std::size_t>(got) : Read(to, count);
        }
        if (got < 0 && errno != EINTR) {
            ThrowLastError();
        }
        pollfd what = {descriptor_, POLLIN, 0};
        if (::poll(&what, 1, static_cast<int>(kPipeLook.count())) > 0 && (what.revents & POLLIN) == 0) {
            return 0; // somebody was there and left
        }
        if (TClock::now() - start > kPipePatience) {
            throw EFileNotRead(file, "é um canal (FIFO) em que nenhum programa escreve");
        }
    }
}

int TDescriptor::OpenForWriting(const fs::path& file) {
    if (!IsPipe(file)) {
        return ::open(file.c_str(), O_WRONLY | O_CLOEXEC);
    }
    const TClock::time_point start = TClock::now();
    for (;;) {
        const int descriptor = ::open(file.c_str(), O_WRONLY | O_CLOEXEC | O_NONBLOCK);
        if (descriptor >= 0) {
            MakeBlocking(descriptor);
            return descriptor;
        }
        if (errno != ENXIO) {
            return descriptor;
        }
        if (TClock::now() - start > kPipePatience) {
            throw EFileNotWritten(file, "é um canal (FIFO) de que nenhum programa lê");
        }
        std::this_thread::sleep_for(kPipeLook);
    }
}

int TDescriptor::OpenFinished(const fs::path& file) {
    return ::open(file.c_str(), O_WRONLY | O_CLOEXEC);
}

int TDescriptor::CreateNew(const fs::path& file) {
    return ::open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
}
int TDescriptor::OpenForLocking(const fs::path& file) {
    return ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
}

TOpenFile TDescriptor::Describe() const {
    struct stat info = {};
    if (::fstat(descriptor_, &info) != 0) {
        ThrowLastError();
    }
    return {S_ISREG(info.st_mode), MakeStamp(info)};
}

std::size_t TDescriptor::Read(char* to, std::size_t count) const {
    for (;;) {
        const ssize_t got = ::read(descriptor_, to, std::min(count, kMaxTransfer));
        if (got >= 0) {
            return static_cast<std::size_t>(got);
        }
        if (errno != EINTR) {
            ThrowLastError();
        }
    }
}

std::size_t TDescriptor::Write(std::string_view bytes) const {
    for (;;) {
        const ssize_t put = ::write(descriptor_, bytes.data(), std::min(bytes.size(), kMaxTransfer));
        if (put >= 0) {
            return static_cast<std::size_t>(put);
        }
        if (errno != EINTR) {
            ThrowLastError();
        }
    }
}

void TDescriptor::Flush() const {
    if (::fsync(descriptor_) != 0) {
        ThrowLastError();
    }
}

void TDescriptor::Release() noexcept {
    if (descriptor_ >= 0) {
        ::close(std::exchange(descriptor_, -1));
    }
}

void TDescriptor::Close() {
    if (::close(std::exchange(descriptor_, -1)) != 0) {
        ThrowLastError();
    }
}

void TDescriptor::ReleaseForRenaming() {} // an open file can be renamed, and its lock stays

bool TDescriptor::LockWhole(bool wait) const {
    while (::flock(descriptor_, wait ? LOCK_EX : LOCK_EX | LOCK_NB) != 0) {
        if (errno == EWOULDBLOCK) {
            return false;
        }
        if (errno != EINTR) {
            ThrowLastError();
        }
    }
    return true;
}

bool TDescriptor::HasName() const {
    struct stat info = {};
    return ::fstat(descriptor_, &info) != 0 || info.st_nlink > 0;
}

std::optional<TFileStamp> StampOf(const fs::path& file) {
    struct stat info = {};
    if (::stat(file.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) {
        return std::nullopt;
    }
    return MakeStamp(info);
}

namespace {

#if defined(__linux__)

[[noreturn]] void RefuseAttribute(const fs::path& file, const std::string& name) {
    throw EFileNotWritten(file, "o atributo \"" + name + "\" do arquivo não pode ser mantido (" +
                                    ReasonText(std::error_code(errno, std::generic_category())) +
                                    "); grave com outro nome");
}

// Two calls of the system, one of them for the size; answers nothing where it has no answer.
template<class TCall>
std::optional<std::string> Ask(TCall call) {
    const ssize_t size = call(nullptr, 0);
    if (size < 0) {
        return std::nullopt;
    }
    std::string answer(static_cast<std::size_t>(size), '\0');
    const ssize_t got = call(answer.data(), answer.size());
    if (got < 0) {
        return std::nullopt;
    }
    answer.resize(static_cast<std::size_t>(got));
    return answer;
}

std::vector<std::string> SplitNames(const std::string& list) {
    std::vector<std::string> names;
    for (std::size_t at = 0; at < list.size(); at = list.find('\0', at) + 1) {
        names.emplace_back(list.c_str() + at);
    }
    return names;
}

// Access lists are extended attributes as well.
void TakeExtendedAttributes(int descriptor, const fs::path& of, const fs::path& file) {
    const auto names = [](const auto& call) { return SplitNames(Ask(call).value_or(std::string())); };
    const auto old = names([&](char* to, std::size_t size) { return ::listxattr(of.c_str(), to, size); });
    for (const std::string& name :
         names([&](char*to, std::size_t size) { return ::flistxattr(descriptor, to, size); })) {
        if (std::ranges::find(old, name) == old.end() && ::fremovexattr(descriptor, name.c_str()) != 0) {
            RefuseAttribute(file, name);
        }
    }
    for (const std::string& name : old) {
        const auto value =
            Ask([&](char* to, std::size_t size) { return ::getxattr(of.c_str(), name.c_str(), to, size); });
        const auto present =
            Ask([&](char* to, std::size_t size) { return ::fgetxattr(descriptor, name.c_str(), to, size); });
        if (!value || (value != present &&
                       ::fsetxattr(descriptor, name.c_str(), value->data(), value->size(), 0) != 0)) {
            RefuseAttribute(file, name);
        }
    }
}

#elif defined(__APPLE__)

void TakeExtendedAttributes(int descriptor, const fs::path& of, const fs::path& file) {
    const TDescriptor old(::open(of.c_str(), O_RDONLY | O_CLOEXEC));
    if (::fcopyfile(old.Get(), descriptor, nullptr, COPYFILE_ACL | COPYFILE_XATTR) != 0) {
        throw EFileNotWritten(file, "os atributos do arquivo não podem ser mantidos; grave com outro nome");
    }
}

#else

void TakeExtendedAttributes(int /*descriptor*/, const fs::path& /*of*/, const fs::path& /*file*/) {}

#endif

// The rights of a new file without the user's file creation mask, which can only be read by setting it: for a
// moment to the strictest.
mode_t UsualRights() {
    static std::mutex mutex;
    const std::lock_guard lock(mutex);
    const mode_t mask = ::umask(077);
    ::umask(mask);
    return 0666 & ~mask;
}

} // namespace

void TakeAttributes(const TDescriptor& descriptor, const fs::path& of, const fs::path& file) {
    struct stat old = {};
    struct stat own = {};
    if (::stat(of.c_str(), &old) != 0 || ::fstat(descriptor.Get(), &own) != 0) {
        ThrowLastError();
    }
    const bool othersOwn = own.st_uid != old.st_uid || own.st_gid != old.st_gid;
    if (othersOwn && ::fchown(descriptor.Get(), old.st_uid, old.st_gid) != 0) {
        throw EFileNotWritten(file,
                              "o dono e o grupo do arquivo não podem ser mantidos; grave com outro nome");
    }
    // An access list first: without it, rights that it narrows would stand alone.
    TakeExtendedAttributes(descriptor.Get(), of, file);
    constexpr mode_t kRights = 07777;
    if (::fstat(descriptor.Get(), &own) != 0) {
        ThrowLastError();
    }
    if ((othersOwn || ((own.st_mode ^ old.st_mode) & kRights) != 0) &&
        ::fchmod(descriptor.Get(), old.st_mode & kRights) != 0) {
        ThrowLastError();
    }
}

void TakeUsualRights(const TDescriptor& descriptor) {
    struct stat own = {};
    const mode_t rights = UsualRights();
    if (::fstat(descriptor.Get(), &own) == 0 && (own.st_mode & 0777) != rights &&
        ::fchmod(descriptor.Get(), rights) != 0) {
        ThrowLastError();
    }
}

// Renaming asks for rights on the folder alone; a write-protected file is still not to be replaced.
void CheckReplaceable(const fs::path& target, const fs::path& file, std::chrono::milliseconds /*patience*/) {
    if (::access(target.c_str(), W_OK) != 0) {
        ThrowLastError();
    }
    if (fs::hard_link_count(target) > 1) {
        throw EFileNotWritten(file, kOtherNames);
    }
}

void RemoveIfUnheld(const fs::path& file) {
    const int descriptor = ::open(file.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) {
        return;
    }
    const TDescriptor held(descriptor);
    try {
        if (held.LockWhole(false)) {
            ::unlink(file.c_str());
        }
    } catch (const std::system_error&) { // NOLINT(bugprone-empty-catch): without locks all are taken for held
    }
}

void RenameDurably(const fs::path& from, const fs::path& to, bool /*replaces*/) {
    fs::rename(from, to);
    // The new name survives a power failure only once the folder is on disk. The content is in place
    // already, so file systems that cannot flush a folder are no failure.
    const fs::path folder = to.has_parent_path() ? to.parent_path() : fs::path(".");
    const int descriptor = ::open(folder.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor >= 0) {
        ::fsync(descriptor);
        ::close(descriptor);
    }
}

int ProcessId() {
    return static_cast<int>(::getpid());
}

} // namespace conferix
