#include "platform/platform.h"

#include "platform/format_settings.h"
#include "platform/large_pages.h"
#include "platform/shared_library.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <new>
#include <optional>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>

#if defined(_WIN32)
#if !defined(NOMINMAX)
#define NOMINMAX
#endif
#include <windows.h>

#include <io.h>
#include <process.h>
#else
#include <dlfcn.h>
#include <langinfo.h>
#include <locale.h>
#include <pwd.h>
#include <sys/file.h>
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

constexpr std::size_t kFirstBlock = 65536;
// Some systems take no more than 2^31 - 1 bytes in one call.
constexpr std::size_t kMaxTransfer = 1U << 30;
constexpr int kMaxLinks = 40;
constexpr int kMaxNameAttempts = 1000;

const std::string kIsFolder = "é uma pasta, não um arquivo";
const std::string kNoMemory = "memória insuficiente";

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

int OpenForReading(const fs::path& file) {
    return _wopen(file.c_str(), _O_RDONLY | _O_BINARY | _O_NOINHERIT);
}
int OpenForWriting(const fs::path& file) {
    return _wopen(file.c_str(), _O_WRONLY | _O_BINARY | _O_NOINHERIT);
}
int CreateNew(const fs::path& file, bool /*onlyForOwner*/) {
    return _wopen(file.c_str(), _O_WRONLY | _O_CREAT | _O_EXCL | _O_BINARY | _O_NOINHERIT,
                  _S_IREAD | _S_IWRITE);
}
long long ReadSome(int descriptor, char* to, std::size_t count) {
    return _read(descriptor, to, static_cast<unsigned>(std::min(count, kMaxTransfer)));
}
long long WriteSome(int descriptor, const char* from, std::size_t count) {
    return _write(descriptor, from, static_cast<unsigned>(std::min(count, kMaxTransfer)));
}
bool FlushToDisk(int descriptor) {
    return _commit(descriptor) == 0;
}
int CloseDescriptor(int descriptor) {
    return _close(descriptor);
}
int ProcessId() {
    return _getpid();
}
int OpenForLocking(const fs::path& file) {
    return _wopen(file.c_str(), _O_RDWR | _O_CREAT | _O_BINARY | _O_NOINHERIT, _S_IREAD | _S_IWRITE);
}

// False when another holds the file and `wait` is off.
bool LockWhole(int descriptor, bool wait) {
    OVERLAPPED from = {};
    const DWORD flags = LOCKFILE_EXCLUSIVE_LOCK | (wait ? 0 : LOCKFILE_FAIL_IMMEDIATELY);
    const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(descriptor));
    if (LockFileEx(handle, flags, 0, MAXDWORD, MAXDWORD, &from)) {
        return true;
    }
    if (GetLastError() != ERROR_LOCK_VIOLATION) {
        throw std::system_error(static_cast<int>(GetLastError()), std::system_category());
    }
    return false;
}

std::optional<std::uintmax_t> RegularFileSize(int descriptor) {
    struct _stat64 info = {};
    if (_fstat64(descriptor, &info) != 0 || (info.st_mode & _S_IFMT) != _S_IFREG) {
        return std::nullopt;
    }
    return static_cast<std::uintmax_t>(info.st_size);
}

// ReplaceFileW carries the permissions of the old file over to the new one, so nothing is left to do.
void TakePermissions(int /*descriptor*/, const fs::path& /*of*/) {}

void CheckWritable(const fs::path& file) {
    if (_waccess(file.c_str(), 2) != 0) {
        throw std::system_error(errno, std::generic_category());
    }
}

void Rename(const fs::path& from, const fs::path& to, bool replaces) {
    const BOOL done = replaces ? ReplaceFileW(to.c_str(), from.c_str(), nullptr, 0, nullptr, nullptr)
                               : MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_WRITE_THROUGH);
    if (!done) {
        throw std::system_error(static_cast<int>(GetLastError()), std::system_category());
    }
}

#else

int OpenForReading(const fs::path& file) {
    return ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
}
int OpenForWriting(const fs::path& file) {
    return ::open(file.c_str(), O_WRONLY | O_CLOEXEC);
}

// With the user's file creation mask applied, as for any new file.
int CreateNew(const fs::path& file, bool onlyForOwner) {
    return ::open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, onlyForOwner ? 0600 : 0666);
}

long long ReadSome(int descriptor, char* to, std::size_t count) {
    for (;;) {
        const ssize_t got = ::read(descriptor, to, std::min(count, kMaxTransfer));
        if (got >= 0 || errno != EINTR) {
            return got;
        }
    }
}

long long WriteSome(int descriptor, const char* from, std::size_t count) {
    for (;;) {
        const ssize_t put = ::write(descriptor, from, std::min(count, kMaxTransfer));
        if (put >= 0 || errno != EINTR) {
            return put;
        }
    }
}

bool FlushToDisk(int descriptor) {
    return ::fsync(descriptor) == 0;
}
int CloseDescriptor(int descriptor) {
    return ::close(descriptor);
}
int ProcessId() {
    return static_cast<int>(::getpid());
}
int OpenForLocking(const fs::path& file) {
    return ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
}

