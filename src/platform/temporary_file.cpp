#include "platform/temporary_file.h"

#include "platform/system_calls.h"
#include "platform/whole_path.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <map>
#include <mutex>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace conferix {

namespace fs = std::filesystem;

namespace {

using TNameChar = fs::path::value_type;

constexpr int kMaxNameAttempts = 1000;
constexpr std::string_view kStart = ".conferix-";
constexpr std::string_view kEnd = ".tmp";

// Names of the files that a signal removes; those beyond are left to the next save.
std::array<std::atomic<TNameChar*>, 64> registeredNames;
static_assert(std::atomic<TNameChar*>::is_always_lock_free); // a signal handler reads them

// Calls nothing but what a signal handler may.
void RemoveRegistered() {
    for (std::atomic<TNameChar*>& name : registeredNames) {
        if (const TNameChar* path = name.exchange(nullptr)) {
            RemoveNow(path);
        }
    }
}

std::atomic<TNameChar*>* Register(const fs::path& path) {
    const fs::path::string_type& text = path.native();
    auto* copy = new TNameChar[text.size() + 1];
    std::copy_n(text.c_str(), text.size() + 1, copy);
    for (std::atomic<TNameChar*>& name : registeredNames) {
        TNameChar* free = nullptr;
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

bool IsTemporaryName(const fs::path& file) {
    const std::string name = PathText(file);
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
    descriptor_.ReleaseForRenaming();
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
        } else if (const std::error_code failure = LastError(); failure != std::errc::file_exists) {
            path_.clear();
            Forget();
            throw std::system_error(failure);
        }
        Forget();
    }
    throw std::system_error(std::make_error_code(std::errc::file_exists));
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
    if (!IsDue(AbsolutePath(place))) {
        return;
    }
    for (auto entry = fs::directory_iterator(place, unreadable);
         !unreadable && entry != fs::directory_iterator(); entry.increment(unreadable)) {
        if (IsTemporaryName(entry->path().filename()) && entry->is_regular_file(unreadable)) {
            RemoveIfUnheld(entry->path());
        }
    }
}

void RemoveTemporaryFilesAtSignals() {
    HandleEndingSignals(&CleanUpAndEnd);
}

} // namespace conferix
