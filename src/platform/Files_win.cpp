#include <fcntl.h>
#include <io.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <string>
#include <utility>

#include "base/Names.h"
#include "platform/FileHandles_win.h"
#include "platform/FileSteps.h"
#include "platform/Files.h"
#include "platform/WideText_win.h"
#include "platform/Windows_win.h"

#include <aclapi.h>

// The headers of the compiler do not know these yet.
#ifndef ERROR_DISK_QUOTA_EXCEEDED
#define ERROR_DISK_QUOTA_EXCEEDED 1295L
#endif
#ifndef ERROR_DIRECTORY_NOT_SUPPORTED
#define ERROR_DIRECTORY_NOT_SUPPORTED 336L
#endif

namespace platform {

std::span<const ErrorRow> ErrorRows()
{
    static constexpr ErrorRow kRows[] = {
        {ERROR_FILE_NOT_FOUND, FileProblem::Missing},
        {ERROR_PATH_NOT_FOUND, FileProblem::Missing},
        {ERROR_INVALID_DRIVE, FileProblem::Missing},
        {ERROR_BAD_NETPATH, FileProblem::Missing},
        {ERROR_BAD_NET_NAME, FileProblem::Missing},
        {ERROR_BAD_PATHNAME, FileProblem::Missing},
        {ERROR_FILENAME_EXCED_RANGE, FileProblem::Missing},
        {ERROR_DIRECTORY, FileProblem::Missing},  // a file where a folder is needed
        {ERROR_FILE_EXISTS, FileProblem::Exists},
        {ERROR_ALREADY_EXISTS, FileProblem::Exists},
        {ERROR_INVALID_PARAMETER, FileProblem::NotARegularFile},
        {ERROR_INVALID_NAME, FileProblem::NotARegularFile},  // of a device, too
        {ERROR_DIRECTORY_NOT_SUPPORTED, FileProblem::IsAFolder},
        {ERROR_ACCESS_DENIED, FileProblem::NoAccess},
        {ERROR_WRITE_PROTECT, FileProblem::NoAccess},
        {ERROR_NETWORK_ACCESS_DENIED, FileProblem::NoAccess},
        {ERROR_PRIVILEGE_NOT_HELD, FileProblem::NoAccess},
        {ERROR_SHARING_VIOLATION, FileProblem::InUse},
        {ERROR_LOCK_VIOLATION, FileProblem::InUse},
        {ERROR_USER_MAPPED_FILE, FileProblem::InUse},
        {ERROR_CANCELLED, FileProblem::Cancelled},
        {ERROR_DISK_FULL, FileProblem::DiskFull},
        {ERROR_HANDLE_DISK_FULL, FileProblem::DiskFull},
        {ERROR_NOT_ENOUGH_QUOTA, FileProblem::DiskFull},
        {ERROR_DISK_QUOTA_EXCEEDED, FileProblem::DiskFull},
        {ERROR_FILE_TOO_LARGE, FileProblem::TooLarge},
        {ERROR_NOT_ENOUGH_MEMORY, FileProblem::OutOfMemory},
        {ERROR_OUTOFMEMORY, FileProblem::OutOfMemory},
        {ERROR_NO_SYSTEM_RESOURCES, FileProblem::OutOfMemory},
        {ERROR_COMMITMENT_LIMIT, FileProblem::OutOfMemory},
        {ERROR_BROKEN_PIPE, FileProblem::NobodyReads},
        {ERROR_NO_DATA, FileProblem::NobodyReads},
        {ERROR_PIPE_NOT_CONNECTED, FileProblem::NobodyReads},
        {ERROR_IO_DEVICE, FileProblem::Other},
    };
    return kRows;
}

// The streams of the C library keep the system's number beside errno, and nothing there when they found out
// themselves.
FileResult StreamFailure()
{
    if (_doserrno != 0) return {static_cast<int>(_doserrno)};
    switch (errno) {
        case ENOENT:
            return Failure(FileProblem::Missing);
        case EACCES:
            return Failure(FileProblem::NoAccess);
        case ENOSPC:
            return Failure(FileProblem::DiskFull);
        case EFBIG:
            return Failure(FileProblem::TooLarge);
        case ENOMEM:
        case EMFILE:
            return Failure(FileProblem::OutOfMemory);
        case EPIPE:
            return Failure(FileProblem::NobodyReads);
        default:
            return Failure(FileProblem::Other);
    }
}

namespace {

std::wstring SystemText(int errorNumber, DWORD language)
{
    wchar_t* text = nullptr;
    const DWORD flags = FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS |
                        FORMAT_MESSAGE_MAX_WIDTH_MASK;  // in one line
    const DWORD length = FormatMessageW(flags, nullptr, static_cast<DWORD>(errorNumber), language,
                                        reinterpret_cast<wchar_t*>(&text), 0, nullptr);
    const std::wstring copy(text ? text : L"", length);
    LocalFree(text);
    return copy;
}

}  // namespace

std::string ErrorText(int errorNumber)
{
    auto text = SystemText(errorNumber, MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US));
    if (text.empty()) text = SystemText(errorNumber, 0);
    // No sentence of its own: it stands in brackets and behind colons.
    text.erase(text.find_last_not_of(L" .\r\n") + 1);
    return text.empty() ? "error " + std::to_string(errorNumber) : NarrowText(text);
}

