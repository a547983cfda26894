// The calls of Windows: command line, environment, console, locale, reasons of errors.
#include "platform/listening_port.h"
#include "platform/platform.h"
#include "platform/portable_name.h"
#include "platform/program.h"
#include "platform/spool_file.h"
#include "platform/system_calls.h"
#include "platform/terminal.h"
#include "platform/whole_path.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <new>
#include <utility>

#include <winsock2.h>

#include <windows.h>

#include <fcntl.h>
#include <io.h>
#include <shlwapi.h>

// What the C library gives to a wmain; no header declares it. The shell's own CommandLineToArgvW would load
// the shell, and with it the graphics of the system, at each start of a command.
extern "C" int __wgetmainargs(int* count, wchar_t*** words, wchar_t*** environment, int expands,
                              int* newMode);

namespace conferix {

namespace fs = std::filesystem;

namespace {

std::string WideToUtf8(std::wstring_view text) {
    const int length = static_cast<int>(text.size());
    const int needed = WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<std::size_t>(needed), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), length, result.data(), needed, nullptr, nullptr);
    return result;
}

std::string LocaleText(LCTYPE what) {
    std::array<wchar_t, 16> buffer{};
    const int length =
        GetLocaleInfoEx(LOCALE_NAME_USER_DEFAULT, what, buffer.data(), static_cast<int>(buffer.size()));
    return length > 0 ? WideToUtf8({buffer.data(), static_cast<std::size_t>(length - 1)}) : std::string();
}

// Adds the names that a pattern stands for, or the word itself where there are none.
void AddMatches(std::vector<std::string>& words, const std::wstring& word) {
    const std::size_t folder = word.find_last_of(L"/\\:") + 1; // 0 where there is none
    const std::wstring pattern = word.substr(folder);
    std::vector<std::string> names;
    if (!word.starts_with(L'-') && pattern.find_first_of(L"*?") != std::wstring::npos) {
        WIN32_FIND_DATAW found{};
        const HANDLE search = FindFirstFileW(word.c_str(), &found);
        for (bool more = search != INVALID_HANDLE_VALUE; more;
             more = FindNextFileW(search, &found) != FALSE) {
            const std::wstring name = found.cFileName;
            // The system's own search also goes by short names: "*.xml" would find "lote.xml~".
            if (name != L"." && name != L".." && PathMatchSpecW(name.c_str(), pattern.c_str()))
                names.push_back(WideToUtf8(word.substr(0, folder) + name));
        }
        if (search != INVALID_HANDLE_VALUE)
            FindClose(search);
    }
    if (names.empty())
        names.push_back(WideToUtf8(word));
    std::ranges::sort(names);
    std::ranges::move(names, std::back_inserter(words));
}

HANDLE SystemHandle(std::FILE* stream) {
    return reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
}

/// The console as it was found.
struct TConsole {
    UINT CodePage = 0; ///< 0 without a console
    std::array<std::pair<HANDLE, DWORD>, 2> Modes{};
};
TConsole foundConsole;
bool consoleKnowsColours = false;

void RestoreConsole() {
    if (foundConsole.CodePage != 0)
        SetConsoleOutputCP(foundConsole.CodePage);
    for (const auto& [handle, mode] : foundConsole.Modes)
        if (handle != nullptr)
            SetConsoleMode(handle, mode);
}

// The process may be ended after this without another word.
BOOL WINAPI RestoreConsoleAtEnd(DWORD /*event*/) {
    RestoreConsole();
    return FALSE; // others go on
}

} // namespace

fs::path UserDataFolder() {
    return PathFromText(GetEnvironment("APPDATA"));
}

