#include "platform/Environment.h"

#include "platform/Windows_win.h"

#include <shlobj.h>

#include "platform/Files.h"
#include "platform/WideText_win.h"

namespace platform {
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

std::wstring ConfiguredFolder()
{
    auto folder = Variable(kApplicationDataVariable);
    if (IsAbsolute(folder)) return folder;
    wchar_t known[MAX_PATH] = L"";
    return SHGetFolderPathW(nullptr, CSIDL_APPDATA, nullptr, SHGFP_TYPE_CURRENT, known) == S_OK ? known
                                                                                                : std::wstring();
}

}  // namespace

std::string EnvironmentText(const char* name) { return NarrowText(Variable(name)); }

std::string ApplicationDataFolder()
{
    std::wstring folder = ConfiguredFolder();
    while (folder.ends_with(L'\\') || folder.ends_with(L'/')) folder.pop_back();
    if (folder.empty()) return {};
    std::string narrow = NarrowPath(folder);
    return CreateFolders(narrow) ? narrow : std::string();
}

}  // namespace platform
