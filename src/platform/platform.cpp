#include "platform/platform.h"

#include "platform/large_pages.h"
#include "platform/shared_library.h"
#include "platform/terminal.h"

#include <cstdlib>
#include <memory>
#include <utility>

#if defined(_WIN32)
#if !defined(NOMINMAX)
#define NOMINMAX
#endif
#include <windows.h>

#include <io.h>
#else
#include <dlfcn.h>
#include <langinfo.h>
#include <locale.h>
#include <pwd.h>
#include <sys/mman.h>
#include <unistd.h>
#if defined(__APPLE__)
#include <mach-o/dyld.h>
#include <xlocale.h>
#endif
#endif

namespace conferix {

namespace fs = std::filesystem;

namespace {

#if defined(_WIN32)

std::string WideToUtf8(const std::wstring& text) {
    const int length = static_cast<int>(text.size());
    const int needed = WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<std::size_t>(needed), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), length, result.data(), needed, nullptr, nullptr);
    return result;
}

std::string LocaleText(LCTYPE what) {
    wchar_t buffer[16] = {};
    const int length = GetLocaleInfoEx(LOCALE_NAME_USER_DEFAULT, what, buffer, 16);
    return length > 0 ? WideToUtf8(std::wstring(buffer, static_cast<std::size_t>(length - 1)))
                      : std::string();
}

#else

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

#endif

fs::path UserDataFolder() {
#if defined(_WIN32)
    const wchar_t* roaming = _wgetenv(L"APPDATA");
    return roaming != nullptr ? fs::path(roaming) : fs::path();
#else
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
#endif
}

} // namespace

void PreferLargePages(void* memory, std::size_t size) {
#if defined(__linux__)
    void* start = memory;
    if (std::align(kLargePage, kLargePage, start, size) != nullptr) {
        ::madvise(start, size / kLargePage * kLargePage, MADV_HUGEPAGE); // a wish: failing changes nothing
    }
#else
    static_cast<void>(memory);
    static_cast<void>(size);
#endif
}

TSharedLibrary::TSharedLibrary(const std::string& fileName) {
#if defined(_WIN32)
    handle_ = LoadLibraryW(PathFromText(fileName).c_str());
    if (handle_ == nullptr) {
        reason_ = ReasonText({static_cast<int>(GetLastError()), std::system_category()});
    }
#else
    handle_ = ::dlopen(fileName.c_str(), RTLD_LAZY | RTLD_LOCAL);
    if (handle_ == nullptr) {
        reason_ = ::dlerror();
    }
#endif
}

void* TSharedLibrary::Find(const char* function) const {
#if defined(_WIN32)
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(handle_), function));
#else
    return ::dlsym(handle_, function);
#endif
}

EFile::EFile(const std::string& action, const fs::path& file, const std::string& reason)
    : std::runtime_error(action + " \"" + PathText(file) + "\": " + reason), fileName_(file),
      reason_(reason) {}

EFileNotRead::EFileNotRead(const fs::path& file, const std::string& reason)
    : EFile("Não foi possível ler o arquivo", file, reason) {}

EFileNotWritten::EFileNotWritten(const fs::path& file, const std::string& reason)
    : EFile("Não foi possível gravar o arquivo", file, reason) {}

EFileChanged::EFileChanged(const fs::path& file, const std::string& reason) : EFileNotWritten(file, reason) {}

EFolderNotCreated::EFolderNotCreated(const fs::path& folder, const std::string& reason)
    : EFile("Não foi possível criar a pasta", folder, reason) {}

EDataFolderUnknown::EDataFolderUnknown()
    : std::runtime_error("Não foi possível determinar a pasta de dados do usuário. "
                         "Informe-a na variável de ambiente CONFERIX_DADOS.") {}