std::optional<std::string> SystemReason(const std::error_code& error) {
    if (error.category() != std::system_category())
        return std::nullopt;
    static constexpr std::pair<DWORD, const char*> kTexts[] = {
        {ERROR_SHARING_VIOLATION, "está aberto em outro programa"},
        {ERROR_LOCK_VIOLATION, "está aberto em outro programa"},
        {ERROR_USER_MAPPED_FILE, "está aberto em outro programa"},
        {ERROR_UNABLE_TO_REMOVE_REPLACED, "está aberto em outro programa"},
        {ERROR_UNABLE_TO_MOVE_REPLACEMENT, "não pôde ser substituído"},
        {ERROR_UNABLE_TO_MOVE_REPLACEMENT_2, "não pôde ser substituído"},
        {ERROR_NO_SYSTEM_RESOURCES, "o sistema está sem recursos"},
        {ERROR_INVALID_NAME, "o nome não é permitido no Windows"},
        {ERROR_BAD_PATHNAME, "o nome não é permitido no Windows"},
        {ERROR_DIRECTORY, "uma parte do caminho não é uma pasta"},
        {ERROR_BAD_NETPATH, "o computador da rede não foi encontrado"},
        {ERROR_BAD_NET_NAME, "a pasta da rede não foi encontrada"},
        {ERROR_NETWORK_ACCESS_DENIED, "o acesso pela rede foi negado"},
        {ERROR_NETNAME_DELETED, "a conexão com a rede caiu"},
        {ERROR_NOT_READY, "o disco não está pronto"},
        {ERROR_WRITE_PROTECT, "o disco é somente de leitura"},
        {ERROR_HANDLE_DISK_FULL, "não há espaço livre no disco"},
        {ERROR_CRC, "erro de leitura ou de gravação no disco"},
        {ERROR_IO_DEVICE, "erro de leitura ou de gravação no disco"},
        // Those that the headers do not name.
        {225, "o antivírus bloqueou o arquivo"},
        {362, "o arquivo está na nuvem e não pôde ser baixado"},
        {388, "o arquivo está na nuvem e não pôde ser baixado"},
    };
    for (const auto& [code, text] : kTexts)
        if (static_cast<DWORD>(error.value()) == code)
            return text;
    return std::nullopt;
}

std::string SystemMessage(const std::error_code& error) {
    if (error.category() != std::system_category())
        return error.message();
    // In Portuguese where the system has it, else in its own language.
    std::array<wchar_t, 512> buffer{};
    DWORD length = 0;
    constexpr DWORD kPortuguese = MAKELANGID(LANG_PORTUGUESE, SUBLANG_PORTUGUESE_BRAZILIAN);
    for (const DWORD language : {kPortuguese, DWORD{0}})
        if (length == 0)
            length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                    static_cast<DWORD>(error.value()), language, buffer.data(),
                                    static_cast<DWORD>(buffer.size()), nullptr);
    std::wstring text(buffer.data(), length);
    text.erase(text.find_last_not_of(L" .\r\n") + 1);
    return WideToUtf8(text) + " (erro " + std::to_string(error.value()) + " do Windows)";
}

fs::path PathFromText(const std::string& text) {
    std::wstring path = fs::path(std::u8string(text.begin(), text.end())).native();
    // The libraries know no names of this form, and the manifest makes long ones possible in the usual form.
    if (path.starts_with(LR"(\\?\UNC\)"))
        path.replace(0, 8, LR"(\\)");
    else if (path.starts_with(LR"(\\?\)") && path.find(L':') == 5)
        path.erase(0, 4);
    // As the console completes the names of folders; the runtime library finds none of that form.
    constexpr std::wstring_view kSeparators = LR"(\/)";
    while (path.size() > 1 && kSeparators.find(path.back()) != kSeparators.npos &&
           path[path.size() - 2] != L':')
        path.pop_back();
    return path;
}

fs::path AbsolutePath(const fs::path& file) {
    std::wstring whole(GetFullPathNameW(file.c_str(), 0, nullptr, nullptr), L'\0');
    const DWORD length =
        GetFullPathNameW(file.c_str(), static_cast<DWORD>(whole.size()), whole.data(), nullptr);
    if (length == 0 || length >= whole.size()) // no name of a file
        return file;
    whole.resize(length);
    return whole;
}

fs::path CanonicalPath(const fs::path& file) {
    return AbsolutePath(file);
}

