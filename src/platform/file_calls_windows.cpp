// The calls of Windows on files. A file is opened so that others may rename or remove it meanwhile, as they
// may elsewhere.
#include "platform/file_calls.h"
#include "platform/whole_path.h"

#include <algorithm>
#include <chrono>
#include <initializer_list>
#include <memory>
#include <system_error>
#include <utility>

#include <windows.h>

#include <aclapi.h>
#include <fcntl.h>
#include <io.h>
#include <process.h>

namespace conferix {

namespace fs = std::filesystem;

namespace {

// One call takes no more than 2^32 - 1 bytes.
constexpr std::size_t kMaxTransfer = 1U << 30;
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

HANDLE SystemHandle(int descriptor) {
    return reinterpret_cast<HANDLE>(_get_osfhandle(descriptor));
}

/// A handle of the system, closed at the end of its life.
class THandle {
  public:
    THandle(const fs::path& file, DWORD access, DWORD share, DWORD flags)
        : handle_(CreateFileW(file.c_str(), access, share, nullptr, OPEN_EXISTING, flags, nullptr)) {}
    THandle(const THandle&) = delete;
    THandle& operator=(const THandle&) = delete;
    ~THandle() {
        if (IsOpen())
            CloseHandle(handle_);
    }
    bool IsOpen() const { return handle_ != INVALID_HANDLE_VALUE; }
    HANDLE Get() const { return handle_; }

