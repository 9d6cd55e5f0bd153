#include "platform/Paths.h"

#include "platform/WideText_win.h"
#include "platform/Windows_win.h"

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

}  // namespace platform