std::string GetEnvironment(const std::string& name) {
    const wchar_t* value = _wgetenv(PathFromText(name).c_str());
    return value != nullptr ? WideToUtf8(value) : std::string();
}

fs::path ExecutablePath() {
    std::wstring name(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = GetModuleFileNameW(nullptr, name.data(), static_cast<DWORD>(name.size()));
        if (length == 0)
            throw std::system_error(static_cast<int>(GetLastError()), std::system_category());
        if (length < name.size()) {
            name.resize(length);
            return PathFromText(WideToUtf8(name));
        }
        name.resize(name.size() * 2);
    }
}

std::vector<std::string> CommandLineWords(int /*argc*/, char** /*argv*/) {
    int count = 0;
    wchar_t** given = nullptr;
    wchar_t** environment = nullptr;
    int newMode = 0;
    if (__wgetmainargs(&count, &given, &environment, 0, &newMode) != 0)
        throw std::bad_alloc();
    std::vector<std::string> words;
    for (int i = 1; i < count; ++i)
        AddMatches(words, given[i]);
    return words;
}

void PrepareStandardStreams() {
    for (std::FILE* stream : {stdin, stdout, stderr})
        _setmode(_fileno(stream), _O_BINARY);
    if (!IsTerminal(stdout) && !IsTerminal(stderr))
        return;
    foundConsole.CodePage = GetConsoleOutputCP();
    std::size_t used = 0;
    for (std::FILE* stream : {stdout, stderr}) {
        DWORD mode = 0;
        if (!GetConsoleMode(SystemHandle(stream), &mode))
            continue;
        foundConsole.Modes[used++] = {SystemHandle(stream), mode};
        consoleKnowsColours =
            SetConsoleMode(SystemHandle(stream), mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != FALSE;
    }
    SetConsoleOutputCP(CP_UTF8);
    std::atexit(&RestoreConsole);
    SetConsoleCtrlHandler(&RestoreConsoleAtEnd, TRUE);
}

void EndNow(int status) {
    RestoreConsole();
    _exit(status);
}

bool OpenFilesCanBeReplaced() {
    return false;
}

bool HasDisplay() {
    return true;
}

bool NamesDevice(const fs::path& file) {
    const std::string text = PathText(file);
    return IsDeviceName(PathText(file.filename())) || text.starts_with("\\\\.\\") || text.starts_with("//./");
}

void HandleEndingSignals(void (*handler)(int)) {
    for (const int signal : {SIGINT, SIGTERM, SIGBREAK})
        std::signal(signal, handler);
}

void RemoveNow(const fs::path::value_type* file) {
    DeleteFileW(file);
}

// The runtime library's own function writes to the root of the disk, where users have no right to.
std::FILE* OpenSpoolFile() {
    std::array<wchar_t, MAX_PATH + 1> folder{};
    std::array<wchar_t, MAX_PATH> name{};
    if (GetTempPathW(static_cast<DWORD>(folder.size()), folder.data()) == 0 ||
        GetTempFileNameW(folder.data(), L"cfx", 0, name.data()) == 0)
        return nullptr;
    // "D": removed once closed, also where the process is ended.
    return _wfopen(name.data(), L"w+bTD");
}

// A closed port is free at once; the option that frees it elsewhere would let two programs share it.
void ClaimPort(std::uintptr_t socket) {
    const BOOL on = TRUE;
    setsockopt(static_cast<SOCKET>(socket), SOL_SOCKET, SO_EXCLUSIVEADDRUSE,
               reinterpret_cast<const char*>(&on), sizeof on);
}

bool IsTerminal(std::FILE* stream) {
    DWORD mode = 0;
    return GetConsoleMode(SystemHandle(stream), &mode) != FALSE;
}

bool TerminalKnowsColours() {
    return consoleKnowsColours && GetEnvironment("TERM") != "dumb";
}

TRegionalSeparators RegionalSeparators() {
    return {LocaleText(LOCALE_SDECIMAL), LocaleText(LOCALE_STHOUSAND)};
}

} // namespace conferix
