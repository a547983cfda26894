#include "platform/temporary_file.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <map>
#include <mutex>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#if !defined(_WIN32)
#include <fcntl.h>
#include <unistd.h>
#endif

namespace conferix {

namespace fs = std::filesystem;

namespace {

constexpr int kMaxNameAttempts = 1000;
constexpr std::string_view kStart = ".conferix-";
constexpr std::string_view kEnd = ".tmp";

// Names of the files that a signal removes; those beyond are left to the next save.
std::array<std::atomic<char*>, 64> registeredNames;
static_assert(std::atomic<char*>::is_always_lock_free); // a signal handler reads them

// Calls nothing but what a signal handler may.
void RemoveRegistered() {
    for (std::atomic<char*>& name : registeredNames) {
        if (const char* path = name.exchange(nullptr)) {
#if defined(_WIN32)
            std::remove(path);
#else
            ::unlink(path);
#endif
        }
    }
}

std::atomic<char*>* Register(const fs::path& path) {
    const std::string text = path.string();
    char* copy = new char[text.size() + 1];
    std::memcpy(copy, text.c_str(), text.size() + 1);
    for (std::atomic<char*>& name : registeredNames) {
        char* free = nullptr;
        if (name.compare_exchange_strong(free, copy)) {
            return &name;
        }
    }
    delete[] copy;
    return nullptr;
}

std::string NewName() {
    thread_local std::mt19937_64 random(std::random_device{}());
    std::array<char, 17> number{};
    std::snprintf(number.data(), number.size(), "%016llx", static_cast<unsigned long long>(random()));
    return std::string(kStart) + std::to_string(ProcessId()) + "-" + number.data() + std::string(kEnd);
}

bool IsTemporaryName(const std::string& name) {
    return name.starts_with(kStart) && name.ends_with(kEnd);
}

// Where a file system knows no locks, living files cannot be told from dead ones, and all are kept.
bool TryLock(const TDescriptor& descriptor, bool wait) {
    try {
        return descriptor.LockWhole(wait);
    } catch (const std::system_error&) {
        return false;
    }
}

#if defined(_WIN32)

void RemoveIfStale(const fs::path& file) {
    std::error_code openByAnother;
    fs::remove(file, openByAnother);
}

#else

void RemoveIfStale(const fs::path& file) {
    const int descriptor = ::open(file.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) {
        return;
    }
    const TDescriptor held(descriptor);
    if (TryLock(held, false)) {
        ::unlink(file.c_str());
    }
}

#endif

// Raised again, the signal ends the process as it would have.
extern "C" void CleanUpAndEnd(int signal) {
    RemoveRegistered();
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

// Whether a folder was looked through lately; a batch that writes many files into one folder looks but once.
bool IsDue(const fs::path& folder) {
    using TClock = std::chrono::steady_clock;
    constexpr std::chrono::seconds kPause{10};
    static std::mutex mutex;
    static std::map<fs::path, TClock::time_point> looked;
    const std::lock_guard lock(mutex);
    const TClock::time_point now = TClock::now();
    const auto [entry, isNew] = looked.try_emplace(folder, now);
    const bool due = isNew || now - entry->second > kPause;
    if (due) {
        entry->second = now;
    }
    return due;
}

} // namespace

TTemporaryFile::TTemporaryFile(const fs::path& target) : descriptor_(Create(target)) {}

TTemporaryFile::~TTemporaryFile() {
    if (!path_.empty()) {
        descriptor_.Release(); // an open file cannot be removed everywhere
        std::error_code ignored;
        fs::remove(path_, ignored);
        Forget();
    }
}

void TTemporaryFile::RenameTo(const fs::path& target, bool replaces) {
#if defined(_WIN32)
    descriptor_.Close(); // an open file cannot be renamed
#endif
    RenameDurably(path_, target, replaces);
    path_.clear();
    Forget();
}

int TTemporaryFile::Create(const fs::path& target) {
    for (int attempt = 0; attempt < kMaxNameAttempts; ++attempt) {
        path_ = target.parent_path() / NewName();
        registered_ = Register(path_);
        const int descriptor = TDescriptor::CreateNew(path_);
        if (descriptor >= 0) {
            TDescriptor created(descriptor);
            TryLock(created, true);
            // Between the two calls another process may have taken it for one without owner.
            if (created.HasName()) {
                return created.Give();
            }
        } else if (errno != EEXIST) {
            const int failure = errno;
            path_.clear();
            Forget();
            errno = failure;
            break;
        }
        Forget();
    }
    return -1;
}

void TTemporaryFile::Forget() {
    if (registered_ != nullptr) {
        // A signal that has taken the name uses it still.
        delete[] std::exchange(registered_, nullptr)->exchange(nullptr);
    }
}

void TTemporaryFile::RemoveStale(const fs::path& folder) {
    const fs::path place = folder.empty() ? fs::path(".") : folder;
    std::error_code unreadable;
    if (!IsDue(fs::absolute(place, unreadable))) {
        return;
    }
    for (auto entry = fs::directory_iterator(place, unreadable);
         !unreadable && entry != fs::directory_iterator(); entry.increment(unreadable)) {
        if (IsTemporaryName(entry->path().filename().string()) && entry->is_regular_file(unreadable)) {
            RemoveIfStale(entry->path());
        }
    }
}

void RemoveTemporaryFilesAtSignals() {
#if defined(_WIN32)
    for (const int signal : {SIGINT, SIGTERM}) {
        std::signal(signal, &CleanUpAndEnd);
    }
#else
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
        struct sigaction before = {};
        ::sigaction(signal, nullptr, &before);
        if (before.sa_handler == SIG_IGN) {
            continue; // as nohup asks for
        }
        struct sigaction handler = {};
        handler.sa_handler = &CleanUpAndEnd;
        ::sigaction(signal, &handler, nullptr);
    }
    // The write that passes the limit fails instead, which is told like any other failure.
    std::signal(SIGXFSZ, SIG_IGN);
#endif
}

} // namespace conferix
