#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/Files.h"
#include "platform/Handle_win.h"
#include "platform/Windows_win.h"

// Shared by the file services of this folder; not for callers outside. Wide paths are as WidePath makes them.
namespace platform {

inline constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

/// The handle as our headers keep it, and back.
inline long long NumberOf(HANDLE handle) { return static_cast<long long>(reinterpret_cast<INT_PTR>(handle)); }
inline HANDLE HandleOf(long long number) { return reinterpret_cast<HANDLE>(static_cast<INT_PTR>(number)); }

struct FileFacts {
    DWORD attributes = 0;
    bool isLink = false;  ///< a symbolic link or a junction that was not followed
    bool isDisk = false;  ///< no device or pipe
    std::uint64_t size = 0;
    FILETIME modified{}, changed{};  ///< the latter also when names or rights change; zero where nobody knows
    std::uint64_t device = 0, file = 0, links = 0;
    bool IsFolder() const { return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0; }
};
/// Of the times that the system keeps for files, and back.
std::int64_t NanosecondsSince1970(const FILETIME& time);
FILETIME FileTimeOf(std::int64_t nanosecondsSince1970);

/// Opens what the path leads to, or by FILE_FLAG_OPEN_REPARSE_POINT the link itself, for one right only; others are
/// not asked to share anything unless that is DELETE.
CHandle OpenFor(const std::wstring& path, DWORD right, DWORD flags);
/// The path under which the system knows the open file, links resolved, in the letter cases in which it was created.
/// Empty when the file is not open or the file system cannot tell.
std::wstring FinalPath(const CHandle& file);

enum class Links { Follow, Keep };
FileResult FactsOf(const std::wstring& path, Links links, FileFacts& facts);
FileResult FactsOf(HANDLE file, FileFacts& facts);

bool IsFolder(const std::wstring& path);
/// The attributes of what stands at the path, links not followed; INVALID_FILE_ATTRIBUTES when there is nothing.
DWORD AttributesOf(const std::wstring& path);
bool IsLink(const std::wstring& path);

/// Opens or creates what is to be written: no folder, and no name that CheckTargetName refuses.
FileResult OpenForWriting(const std::string& path, DWORD access, DWORD share, DWORD disposition, CHandle& file);
/// Opens a regular file for reading; others may do with it what they want.
FileResult OpenRegular(const std::string& path, CHandle& file);
FileResult WriteAll(HANDLE file, std::string_view bytes);
FileResult CutTo(HANDLE file, std::uint64_t length);

/// The folder part of a path with its separator.
std::wstring FolderPrefix(const std::wstring& path);

/// Does again what scanners and indexers prevented, who look into each new file for a moment. `act` answers as the
/// system's calls do.
template <class Act>
FileResult Persistently(Act act)
{
    constexpr DWORD kFirstPause = 10, kLongestPause = 80;  // milliseconds; 150 in all
    for (DWORD pause = kFirstPause;; pause *= 2) {
        const FileResult result = ResultOf(act());
        const bool passing =
            result.errorNumber == ERROR_SHARING_VIOLATION || result.errorNumber == ERROR_ACCESS_DENIED;
        if (!passing || pause > kLongestPause) return result;
        Sleep(pause);
    }
}

struct FreeLocal {
    void operator()(void* memory) const { LocalFree(memory); }
};

/// The rights of a new file that is this user's own: administrators and the system have them, too, since a run may be
/// scheduled under any of these, and nothing comes from the folder.
class COwnerOnly {
public:
    FileResult Make();
    /// For the call that creates the file; null unless made.
    SECURITY_ATTRIBUTES* Attributes() { return m_descriptor ? &m_attributes : nullptr; }

private:
    std::unique_ptr<void, FreeLocal> m_descriptor;
    SECURITY_ATTRIBUTES m_attributes{};
};

}  // namespace platform