bool FileExists(const std::string& path)
{
    if (const auto pretended = PretendedExistence(path)) return *pretended;
    const auto wide = WidePath(path);
    const DWORD attributes = AttributesOf(wide);
    if (attributes == INVALID_FILE_ATTRIBUTES) return false;
    if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) return (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
    FileFacts facts;
    return FactsOf(wide, Links::Follow, facts) && !facts.IsFolder();
}

bool FolderExists(const std::string& path) { return IsFolder(WidePath(path)); }

FileResult LookUpName(const std::string& path)
{
    if (const auto pretended = PretendedExistence(path))
        return *pretended ? FileResult{} : Failure(FileProblem::Missing);
    if (AttributesOf(WidePath(path)) != INVALID_FILE_ATTRIBUTES) return {};
    return {static_cast<int>(GetLastError())};
}

std::optional<std::uint64_t> FileSize(const std::string& path)
{
    FileFacts facts;
    const auto wide = WidePath(path);
    if (IsDeviceName(wide) || !FactsOf(wide, Links::Follow, facts)) return std::nullopt;
    if (!facts.isDisk || facts.IsFolder()) return std::nullopt;
    return facts.size;
}

std::optional<FileStamp> StampOf(const std::string& path)
{
    FileFacts facts;
    if (!FactsOf(WidePath(path), Links::Follow, facts)) return std::nullopt;
    return FileStamp{.size = facts.size,
                     .modifiedNanoseconds = NanosecondsSince1970(facts.modified),
                     .changedNanoseconds = NanosecondsSince1970(facts.changed),
                     .device = facts.device,
                     .inode = facts.file,
                     .links = facts.links,
                     .regular = facts.isDisk && !facts.IsFolder()};
}

std::optional<FileStamp> StampOf(const std::string& path, bool& isLink)
{
    isLink = NameIsLink(path);
    return StampOf(path);
}

namespace {

/// Whether the group has everybody who uses this computer, or nearly so.
bool IsOfManyUsers(PSID group)
{
    for (const auto kind : {WinWorldSid, WinAuthenticatedUserSid, WinBuiltinUsersSid, WinBuiltinGuestsSid})
        if (IsWellKnownSid(group, kind)) return true;
    return false;
}

/// Whether the entry lets such a group read.
bool LetsManyRead(const void* entry)
{
    const auto& header = *static_cast<const ACE_HEADER*>(entry);
    if (header.AceType != ACCESS_ALLOWED_ACE_TYPE || (header.AceFlags & INHERIT_ONLY_ACE) != 0) return false;
    const auto& allowed = *static_cast<const ACCESS_ALLOWED_ACE*>(entry);
    constexpr ACCESS_MASK reading = FILE_READ_DATA | GENERIC_READ | GENERIC_ALL;
    return (allowed.Mask & reading) != 0 && IsOfManyUsers(const_cast<DWORD*>(&allowed.SidStart));
}

}  // namespace