  private:
    HANDLE handle_;
};

// Negative, with LastError(), where the file was not opened.
int Open(const fs::path& file, DWORD access, DWORD share, DWORD disposition, DWORD attributes) {
    const HANDLE handle = CreateFileW(file.c_str(), access, share, nullptr, disposition, attributes, nullptr);
    return handle != INVALID_HANDLE_VALUE ? _open_osfhandle(reinterpret_cast<intptr_t>(handle), _O_BINARY)
                                          : -1;
}

std::uint64_t Joined(DWORD high, DWORD low) {
    return (std::uint64_t{high} << 32U) | low;
}

TFileStamp MakeStamp(const BY_HANDLE_FILE_INFORMATION& info) {
    return {info.dwVolumeSerialNumber, Joined(info.nFileIndexHigh, info.nFileIndexLow),
            Joined(info.nFileSizeHigh, info.nFileSizeLow),
            static_cast<std::int64_t>(
                Joined(info.ftLastWriteTime.dwHighDateTime, info.ftLastWriteTime.dwLowDateTime))};
}

} // namespace

std::error_code LastError() {
    return {static_cast<int>(GetLastError()), std::system_category()};
}

int TDescriptor::OpenForReading(const fs::path& file) {
    return Open(file, GENERIC_READ, kShareAll, OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN);
}
int TDescriptor::OpenForWriting(const fs::path& file) {
    return Open(file, GENERIC_WRITE, kShareAll, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL);
}
int TDescriptor::OpenFinished(const fs::path& file) {
    return Open(file, GENERIC_WRITE | READ_CONTROL | WRITE_DAC, kShareAll, OPEN_EXISTING,
                FILE_ATTRIBUTE_NORMAL);
}
// Others may read it or have it removed, but not hold it alone while it lives.
int TDescriptor::CreateNew(const fs::path& file) {
    return Open(file, GENERIC_WRITE | READ_CONTROL | WRITE_DAC | DELETE, FILE_SHARE_READ | FILE_SHARE_DELETE,
                CREATE_NEW, FILE_ATTRIBUTE_NORMAL);
}
int TDescriptor::OpenForLocking(const fs::path& file) {
    return Open(file, GENERIC_READ | GENERIC_WRITE, kShareAll, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL);
}

TOpenFile TDescriptor::Describe() const {
    const HANDLE handle = SystemHandle(descriptor_);
    if (GetFileType(handle) != FILE_TYPE_DISK)
        return {};
    BY_HANDLE_FILE_INFORMATION info{};
    if (!GetFileInformationByHandle(handle, &info))
        ThrowLastError();
    return {true, MakeStamp(info)};
}

std::size_t TDescriptor::Read(char* to, std::size_t count) const {
    DWORD got = 0;
    if (!ReadFile(SystemHandle(descriptor_), to, static_cast<DWORD>(std::min(count, kMaxTransfer)), &got,
                  nullptr) &&
        GetLastError() != ERROR_BROKEN_PIPE) { // whoever wrote has left: the end
        ThrowLastError();
    }
    return got;
}

std::size_t TDescriptor::ReadFirst(char* to, std::size_t count, const fs::path& /*file*/) const {
    return Read(to, count);
}

std::size_t TDescriptor::Write(std::string_view bytes) const {
    DWORD put = 0;
    if (!WriteFile(SystemHandle(descriptor_), bytes.data(),
                   static_cast<DWORD>(std::min(bytes.size(), kMaxTransfer)), &put, nullptr))
        ThrowLastError();
    return put;
}

void TDescriptor::Flush() const {
    if (!FlushFileBuffers(SystemHandle(descriptor_)))
        ThrowLastError();
}

void TDescriptor::Release() noexcept {
    if (descriptor_ >= 0)
        _close(std::exchange(descriptor_, -1));
}

void TDescriptor::Close() {
    if (_close(std::exchange(descriptor_, -1)) != 0)
        ThrowLastError();
}

void TDescriptor::ReleaseForRenaming() {
    Close();
}

bool TDescriptor::LockWhole(bool wait) const {
    OVERLAPPED from{};
    const DWORD flags = LOCKFILE_EXCLUSIVE_LOCK | (wait ? 0 : LOCKFILE_FAIL_IMMEDIATELY);
    if (LockFileEx(SystemHandle(descriptor_), flags, 0, MAXDWORD, MAXDWORD, &from))
        return true;
    if (GetLastError() != ERROR_LOCK_VIOLATION && GetLastError() != ERROR_IO_PENDING)
        ThrowLastError();
    return false;
}

bool TDescriptor::HasName() const {
    FILE_STANDARD_INFO info{};
    return !GetFileInformationByHandleEx(SystemHandle(descriptor_), FileStandardInfo, &info, sizeof info) ||
           !info.DeletePending;
}

std::optional<TFileStamp> StampOf(const fs::path& file) {
    const THandle handle(file, FILE_READ_ATTRIBUTES, kShareAll, FILE_FLAG_BACKUP_SEMANTICS);
    BY_HANDLE_FILE_INFORMATION info{};
    if (!handle.IsOpen() || GetFileType(handle.Get()) != FILE_TYPE_DISK ||
        !GetFileInformationByHandle(handle.Get(), &info) ||
        (info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
        return std::nullopt;
    return MakeStamp(info);
}

namespace {

// The access list, with what the folder adds to it anew where it is not closed to that.
void TakeAccessList(HANDLE to, HANDLE from) {
    PACL list = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (GetSecurityInfo(from, SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr, &list, nullptr,
                        &descriptor) != ERROR_SUCCESS)
        return; // a file system without access lists
    const std::unique_ptr<void, decltype(&LocalFree)> freed(descriptor, &LocalFree);
    SECURITY_DESCRIPTOR_CONTROL control = 0;
    DWORD revision = 0;
    GetSecurityDescriptorControl(descriptor, &control, &revision);
    const DWORD closed = (control & SE_DACL_PROTECTED) != 0 ? PROTECTED_DACL_SECURITY_INFORMATION
                                                            : UNPROTECTED_DACL_SECURITY_INFORMATION;
    const DWORD failure = SetSecurityInfo(to, SE_FILE_OBJECT, DACL_SECURITY_INFORMATION | closed, nullptr,
                                          nullptr, list, nullptr);
    if (failure != ERROR_SUCCESS)
        throw std::system_error(static_cast<int>(failure), std::system_category());
}

// Calls until it succeeds, fails otherwise than with one of `held`, or `patience` is over; the last failure.
template<typename TCall>
DWORD Patiently(std::chrono::milliseconds patience, std::initializer_list<DWORD> held, TCall call) {
    const auto end = std::chrono::steady_clock::now() + patience;
    while (!call()) {
        const DWORD failure = GetLastError();
        if (std::ranges::find(held, failure) == held.end() || std::chrono::steady_clock::now() >= end)
            return failure;
        Sleep(50);
    }
    return ERROR_SUCCESS;
}

} // namespace

void TakeAttributes(const TDescriptor& descriptor, const fs::path& of, const fs::path& file) {
    const THandle old(of, GENERIC_READ, kShareAll, FILE_ATTRIBUTE_NORMAL);
    const HANDLE own = SystemHandle(descriptor.Get());
    FILE_BASIC_INFO info{};
    if (!old.IsOpen() || !GetFileInformationByHandleEx(old.Get(), FileBasicInfo, &info, sizeof info))
        ThrowLastError();
    try {
        TakeAccessList(own, old.Get());
    } catch (const std::system_error& failure) {
        throw EFileNotWritten(file, "as permissões do arquivo não podem ser mantidas (" +
                                        ReasonText(failure.code()) + "); grave com outro nome");
    }
    // When it was made, and whether it is hidden and the like; the times of the change are the new file's
    // own.
    FILE_BASIC_INFO taken{};
    taken.CreationTime = info.CreationTime;
    taken.FileAttributes = info.FileAttributes;
    if (!SetFileInformationByHandle(own, FileBasicInfo, &taken, sizeof taken))
        ThrowLastError();
}

// A new file has the rights of its folder.
void TakeUsualRights(const TDescriptor& /*descriptor*/) {}

void CheckReplaceable(const fs::path& target, const fs::path& file, std::chrono::milliseconds patience) {
    // Fails for a write-protected file, and for one that another program holds.
    BY_HANDLE_FILE_INFORMATION info{};
    const DWORD failure = Patiently(patience, {ERROR_SHARING_VIOLATION}, [&] {
        const THandle handle(target, GENERIC_WRITE | DELETE, kShareAll, FILE_ATTRIBUTE_NORMAL);
        return handle.IsOpen() && GetFileInformationByHandle(handle.Get(), &info);
    });
    if (failure != ERROR_SUCCESS)
        throw std::system_error(static_cast<int>(failure), std::system_category());
    if ((info.dwFileAttributes & FILE_ATTRIBUTE_READONLY) != 0)
        throw std::system_error(std::make_error_code(std::errc::permission_denied));
    if (info.nNumberOfLinks > 1)
        throw EFileNotWritten(file, kOtherNames);
}

// A living process shares the right to read its file, but nobody's wish to have it alone.
void RemoveIfUnheld(const fs::path& file) {
    const THandle alone(file, DELETE, 0, FILE_FLAG_DELETE_ON_CLOSE | FILE_FLAG_OPEN_REPARSE_POINT);
}

// ReplaceFileW would keep the attributes by itself, but takes the old file's name away first: whoever is
// ended between its steps is left without a file of that name.
void RenameDurably(const fs::path& from, const fs::path& to, bool replaces) {
    const fs::path source = AbsolutePath(from);
    const fs::path target = AbsolutePath(to);
    const DWORD flags = MOVEFILE_WRITE_THROUGH | (replaces ? MOVEFILE_REPLACE_EXISTING : 0);
    const DWORD failure = Patiently(kMoment, {ERROR_ACCESS_DENIED, ERROR_SHARING_VIOLATION}, [&] {
        return MoveFileExW(source.c_str(), target.c_str(), flags) != FALSE;
    });
    if (failure != ERROR_SUCCESS) {
        const bool held = replaces && failure == ERROR_ACCESS_DENIED;
        throw std::system_error(static_cast<int>(held ? DWORD{ERROR_SHARING_VIOLATION} : failure),
                                std::system_category());
    }
}

int ProcessId() {
    return _getpid();
}

} // namespace conferix
