// The calls of POSIX systems: folders, environment, terminal, locale, libraries.
#include "platform/listening_port.h"
#include "platform/platform.h"
#include "platform/portable_name.h"
#include "platform/program.h"
#include "platform/shared_library.h"
#include "platform/spool_file.h"
#include "platform/system_calls.h"
#include "platform/system_proxy.h"
#include "platform/terminal.h"
#include "platform/whole_path.h"

#include <csignal>
#include <cstdlib>
#include <memory>

#include <dlfcn.h>
#include <langinfo.h>
#include <locale.h>
#include <pwd.h>
#include <sys/socket.h>
#include <unistd.h>
#if defined(__APPLE__)
#include <mach-o/dyld.h>
#include <xlocale.h>
#endif

namespace conferix {

namespace fs = std::filesystem;

namespace {

// Locale data come in the locale's own encoding: UTF-8, or one that agrees with Latin-1 in the
// characters used as separators.
std::string LatinToUtf8(const std::string& text) {
    const bool isUtf8 = text.empty() || static_cast<unsigned char>(text.front()) < 0x80 || text.size() > 1;
    if (isUtf8) {
        return text;
    }
    const unsigned byte = static_cast<unsigned char>(text.front());
    return {static_cast<char>(0xC0U | (byte >> 6U)), static_cast<char>(0x80U | (byte & 0x3FU))};
}

} // namespace

fs::path UserDataFolder() {
#if !defined(__APPLE__)
    // A relative path there is invalid by the convention that defines the variable.
    fs::path named = GetEnvironment("XDG_DATA_HOME");
    if (named.is_absolute()) {
        return named;
    }
#endif
    fs::path home = GetEnvironment("HOME");
    if (home.empty()) {
        const passwd* user = ::getpwuid(::getuid());
        if (user == nullptr || user->pw_dir == nullptr || *user->pw_dir == '\0') {
            return {};
        }
        home = user->pw_dir;
    }
#if defined(__APPLE__)
    return home / "Library" / "Application Support";
#else
    return home / ".local" / "share";
#endif
}

TSharedLibrary::TSharedLibrary(const std::string& fileName)
    : handle_(::dlopen(fileName.c_str(), RTLD_LAZY | RTLD_LOCAL)) {
    if (handle_ == nullptr) {
        reason_ = ::dlerror();
    }
}

void* TSharedLibrary::Find(const char* function) const {
    return ::dlsym(handle_, function);
}

std::optional<std::string> SystemReason(const std::error_code& /*error*/) {
    return std::nullopt; // all errors of the system are those of the standard
}

std::string SystemMessage(const std::error_code& error) {
    return error.message();
}

fs::path PathFromText(const std::string& text) {
    return std::u8string(text.begin(), text.end());
}

fs::path AbsolutePath(const fs::path& file) {
    return fs::absolute(file);
}

fs::path CanonicalPath(const fs::path& file) {
    std::error_code failure; // links in circles
    const fs::path canonical = fs::weakly_canonical(file, failure);
    return failure ? AbsolutePath(file) : canonical;
}

std::string GetEnvironment(const std::string& name) {
    const char* value = std::getenv(name.c_str());
    return value != nullptr ? value : std::string();
}

fs::path ExecutablePath() {
#if defined(__APPLE__)
    std::uint32_t size = 0;
    _NSGetExecutablePath(nullptr, &size);
    std::string name(size, '\0');
    _NSGetExecutablePath(name.data(), &size);
    return fs::canonical(name.c_str());
#else
    return fs::read_symlink("/proc/self/exe");
#endif
}

std::vector<std::string> CommandLineWords(int argc, char** argv) {
    return {argv + (argc > 0 ? 1 : 0), argv + argc};
}

void PrepareStandardStreams() {} // they are as they should be

void EndNow(int status) {
    std::_Exit(status);
}

bool OpenFilesCanBeReplaced() {
    return true;
}

bool HasDisplay() {
#if defined(__APPLE__)
    return true;
#else
    return !GetEnvironment("QT_QPA_PLATFORM").empty() || !GetEnvironment("DISPLAY").empty() ||
           !GetEnvironment("WAYLAND_DISPLAY").empty();
#endif
}

bool NamesDevice(const fs::path& /*file*/) {
    return false; // devices lie in a folder of their own, where files of a user do not
}

void HandleEndingSignals(void (*handler)(int)) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
        struct sigaction before = {};
        ::sigaction(signal, nullptr, &before);
        if (before.sa_handler == SIG_IGN) {
            continue; // as nohup asks for
        }
        struct sigaction taken = {};
        taken.sa_handler = handler;
        ::sigaction(signal, &taken, nullptr);
    }
    // The write that passes the limit fails instead, which is told like any other failure.
    std::signal(SIGXFSZ, SIG_IGN);
}

void RemoveNow(const fs::path::value_type* file) {
    ::unlink(file);
}

std::FILE* OpenSpoolFile() {
    return std::tmpfile();
}

// Without the option, connections that have ended hold the port for some minutes more.
void ClaimPort(std::uintptr_t socket) {
    const int on = 1;
    ::setsockopt(static_cast<int>(socket), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
}

std::string SystemProxy(const std::string& /*url*/) {
    return {}; // the environment alone counts
}

bool IsTerminal(std::FILE* stream) {
    return ::isatty(::fileno(stream)) != 0;
}

bool TerminalKnowsColours() {
    const std::string terminal = GetEnvironment("TERM");
    return !terminal.empty() && terminal != "dumb";
}

TRegionalSeparators RegionalSeparators() {
    const locale_t users = ::newlocale(LC_NUMERIC_MASK, "", nullptr);
    if (users == nullptr) {
        return {};
    }
    TRegionalSeparators separators = {LatinToUtf8(::nl_langinfo_l(RADIXCHAR, users)),
                                      LatinToUtf8(::nl_langinfo_l(THOUSEP, users))};
    ::freelocale(users);
    return separators;
}

} // namespace conferix
