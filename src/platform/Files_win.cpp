#include "platform/Files.h"

#include <fcntl.h>
#include <io.h>

#include <algorithm>
#include <string>

#include "platform/FileHandles_win.h"
#include "platform/FileProblem.h"
#include "platform/WatchedActs.h"
#include "platform/WideText_win.h"

namespace platform {
namespace {

constexpr std::int64_t kNanosecondsOfTick = 100;
constexpr std::int64_t kTicksUntil1970 = 116'444'736'000'000'000;  // from 1601

std::int64_t NanosecondsSince1970(const FILETIME& time)
{
    const auto ticks = static_cast<std::int64_t>(std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime);
    return (ticks - kTicksUntil1970) * kNanosecondsOfTick;
}

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

bool NameExists(const std::string& path)
{
    if (const auto pretended = PretendedExistence(path)) return *pretended;
    return AttributesOf(WidePath(path)) != INVALID_FILE_ATTRIBUTES;
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
                     .device = facts.device,
                     .inode = facts.file,
                     .links = facts.links};
}

FileResult CheckReadable(const std::string& path)
{
    CHandle file;
    return OpenRegular(path, file);
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

}  // namespace platform
