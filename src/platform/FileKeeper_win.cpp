#include <algorithm>

#include "platform/FileHandles_win.h"
#include "platform/FileKeeper.h"
#include "platform/FileSteps.h"
#include "platform/WideText_win.h"
#include "platform/Windows_win.h"

namespace platform {
namespace {

/// The marks that somebody sets; the others tell how the file is stored.
constexpr DWORD kMarks = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM |
                         FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;

}  // namespace

std::optional<FileTraits> TraitsOf(const std::string& path, FileResult* result)
{
    WIN32_FILE_ATTRIBUTE_DATA data{};
    const FileResult asked =
        ResultOf(GetFileAttributesExW(WidePath(path).c_str(), GetFileExInfoStandard, &data) != FALSE);
    if (result) *result = asked;
    if (!asked) return std::nullopt;
    return FileTraits{.mode = data.dwFileAttributes & kMarks,
                      .modifiedNanoseconds = NanosecondsSince1970(data.ftLastWriteTime),
                      .accessedNanoseconds = NanosecondsSince1970(data.ftLastAccessTime)};
}

bool GiveTraits(const std::string& path, const FileTraits& traits)
{
    const auto wide = WidePath(path);
    // The times of a file that is marked as read-only cannot be set.
    (void)SetFileAttributesW(wide.c_str(), FILE_ATTRIBUTE_NORMAL);
    {
        const CHandle file(CreateFileW(wide.c_str(), FILE_WRITE_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                       nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
        const FILETIME accessed = FileTimeOf(traits.accessedNanoseconds),
                       modified = FileTimeOf(traits.modifiedNanoseconds);
        if (file.Valid()) (void)SetFileTime(file.Get(), nullptr, &accessed, &modified);
    }
    const DWORD marks = traits.mode & kMarks;
    (void)SetFileAttributesW(wide.c_str(), marks == 0 ? FILE_ATTRIBUTE_NORMAL : marks);
    const auto given = TraitsOf(path);
    return given && given->Fulfil(traits);
}

// Links are kept as what they lead to.
std::string LinkText(const std::string&) { return {}; }

// Not every file system has second names, and a copy is as good.
FileResult LinkFile(const std::string&, const std::string&) { return {ERROR_NOT_SUPPORTED}; }

FileResult CopyLink(const std::string&, const std::string&) { return {ERROR_NOT_SUPPORTED}; }

}  // namespace platform
