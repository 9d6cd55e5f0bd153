#include "platform/Files.h"
#include "platform/Handle_win.h"
#include "platform/Libraries.h"
#include "platform/WideText_win.h"
#include "platform/Windows_win.h"

namespace platform {

// Never freed, so it stays. The usual form of the path as long as that serves: a library is known by what it was
// loaded by.
LibraryFunction FunctionOfLibrary(const std::string& path, const char* name, std::string& problem)
{
    constexpr DWORD kWhereToLook = LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32;
    const std::wstring wide = WidePath(path);
    const std::wstring usual = WideText(NarrowPath(wide));
    const HMODULE library = LoadLibraryExW((usual.size() < MAX_PATH ? usual : wide).c_str(), nullptr, kWhereToLook);
    const auto function =
        library ? reinterpret_cast<LibraryFunction>(reinterpret_cast<void*>(GetProcAddress(library, name))) : nullptr;
    if (!function) problem = ErrorText(LastFailure().errorNumber);
    return function;
}

}  // namespace platform