std::string ReasonText(const std::error_code& error) {
    static const std::pair<std::errc, const char*> kTexts[] = {
        {std::errc::no_such_file_or_directory, "o arquivo não existe"},
        {std::errc::permission_denied, "acesso negado"},
        {std::errc::operation_not_permitted, "acesso negado"},
        {std::errc::is_a_directory, "é uma pasta, não um arquivo"},
        {std::errc::not_a_directory, "uma parte do caminho não é uma pasta"},
        {std::errc::file_exists, "já existe um arquivo com esse nome"},
        {std::errc::no_space_on_device, "não há espaço livre no disco"},
        {std::errc::file_too_large, "o arquivo passaria do tamanho permitido"},
        {std::errc::read_only_file_system, "o disco é somente de leitura"},
        {std::errc::filename_too_long, "o nome é longo demais"},
        {std::errc::too_many_symbolic_link_levels, "há ligações simbólicas em círculo"},
        {std::errc::too_many_files_open, "há arquivos abertos demais"},
        {std::errc::io_error, "erro de leitura ou de gravação no disco"},
        {std::errc::broken_pipe, "quem lia os dados encerrou a leitura"},
        {std::errc::not_enough_memory, "memória insuficiente"},
    };
    for (const auto& [code, text] : kTexts) {
        if (error == code) {
            return text;
        }
    }
    return error.message();
}

std::string PathText(const fs::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

fs::path PathFromText(const std::string& text) {
    return std::u8string(text.begin(), text.end());
}

std::string GetEnvironment(const std::string& name) {
#if defined(_WIN32)
    const wchar_t* value = _wgetenv(PathFromText(name).c_str());
    return value != nullptr ? WideToUtf8(value) : std::string();
#else
    const char* value = std::getenv(name.c_str());
    return value != nullptr ? value : std::string();
#endif
}

fs::path ExecutablePath() {
#if defined(_WIN32)
    std::wstring name(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = GetModuleFileNameW(nullptr, name.data(), static_cast<DWORD>(name.size()));
        if (length == 0) {
            throw std::system_error(static_cast<int>(GetLastError()), std::system_category());
        }
        if (length < name.size()) {
            name.resize(length);
            return fs::canonical(name);
        }
        name.resize(name.size() * 2);
    }
#elif defined(__APPLE__)
    std::uint32_t size = 0;
    _NSGetExecutablePath(nullptr, &size);
    std::string name(size, '\0');
    _NSGetExecutablePath(name.data(), &size);
    return fs::canonical(name.c_str());
#else
    return fs::read_symlink("/proc/self/exe");
#endif
}

fs::path DataFolder() {
    const std::string named = GetEnvironment("CONFERIX_DADOS");
    if (!named.empty()) {
        return PathFromText(named);
    }
    const fs::path base = UserDataFolder();
    if (base.empty()) {
        throw EDataFolderUnknown();
    }
    return base / "Brenvo" / "Conferix";
}

void CreateFolder(const fs::path& folder) {
    std::error_code error;
    if (fs::is_directory(folder, error)) {
        return;
    }
    fs::create_directories(folder, error);
    if (error) {
        throw EFolderNotCreated(folder, ReasonText(error));
    }
}

bool IsTerminal(std::FILE* stream) {
#if defined(_WIN32)
    return _isatty(_fileno(stream)) != 0;
#else
    return ::isatty(::fileno(stream)) != 0;
#endif
}

bool TerminalKnowsColours() {
    const std::string terminal = GetEnvironment("TERM");
#if defined(_WIN32)
    return terminal != "dumb";
#else
    return !terminal.empty() && terminal != "dumb";
#endif
}

TRegionalSeparators RegionalSeparators() {
#if defined(_WIN32)
    return {LocaleText(LOCALE_SDECIMAL), LocaleText(LOCALE_STHOUSAND)};
#else
    const locale_t users = ::newlocale(LC_NUMERIC_MASK, "", nullptr);
    if (users == nullptr) {
        return {};
    }
    TRegionalSeparators separators = {LatinToUtf8(::nl_langinfo_l(RADIXCHAR, users)),
                                      LatinToUtf8(::nl_langinfo_l(THOUSEP, users))};
    ::freelocale(users);
    return separators;
#endif
}

} // namespace conferix
