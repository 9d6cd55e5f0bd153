#include "platform/FileHandles_win.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "platform/FileSteps.h"
#include "platform/Files.h"
#include "platform/Handle_win.h"
#include "platform/WideText_win.h"

#include <sddl.h>

namespace platform {
namespace {

constexpr std::int64_t kNanosecondsOfTick = 100;
constexpr std::int64_t kTicksUntil1970 = 116'444'736'000'000'000;  // from 1601

}  // namespace

std::int64_t NanosecondsSince1970(const FILETIME& time)
{
    const auto ticks = static_cast<std::int64_t>(std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime);
    return (ticks - kTicksUntil1970) * kNanosecondsOfTick;
}

FILETIME FileTimeOf(std::int64_t nanosecondsSince1970)
{
    const auto ticks = static_cast<std::uint64_t>(nanosecondsSince1970 / kNanosecondsOfTick + kTicksUntil1970);
    return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

namespace {

std::uint64_t Joined(DWORD high, DWORD low) { return std::uint64_t{high} << 32 | low; }

// Some file systems number their files with more than 64 bits; the others leave the second half empty.
void TellIdentity(HANDLE file, const BY_HANDLE_FILE_INFORMATION& found, FileFacts& facts)
{
    facts.device = found.dwVolumeSerialNumber;
    facts.file = Joined(found.nFileIndexHigh, found.nFileIndexLow);
    FILE_ID_INFO identity;
    if (!GetFileInformationByHandleEx(file, FileIdInfo, &identity, sizeof identity)) return;
    std::uint64_t halves[2];
    static_assert(sizeof halves == sizeof identity.FileId);
    std::memcpy(halves, &identity.FileId, sizeof halves);
    facts.device = identity.VolumeSerialNumber;
    facts.file = halves[0] ^ halves[1];
}

bool IsLinkTag(DWORD attributes, DWORD tag)
{
    return (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 && IsReparseTagNameSurrogate(tag);
}

}  // namespace

CHandle OpenFor(const std::wstring& path, DWORD right, DWORD flags)
{
    return CHandle(CreateFileW(path.c_str(), right, kShareAll, nullptr, OPEN_EXISTING,
                               flags | FILE_FLAG_BACKUP_SEMANTICS, nullptr));
}

std::wstring FinalPath(const CHandle& file)
{
    if (!file.Valid()) return {};
    std::wstring name(GetFinalPathNameByHandleW(file.Get(), nullptr, 0, FILE_NAME_NORMALIZED), L'\0');
    name.resize(GetFinalPathNameByHandleW(file.Get(), name.data(), static_cast<DWORD>(name.size()), 0));
    return name;
}

FileResult FactsOf(HANDLE file, FileFacts& facts)
{
    facts = {};
    facts.isDisk = GetFileType(file) == FILE_TYPE_DISK;
    if (!facts.isDisk) return {};
    BY_HANDLE_FILE_INFORMATION found;
    if (!GetFileInformationByHandle(file, &found)) return LastFailure();
    facts.attributes = found.dwFileAttributes;
    facts.size = Joined(found.nFileSizeHigh, found.nFileSizeLow);
    facts.modified = found.ftLastWriteTime;
    FILE_BASIC_INFO times;
    if (GetFileInformationByHandleEx(file, FileBasicInfo, &times, sizeof times)) {
        facts.changed.dwLowDateTime = times.ChangeTime.LowPart;
        facts.changed.dwHighDateTime = static_cast<DWORD>(times.ChangeTime.HighPart);
    }
    facts.links = found.nNumberOfLinks;
    TellIdentity(file, found, facts);
    if ((facts.attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) return {};
    FILE_ATTRIBUTE_TAG_INFO tag;
    facts.isLink = GetFileInformationByHandleEx(file, FileAttributeTagInfo, &tag, sizeof tag) &&
                   IsLinkTag(tag.FileAttributes, tag.ReparseTag);
    return {};
}

FileResult FactsOf(const std::wstring& path, Links links, FileFacts& facts)
{
    const DWORD flags = links == Links::Keep ? FILE_FLAG_OPEN_REPARSE_POINT : DWORD{0};
    const CHandle file = OpenFor(path, FILE_READ_ATTRIBUTES, flags);
    return file.Valid() ? FactsOf(file.Get(), facts) : LastFailure();
}

DWORD AttributesOf(const std::wstring& path) { return GetFileAttributesW(path.c_str()); }

bool IsLink(const std::wstring& path)
{
    const DWORD attributes = AttributesOf(path);
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) return false;
    FileFacts facts;
    return FactsOf(path, Links::Keep, facts) && facts.isLink;
}

bool IsFolder(const std::wstring& path)
{
    const DWORD attributes = AttributesOf(path);
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) return false;
    FileFacts facts;
    return (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0 || FactsOf(path, Links::Follow, facts);
}

FileResult OpenForWriting(const std::string& path, DWORD access, DWORD share, DWORD disposition, CHandle& file)
{
    const auto wide = WidePath(path);
    if (const auto allowed = CheckTargetName(wide); !allowed) return allowed;
    CHandle opened(CreateFileW(wide.c_str(), access, share, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!opened.Valid()) {
        const auto failure = LastFailure();
        return IsFolder(wide) ? Failure(FileProblem::IsAFolder) : failure;
    }
    if (GetFileType(opened.Get()) != FILE_TYPE_DISK) return Failure(FileProblem::NotARegularFile);
    file = std::move(opened);
    return {};
}

FileResult OpenRegular(const std::string& path, CHandle& file)
{
    if (PretendedExistence(path) == false) return Failure(FileProblem::Missing);
    const auto wide = WidePath(path);
    // Told by the name, because opening a device may already act on it.
    if (IsDeviceName(wide)) return Failure(FileProblem::NotARegularFile);
    CHandle opened(CreateFileW(wide.c_str(), GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING,
                               FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
    if (!opened.Valid()) {
        const auto failure = LastFailure();
        return IsFolder(wide) ? Failure(FileProblem::IsAFolder) : failure;
    }
    if (GetFileType(opened.Get()) != FILE_TYPE_DISK) return Failure(FileProblem::NotARegularFile);
    file = std::move(opened);
    return {};
}

FileResult WriteAll(HANDLE file, std::string_view bytes)
{
    constexpr std::size_t kAtOnce = std::size_t{1} << 26;
    while (!bytes.empty()) {
        DWORD written = 0;
        const auto part = static_cast<DWORD>(std::min(bytes.size(), kAtOnce));
        if (!WriteFile(file, bytes.data(), part, &written, nullptr)) return LastFailure();
        if (written == 0) return Failure(FileProblem::DiskFull);
        bytes.remove_prefix(written);
    }
    return {};
}

FileResult CutTo(HANDLE file, std::uint64_t length)
{
    FILE_END_OF_FILE_INFO end;
    end.EndOfFile.QuadPart = static_cast<LONGLONG>(length);
    return ResultOf(SetFileInformationByHandle(file, FileEndOfFileInfo, &end, sizeof end));
}

std::wstring FolderPrefix(const std::wstring& path) { return path.substr(0, path.rfind(L'\\') + 1); }

namespace {

/// The user under whom this process runs, as access lists name him. Not the owner that new files get, which for an
/// administrator may be all administrators.
FileResult NameUser(std::wstring& user)
{
    HANDLE opened = nullptr;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &opened)) return LastFailure();
    const CHandle token(opened);
    DWORD size = 0;
    GetTokenInformation(token.Get(), TokenUser, nullptr, 0, &size);
    std::vector<char> facts(size);
    if (!GetTokenInformation(token.Get(), TokenUser, facts.data(), size, &size)) return LastFailure();
    wchar_t* text = nullptr;
    if (!ConvertSidToStringSidW(reinterpret_cast<TOKEN_USER*>(facts.data())->User.Sid, &text)) return LastFailure();
    const std::unique_ptr<void, FreeLocal> owned(text);
    user = text;
    return {};
}

}  // namespace

FileResult COwnerOnly::Make()
{
    std::wstring user;
    if (const auto named = NameUser(user); !named) return named;
    // Protected from what the folder hands on; full access for the user, the system and the administrators.
    const std::wstring rights = L"D:P(A;;FA;;;" + user + L")(A;;FA;;;SY)(A;;FA;;;BA)";
    void* descriptor = nullptr;
    if (!ConvertStringSecurityDescriptorToSecurityDescriptorW(rights.c_str(), SDDL_REVISION_1, &descriptor, nullptr))
        return LastFailure();
    m_descriptor.reset(descriptor);
    m_attributes = {sizeof m_attributes, descriptor, FALSE};
    return {};
}

}  // namespace platform