// False when another holds the file and `wait` is off.
bool LockWhole(int descriptor, bool wait) {
    while (::flock(descriptor, wait ? LOCK_EX : LOCK_EX | LOCK_NB) != 0) {
        if (errno == EWOULDBLOCK) {
            return false;
        }
        if (errno != EINTR) {
            throw std::system_error(errno, std::generic_category());
        }
    }
    return true;
}

std::optional<std::uintmax_t> RegularFileSize(int descriptor) {
    struct stat info = {};
    if (::fstat(descriptor, &info) != 0 || !S_ISREG(info.st_mode)) {
        return std::nullopt;
    }
    return static_cast<std::uintmax_t>(info.st_size);
}

void TakePermissions(int descriptor, const fs::path& of) {
    struct stat info = {};
    struct stat own = {};
    if (::stat(of.c_str(), &info) != 0 || ::fstat(descriptor, &own) != 0) {
        throw std::system_error(errno, std::generic_category());
    }
    mode_t mode = info.st_mode & 07777;
    if ((own.st_uid != info.st_uid || own.st_gid != info.st_gid) &&
        ::fchown(descriptor, info.st_uid, info.st_gid) != 0 &&
        ::fchown(descriptor, static_cast<uid_t>(-1), info.st_gid) != 0) {
        // The file could not be given to the old group: what that group could do, ours shall not.
        mode &= 0707;
    }
    if (::fchmod(descriptor, mode) != 0) {
        throw std::system_error(errno, std::generic_category());
    }
}

// Renaming asks for rights on the folder alone; a write-protected file is still not to be replaced.
void CheckWritable(const fs::path& file) {
    if (::access(file.c_str(), W_OK) != 0) {
        throw std::system_error(errno, std::generic_category());
    }
}

void Rename(const fs::path& from, const fs::path& to, bool /*replaces*/) {
    fs::rename(from, to);
    // The new name survives a power failure only once the folder is on disk. The content is in place
    // already, so file systems that cannot flush a folder are no failure.
    const fs::path folder = to.has_parent_path() ? to.parent_path() : fs::path(".");
    const int descriptor = ::open(folder.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor >= 0) {
        FlushToDisk(descriptor);
        CloseDescriptor(descriptor);
    }
}

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

[[noreturn]] void ThrowLastError() {
    throw std::system_error(errno, std::generic_category());
}

class TDescriptor {
  public:
    explicit TDescriptor(int descriptor) : descriptor_(descriptor) {
        if (descriptor_ < 0) {
            ThrowLastError();
        }
    }
    TDescriptor(const TDescriptor&) = delete;
    TDescriptor& operator=(const TDescriptor&) = delete;
    ~TDescriptor() { Release(); }

    int Get() const { return descriptor_; }
    int Give() { return std::exchange(descriptor_, -1); }

    void WriteAll(std::string_view bytes) {
        while (!bytes.empty()) {
            const long long put = WriteSome(descriptor_, bytes.data(), bytes.size());
            if (put < 0) {
                ThrowLastError();
            }
            bytes.remove_prefix(static_cast<std::size_t>(put));
        }
    }

    void Flush() {
        if (!FlushToDisk(descriptor_)) {
            ThrowLastError();
        }
    }

    void Release() noexcept {
        if (descriptor_ >= 0) {
            CloseDescriptor(std::exchange(descriptor_, -1));
        }
    }

    // Network file systems report a failed write no earlier than here.
    void Close() {
        if (CloseDescriptor(std::exchange(descriptor_, -1)) != 0) {
            ThrowLastError();
        }
    }

  private:
    int descriptor_;
};

// A new file in the folder of its target; gone at the end of its life unless renamed over the target.
class TTemporaryFile {
  public:
    TTemporaryFile(const fs::path& target, bool onlyForOwner) : descriptor_(Create(target, onlyForOwner)) {}
    TTemporaryFile(const TTemporaryFile&) = delete;
    TTemporaryFile& operator=(const TTemporaryFile&) = delete;
    ~TTemporaryFile() {
        if (!path_.empty()) {
            descriptor_.Release(); // an open file cannot be removed everywhere
            std::error_code ignored;
            fs::remove(path_, ignored);
        }
    }

    TDescriptor& Descriptor() { return descriptor_; }

    void RenameTo(const fs::path& target, bool replaces) {
        descriptor_.Close();
        Rename(path_, target, replaces);
        path_.clear();
    }

  private:
    int Create(const fs::path& target, bool onlyForOwner) {
        static std::atomic<unsigned> counter = 0;
        for (int attempt = 0; attempt < kMaxNameAttempts; ++attempt) {
            const std::string name =
                ".conferix-" + std::to_string(ProcessId()) + "-" + std::to_string(counter++) + ".tmp";
            fs::path candidate = target.parent_path() / name;
            const int descriptor = CreateNew(candidate, onlyForOwner);
            if (descriptor >= 0) {
                path_ = std::move(candidate);
                return descriptor;
            }
            if (errno != EEXIST) {
                break;
            }
        }
        return -1;
    }

