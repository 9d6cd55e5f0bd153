#include <fcntl.h>
#include <io.h>

#include <algorithm>
#include <utility>

#include "hostapi/HostConstants.h"
#include "hostapi/HostErrors.h"
#include "openhost/files/DiskFile.h"
#include "platform/Files.h"
#include "platform/Handle_win.h"
#include "platform/WideText_win.h"

namespace openhost {

namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr std::size_t kMostAtOnce = 1u << 30;

HANDLE HandleOf(int descriptor) { return reinterpret_cast<HANDLE>(_get_osfhandle(descriptor)); }

ASErrorCode LastError() { return FileErrorFromSystem(platform::LastFailure().errorNumber); }

/// A folder can be opened this way, too; nothing is read or written.
platform::CHandle OpenForFacts(const std::wstring& path)
{
    return platform::CHandle(CreateFileW(path.c_str(), FILE_READ_ATTRIBUTES, kShareAll, nullptr, OPEN_EXISTING,
                                         FILE_FLAG_BACKUP_SEMANTICS, nullptr));
}

bool FactsOf(HANDLE file, BY_HANDLE_FILE_INFORMATION& facts) { return GetFileInformationByHandle(file, &facts); }

bool IsFolder(const std::wstring& path)
{
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

/// The part of a transfer that one call does.
struct Piece {
    Piece(std::uint64_t position, std::size_t count) : size(static_cast<DWORD>(std::min(count, kMostAtOnce)))
    {
        place.Offset = static_cast<DWORD>(position);
        place.OffsetHigh = static_cast<DWORD>(position >> 32);
    }
    OVERLAPPED place{};
    DWORD size;
    DWORD done = 0;
};

}  // namespace

ASErrorCode FileErrorFromSystem(int errorNumber)
{
    switch (errorNumber) {
        case ERROR_WRITE_PROTECT:
            return fileErrVLocked;
        case ERROR_DIR_NOT_EMPTY:
        case ERROR_CURRENT_DIRECTORY:
            return fileErrBusy;
        case ERROR_CRC:
        case ERROR_IO_DEVICE:
        case ERROR_NOT_READY:
            return fileErrIO;
        case ERROR_DIRECTORY:
            return fileErrFNF;
        default:
            break;
    }
    using platform::FileProblem;
    switch (platform::ProblemOf({errorNumber})) {
        case FileProblem::Missing:
            return fileErrFNF;
        case FileProblem::Exists:
            return fileErrExists;
        case FileProblem::NotARegularFile:
        case FileProblem::IsAFolder:
            return fileErrOpenFailed;
        case FileProblem::NoAccess:
            return fileErrPerm;
        case FileProblem::InUse:
            return fileErrBusy;
        case FileProblem::DiskFull:
            return fileErrDiskFull;
        case FileProblem::TooLarge:
            return fileErrTooBig;
        default:
            return fileErrGeneral;
    }
}

CDiskFile::~CDiskFile() { static_cast<void>(Close()); }

CDiskFile::CDiskFile(CDiskFile&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}

CDiskFile& CDiskFile::operator=(CDiskFile&& other) noexcept
{
    std::swap(m_descriptor, other.m_descriptor);
    return *this;
}

ASErrorCode CDiskFile::Open(const std::string& nativePath, DiskFileMode mode)
{
    const std::wstring path = platform::WidePath(nativePath);
    if (path.empty()) return fileErrFNF;
    if (mode.write || mode.create) {
        if (const auto allowed = platform::CheckTargetName(path); !allowed) return fileErrOpenFailed;
    }
    const DWORD rights = (mode.read ? GENERIC_READ : 0) | (mode.write ? GENERIC_WRITE : 0);
    platform::CHandle file(CreateFileW(path.c_str(), rights, kShareAll, nullptr,
                                       mode.create ? OPEN_ALWAYS : OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file.Valid()) {
        const ASErrorCode failed = LastError();
        return IsFolder(path) ? static_cast<ASErrorCode>(fileErrOpenFailed) : failed;
    }
    if (GetFileType(file.Get()) != FILE_TYPE_DISK) return fileErrOpenFailed;  // a pipe, a device
    const int descriptor =
        _open_osfhandle(reinterpret_cast<intptr_t>(file.Get()), _O_BINARY | (mode.write ? _O_RDWR : _O_RDONLY));
    if (descriptor < 0) return fileErrOpenFailed;
    static_cast<void>(file.Release());
    Close();
    m_descriptor = descriptor;
    return 0;
}

ASErrorCode CDiskFile::Close()
{
    const int descriptor = std::exchange(m_descriptor, -1);
    return descriptor < 0 || _close(descriptor) == 0 ? 0 : static_cast<ASErrorCode>(fileErrIO);
}

ASErrorCode CDiskFile::ReadAt(std::uint64_t position, char* bytes, std::size_t count, std::size_t* done)
{
    *done = 0;
    while (*done < count) {
        Piece piece(position + *done, count - *done);
        if (!ReadFile(HandleOf(m_descriptor), bytes + *done, piece.size, &piece.done, &piece.place)) {
            if (GetLastError() == ERROR_HANDLE_EOF) break;
            return LastError();
        }
        if (piece.done == 0) break;
        *done += piece.done;
    }
    return 0;
}

ASErrorCode CDiskFile::WriteAt(std::uint64_t position, const char* bytes, std::size_t count, std::size_t* done)
{
    *done = 0;
    while (*done < count) {
        Piece piece(position + *done, count - *done);
        if (!WriteFile(HandleOf(m_descriptor), bytes + *done, piece.size, &piece.done, &piece.place))
            return LastError();
        if (piece.done == 0) return fileErrWrite;
        *done += piece.done;
    }
    return 0;
}

ASErrorCode CDiskFile::Length(std::uint64_t* length) const
{
    LARGE_INTEGER size{};
    if (!GetFileSizeEx(HandleOf(m_descriptor), &size)) return LastError();
    *length = static_cast<std::uint64_t>(size.QuadPart);
    return 0;
}

ASErrorCode CDiskFile::SetLength(std::uint64_t length)
{
    FILE_END_OF_FILE_INFO end{};
    end.EndOfFile.QuadPart = static_cast<LONGLONG>(length);
    return SetFileInformationByHandle(HandleOf(m_descriptor), FileEndOfFileInfo, &end, sizeof end) ? 0 : LastError();
}

ASErrorCode CDiskFile::FlushToDisk() { return FlushFileBuffers(HandleOf(m_descriptor)) ? 0 : LastError(); }

bool CDiskFile::IsSame(const std::string& nativePath) const
{
    BY_HANDLE_FILE_INFORMATION mine{}, other{};
    if (m_descriptor < 0 || !FactsOf(HandleOf(m_descriptor), mine)) return false;
    const auto named = OpenForFacts(platform::WidePath(nativePath));
    return named.Valid() && FactsOf(named.Get(), other) && mine.dwVolumeSerialNumber == other.dwVolumeSerialNumber &&
           mine.nFileIndexHigh == other.nFileIndexHigh && mine.nFileIndexLow == other.nFileIndexLow;
}

namespace {

ASTimeRec TimeRecord(const FILETIME& time)
{
    SYSTEMTIME parts{};
    FileTimeToSystemTime(&time, &parts);
    ASTimeRec record{};
    record.year = static_cast<ASInt16>(parts.wYear);
    record.month = static_cast<ASInt16>(parts.wMonth);
    record.date = static_cast<ASInt16>(parts.wDay);
    record.hour = static_cast<ASInt16>(parts.wHour);
    record.minute = static_cast<ASInt16>(parts.wMinute);
    record.second = static_cast<ASInt16>(parts.wSecond);
    record.day = static_cast<ASInt16>(parts.wDayOfWeek);
    return record;
}

}  // namespace

ASFileSysItemPropsRec ItemProperties(const std::string& nativePath)
{
    ASFileSysItemPropsRec record{};
    record.type = kASFileSysUnknown;
    const auto item = OpenForFacts(platform::WidePath(nativePath));
    BY_HANDLE_FILE_INFORMATION facts{};
    if (!item.Valid() || GetFileType(item.Get()) != FILE_TYPE_DISK || !FactsOf(item.Get(), facts)) return record;
    const bool isFolder = (facts.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    record.isThere = 1;
    record.type = isFolder ? kASFileSysFolder : kASFileSysFile;
    record.isHidden = (facts.dwFileAttributes & FILE_ATTRIBUTE_HIDDEN) != 0 ||
                      nativePath.substr(nativePath.find_last_of("\\/") + 1).starts_with('.');
    // On a folder the attribute says that its icon is a special one.
    record.isReadOnly = !isFolder && (facts.dwFileAttributes & FILE_ATTRIBUTE_READONLY) != 0;
    record.modDateKnown = 1;
    record.modDate = TimeRecord(facts.ftLastWriteTime);
    if (!isFolder) {
        record.fileSize = facts.nFileSizeLow;
        record.fileSizeHigh = facts.nFileSizeHigh;
    }
    return record;
}

ASErrorCode MakeFolder(const std::string& nativePath)
{
    const std::wstring path = platform::WidePath(nativePath);
    if (const auto allowed = platform::CheckTargetName(path); !allowed) return fileErrOpenFailed;
    return CreateDirectoryW(path.c_str(), nullptr) ? 0 : LastError();
}

ASErrorCode RemoveEmptyFolder(const std::string& nativePath)
{
    return RemoveDirectoryW(platform::WidePath(nativePath).c_str()) ? 0 : LastError();
}

std::optional<std::uint64_t> FreeSpaceIn(const std::string& nativeFolder)
{
    ULARGE_INTEGER bytes{};
    if (!GetDiskFreeSpaceExW(platform::WidePath(nativeFolder).c_str(), &bytes, nullptr, nullptr)) return std::nullopt;
    return bytes.QuadPart;
}

}  // namespace openhost
