#include "platform/Files.h"
#include "platform/Paths.h"
#include "platform/WideText_win.h"
#include "platform/Windows_win.h"

#include <shlobj.h>

namespace platform {
namespace {

std::string PathOf(HMODULE module)
{
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const auto size = static_cast<DWORD>(path.size());
        const DWORD length = GetModuleFileNameW(module, path.data(), size);
        if (length < size) {
            path.resize(length);
            return NarrowPath(path);
        }
        path.resize(path.size() * 2);  // it was cut off
    }
}

}  // namespace

std::string AbsolutePath(const std::string& path)
{
    std::string absolute = NarrowPath(WidePath(path));
    // The root of a drive keeps its separator.
    if (absolute.size() > 3 && absolute.ends_with('\\')) absolute.pop_back();
    return absolute;
}

std::string ModulePath(const void* codeInModule)
{
    HMODULE module = nullptr;
    const DWORD flags = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    if (!codeInModule || !GetModuleHandleExW(flags, static_cast<const wchar_t*>(codeInModule), &module)) return {};
    return PathOf(module);
}

std::string ExecutablePath() { return PathOf(nullptr); }

namespace {

std::wstring Variable(const char* name)
{
    const auto wide = WideText(name);
    std::wstring value(GetEnvironmentVariableW(wide.c_str(), nullptr, 0), L'\0');
    value.resize(GetEnvironmentVariableW(wide.c_str(), value.data(), static_cast<DWORD>(value.size())));
    return value;
}

// Anything but an absolute path does not count.
bool IsAbsolute(const std::wstring& path)
{
    return path.starts_with(L"\\\\") || (path.size() > 2 && path[1] == L':' && (path[2] == L'\\' || path[2] == L'/'));
}

/// What the variable says, else the system; without a separator at its end.
std::wstring ConfiguredFolder(const char* variable, int systemFolder)
{
    auto folder = Variable(variable);
    if (!IsAbsolute(folder)) {
        wchar_t known[MAX_PATH] = L"";
        const auto asked = SHGetFolderPathW(nullptr, systemFolder, nullptr, SHGFP_TYPE_CURRENT, known);
        folder = asked == S_OK ? known : std::wstring();
    }
    while (folder.ends_with(L'\\') || folder.ends_with(L'/')) folder.pop_back();
    return folder;
}

}  // namespace

std::string EnvironmentText(const char* name) { return NarrowText(Variable(name)); }

std::string UserCacheFolder()
{
    const std::wstring folder = ConfiguredFolder("LOCALAPPDATA", CSIDL_LOCAL_APPDATA);
    return folder.empty() ? std::string() : NarrowPath(folder);
}

std::string ApplicationDataFolder()
{
    const std::wstring folder = ConfiguredFolder(kApplicationDataVariable, CSIDL_APPDATA);
    if (folder.empty()) return {};
    std::string narrow = NarrowPath(folder);
    return CreateFolders(narrow) ? narrow : std::string();
}

std::vector<std::string> UserFolders()
{
    std::vector<std::string> folders;
    for (const std::wstring& folder :
         {ConfiguredFolder(kApplicationDataVariable, CSIDL_APPDATA),
          ConfiguredFolder("ProgramFiles", CSIDL_PROGRAM_FILES), ConfiguredFolder("", CSIDL_PERSONAL)})
        if (!folder.empty()) folders.push_back(NarrowPath(folder));
    return folders;
}

}  // namespace platform