bool OthersMayRead(const std::string& path)
{
    PSECURITY_DESCRIPTOR read = nullptr;
    ACL* list = nullptr;
    if (GetNamedSecurityInfoW(WidePath(path).c_str(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr,
                              &list, nullptr, &read) != ERROR_SUCCESS)
        return false;
    const std::unique_ptr<void, FreeLocal> descriptor(read);
    if (!list) return true;  // nothing is forbidden to anybody
    for (DWORD index = 0; index < list->AceCount; ++index) {
        void* entry = nullptr;
        if (GetAce(list, index, &entry) && LetsManyRead(entry)) return true;
    }
    return false;
}

std::string HowToKeepFromOthers() { return "icacls FILE /inheritance:r /grant:r %USERNAME%:F"; }

FileResult CheckReadable(const std::string& path)
{
    CHandle file;
    return OpenRegular(path, file);
}

/// Nobody else may have it open while it is open without sharing.
bool IsInUse(const std::string& path)
{
    const auto wide = WidePath(path);
    if (IsDeviceName(wide)) return false;
    const CHandle file(CreateFileW(wide.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    return !file.Valid() && GetLastError() == ERROR_SHARING_VIOLATION;
}

namespace {

FileResult CreateFolder(const std::wstring& path)
{
    if (IsFolder(path)) return {};
    if (const auto allowed = CheckTargetName(path); !allowed) return allowed;
    if (CreateDirectoryW(path.c_str(), nullptr)) return {};
    const auto failure = LastFailure();
    if (IsFolder(path)) return {};
    return ProblemOf(failure) == FileProblem::Exists ? FileResult{ERROR_DIRECTORY} : failure;
}

}  // namespace

FileResult CreateFolders(const std::string& path)
{
    const auto wide = WidePath(path);
    if (wide.empty()) return {ERROR_PATH_NOT_FOUND};
    if (IsFolder(wide)) return {};
    // The folder that is there ends the search upwards: those above it may not be shown to everybody.
    std::size_t end = wide.size();
    while (end > 0 && !IsFolder(wide.substr(0, end + 1))) {
        end = wide.rfind(L'\\', end - 1);
        if (end == std::wstring::npos) end = 0;
    }
    while (end < wide.size()) {
        end = std::min(wide.find(L'\\', end + 1), wide.size());
        if (const auto created = CreateFolder(wide.substr(0, end)); !created) return created;
    }
    return {};
}

FileResult CreateNewFile(const std::string& path)
{
    CHandle file;
    const auto created = OpenForWriting(path, GENERIC_WRITE, kShareAll, CREATE_NEW, file);
    return ProblemOf(created) == FileProblem::IsAFolder ? Failure(FileProblem::Exists) : created;
}

namespace {

struct StreamMode {
    DWORD access = GENERIC_READ;
    DWORD disposition = OPEN_EXISTING;
    int flags = _O_RDONLY;
    bool empties = false;
};

StreamMode Parsed(const std::string& mode)
{
    StreamMode parsed;
    const bool both = mode.find('+') != std::string::npos;
    const char kind = mode.empty() ? 'r' : mode.front();
    if (kind != 'r') {
        parsed.access = GENERIC_WRITE;
        parsed.disposition = mode.find('x') != std::string::npos ? CREATE_NEW : OPEN_ALWAYS;
        parsed.flags = kind == 'a' ? _O_WRONLY | _O_APPEND : _O_WRONLY;
        parsed.empties = kind == 'w';
    }
    if (both) {
        parsed.access = GENERIC_READ | GENERIC_WRITE;
        parsed.flags = (parsed.flags & _O_APPEND) | _O_RDWR;
    }
    return parsed;
}

/// Without what opening has done already, and always with "b": bytes are bytes.
std::string BinaryMode(std::string mode)
{
    std::erase_if(mode, [](char letter) { return letter == 'x' || letter == 'b' || letter == 't'; });
    return mode + 'b';
}

FileResult OpenStreamFile(const std::string& path, const StreamMode& mode, CHandle& file)
{
    if (mode.access == GENERIC_READ) return OpenRegular(path, file);
    if (const auto opened = OpenForWriting(path, mode.access, kShareAll, mode.disposition, file); !opened)
        return opened;
    return mode.empties ? CutTo(file.Get(), 0) : FileResult{};
}

}  // namespace

// Not by _wfopen: its files cannot be renamed or deleted while they are open, and files held for that cannot be
// opened by it.
Stream OpenStream(const std::string& path, const char* mode, FileResult* result)
{
    const auto parsed = Parsed(mode);
    CHandle file;
    auto outcome = OpenStreamFile(path, parsed, file);
    Stream stream;
    if (outcome) {
        const int descriptor = _open_osfhandle(static_cast<intptr_t>(NumberOf(file.Get())), parsed.flags | _O_BINARY);
        if (descriptor >= 0) (void)file.Release();
        if (descriptor >= 0) stream.reset(_fdopen(descriptor, BinaryMode(mode).c_str()));
        if (descriptor >= 0 && !stream) _close(descriptor);
        if (!stream) outcome = StreamFailure();
    }
    if (result) *result = outcome;
    return stream;
}

Stream OpenRegularStream(const std::string& path, FileResult& result) { return OpenStream(path, "rb", &result); }

std::string CanonicalPath(const std::string& path)
{
    const auto wide = WidePath(path);
    const CHandle file = OpenFor(wide, FILE_READ_ATTRIBUTES, 0);
    if (!file.Valid()) return {};
    const auto name = FinalPath(file);
    // A file system that cannot tell still has the path.
    return NarrowPath(name.empty() ? wide : name);
}

FileResult ReadPieces(const std::string& path, const std::function<bool(std::string_view bytes)>& take)
{
    CHandle file;
    if (const auto opened = OpenRegular(path, file); !opened) return opened;
    std::string buffer(std::size_t{1} << 18, '\0');
    for (;;) {
        DWORD count = 0;
        if (!ReadFile(file.Get(), buffer.data(), static_cast<DWORD>(buffer.size()), &count, nullptr))
            return LastFailure();
        if (count == 0 || !take({buffer.data(), count})) return {};
    }
}

void COpenFile::Close() noexcept
{
    if (IsOpen()) CloseHandle(HandleOf(std::exchange(m_file, kNone)));
}

FileResult CreatePrivateFolder(const std::string& path)
{
    COwnerOnly ownerOnly;
    if (const auto made = ownerOnly.Make(); !made) return made;
    return ResultOf(CreateDirectoryW(WidePath(path).c_str(), ownerOnly.Attributes()) != FALSE);
}

// It lies where the user keeps his settings, which the system keeps private.
FileResult MakeFolderPrivate(const std::string&) { return {}; }

// The folder for temporary files is the user's own.
bool IsOwnFolder(const std::string& path)
{
    const auto wide = WidePath(path);
    return IsFolder(wide) && !IsLink(wide);
}

namespace {

/// Owns a search through a folder, or none.
class CSearch {
public:
    explicit CSearch(HANDLE adopted) : m_search(adopted) {}
    CSearch(const CSearch&) = delete;
    CSearch& operator=(const CSearch&) = delete;
    ~CSearch()
    {
        if (Valid()) FindClose(m_search);
    }
    HANDLE Get() const { return m_search; }
    bool Valid() const { return m_search != INVALID_HANDLE_VALUE; }

private:
    HANDLE m_search;
};

struct Entry {
    std::string order;  // the name in UTF-8, whatever the narrow code page is: that decides its place
    FolderEntry listed;
};

std::string Utf8(std::wstring_view text)
{
    const int length = static_cast<int>(text.size());
    std::string bytes(text.size() * 3, '\0');
    const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), length, bytes.data(),
                                         static_cast<int>(bytes.size()), nullptr, nullptr);
    bytes.resize(static_cast<std::size_t>(std::max(size, 0)));
    return bytes;
}

bool CountsAsFolder(const std::wstring& prefix, const WIN32_FIND_DATAW& found)
{
    // Only links need a second look: where they lead decides.
    const bool link =
        (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 && IsReparseTagNameSurrogate(found.dwReserved0);
    if (!link) return (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    FileFacts facts;
    return FactsOf(prefix + found.cFileName, Links::Follow, facts) && facts.IsFolder();
}

Entry EntryOf(const std::wstring& prefix, const WIN32_FIND_DATAW& found)
{
    const std::wstring_view name = found.cFileName;
    const bool hidden = (found.dwFileAttributes & FILE_ATTRIBUTE_HIDDEN) != 0 || name.starts_with(L'.');
    const bool folder = CountsAsFolder(prefix, found);
    // A file that was replaced or moved by its short name would keep that name alone. What is in a folder keeps its
    // own.
    const std::wstring_view shortName = folder ? found.cAlternateFileName : L"";
    return {Utf8(name), {NarrowName(name, shortName), folder, hidden}};
}

FileResult ReadEntries(const CSearch& search, WIN32_FIND_DATAW& found, const std::wstring& prefix,
                       std::vector<Entry>& entries)
{
    do {
        const std::wstring_view name = found.cFileName;
        if (name != L"." && name != L"..") entries.push_back(EntryOf(prefix, found));
    } while (FindNextFileW(search.Get(), &found));
    return GetLastError() == ERROR_NO_MORE_FILES ? FileResult{} : LastFailure();
}

FileResult List(const std::string& path, std::vector<Entry>& entries)
{
    auto prefix = WidePath(path);
    if (prefix.empty()) return {ERROR_PATH_NOT_FOUND};
    if (!prefix.ends_with(L'\\')) prefix += L'\\';
    WIN32_FIND_DATAW found;
    const CSearch search(FindFirstFileExW((prefix + L'*').c_str(), FindExInfoStandard, &found, FindExSearchNameMatch,
                                          nullptr, FIND_FIRST_EX_LARGE_FETCH));
    if (search.Valid()) return ReadEntries(search, found, prefix, entries);
    const auto failure = LastFailure();
    prefix.pop_back();
    if (!IsFolder(prefix))
        return AttributesOf(prefix) == INVALID_FILE_ATTRIBUTES ? failure : FileResult{ERROR_DIRECTORY};
    // The root of an empty drive has not even ".".
    return failure.errorNumber == ERROR_FILE_NOT_FOUND ? FileResult{} : failure;
}

}  // namespace

std::vector<FolderEntry> ListFolder(const std::string& path, FileResult* result)
{
    std::vector<Entry> entries;
    const auto outcome = List(path, entries);
    if (result) *result = outcome;
    if (!outcome) return {};
    std::ranges::sort(entries, NameComesBefore, &Entry::order);
    std::vector<FolderEntry> listed;
    listed.reserve(entries.size());
    for (auto& entry : entries) listed.push_back(std::move(entry.listed));
    return listed;
}

}  // namespace platform