    fs::path path_;
    TDescriptor descriptor_;
};

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

void ReplaceContent(const fs::path& file, std::string_view bytes) {
    const fs::path target = FollowLinks(file);
    const bool replaces = fs::exists(target);
    if (replaces) {
        CheckWritable(target);
    }
    TTemporaryFile temporary(target, replaces);
    temporary.Descriptor().WriteAll(bytes);
    if (replaces) {
        TakePermissions(temporary.Descriptor().Get(), target);
    }
    temporary.Descriptor().Flush();
    temporary.RenameTo(target, replaces);
}

void WriteInto(const fs::path& pipeOrDevice, std::string_view bytes) {
    TDescriptor descriptor(OpenForWriting(pipeOrDevice));
    descriptor.WriteAll(bytes);
    descriptor.Close();
}

std::string TooLargeText(std::uintmax_t limit) {
    return "tem mais de " + TFormatSettings::Regional().Count(static_cast<std::int64_t>(limit)) +
           " bytes, o máximo que o programa lê";
}

std::string ReadAll(const fs::path& file, std::uintmax_t limit) {
    const TDescriptor descriptor(OpenForReading(file));
    const std::uintmax_t expected = RegularFileSize(descriptor.Get()).value_or(0);
    if (expected > limit) {
        throw EFileNotRead(file, TooLargeText(limit));
    }
    // One byte more than expected, so that the end of the file shows in the second call.
    const std::size_t first = expected > 0 ? static_cast<std::size_t>(expected) + 1 : kFirstBlock;
    std::string content;
    content.reserve(first);
    PreferLargePages(content.data(), content.capacity());
    content.resize(first);
    std::size_t filled = 0;
    for (;;) {
        if (filled == content.size()) {
            content.resize(content.size() * 2);
        }
        const long long got = ReadSome(descriptor.Get(), content.data() + filled, content.size() - filled);
        if (got < 0) {
            ThrowLastError();
        }
        if (got == 0) {
            content.resize(filled);
            return content;
        }
        filled += static_cast<std::size_t>(got);
        if (filled > limit) {
            throw EFileNotRead(file, TooLargeText(limit));
        }
    }
}

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

TFileLock::TFileLock(const fs::path& file, bool wait) {
    try {
        TDescriptor descriptor(OpenForLocking(file));
        if (LockWhole(descriptor.Get(), wait)) {
            descriptor_ = descriptor.Give();
        }
    } catch (const std::system_error& error) {
        throw EFileNotWritten(file, ReasonText(error.code()));
    }
}

TFileLock::~TFileLock() {
    if (Held()) {
        CloseDescriptor(descriptor_);
    }
}

EFile::EFile(const std::string& action, const fs::path& file, const std::string& reason)
    : std::runtime_error(action + " \"" + PathText(file) + "\": " + reason), fileName_(file),
      reason_(reason) {}

EFileNotRead::EFileNotRead(const fs::path& file, const std::string& reason)
    : EFile("Não foi possível ler o arquivo", file, reason) {}

EFileNotWritten::EFileNotWritten(const fs::path& file, const std::string& reason)
    : EFile("Não foi possível gravar o arquivo", file, reason) {}

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

std::string ReadWholeFile(const fs::path& file, std::uintmax_t limit) {
    std::error_code ignored;
    if (fs::is_directory(file, ignored)) {
        throw EFileNotRead(file, kIsFolder);
    }
    try {
        return ReadAll(file, limit);
    } catch (const std::system_error& failure) {
        throw EFileNotRead(file, ReasonText(failure.code()));
    } catch (const std::bad_alloc&) {
        throw EFileNotRead(file, kNoMemory);
    }
}

void WriteFileAtomically(const fs::path& file, std::string_view bytes) {
    std::error_code ignored;
    const fs::file_status status = fs::status(file, ignored);
    if (fs::is_directory(status)) {
        throw EFileNotWritten(file, kIsFolder);
    }
    try {
        if (fs::exists(status) && !fs::is_regular_file(status)) {
            WriteInto(file, bytes);
        } else {
            ReplaceContent(file, bytes);
        }
    } catch (const std::system_error& failure) {
        throw EFileNotWritten(file, ReasonText(failure.code()));
    }
}

void ReplaceFileBy(const fs::path& file, const fs::path& finished) {
    try {
        const fs::path target = FollowLinks(file);
        const bool replaces = fs::exists(target);
        if (replaces) {
            CheckWritable(target);
        }
        TDescriptor descriptor(OpenForWriting(finished));
        descriptor.Flush();
        descriptor.Close();
        Rename(finished, target, replaces);
    } catch (const std::system_error& failure) {
        throw EFileNotWritten(file, ReasonText(failure.code()));
    }
}

bool IsTerminal(std::FILE* stream) {
#if defined(_WIN32)
    return _isatty(_fileno(stream)) != 0;
#else
    return ::isatty(::fileno(stream)) != 0;
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
