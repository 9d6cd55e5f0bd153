#include "openhost/program/PlugIns.h"
#include "platform/Handle_win.h"
#include "platform/WideText_win.h"

namespace openhost {

namespace {

constexpr std::size_t kUsualLength = 260;

/// Absolute, and in the usual form as long as that serves: a library is known by the path that it was loaded with.
std::wstring LoadingPath(const std::string& path)
{
    const std::wstring wide = platform::WidePath(path);
    const std::wstring usual = platform::WideText(platform::NarrowPath(wide));
    return usual.size() < kUsualLength ? usual : wide;
}

}  // namespace

std::unique_ptr<CPlugInLibrary> CPlugInLibrary::Load(const std::string& path, std::string& problem)
{
    // What it needs is looked for beside it and in the system's folder, never in the current one.
    constexpr DWORD kWhereToLook = LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32;
    const std::wstring file = LoadingPath(path);
    const HMODULE handle = LoadLibraryExW(file.c_str(), nullptr, kWhereToLook);
    if (handle) return std::unique_ptr<CPlugInLibrary>(new CPlugInLibrary(handle));
    problem = platform::ErrorText(platform::LastFailure().errorNumber);
    return nullptr;
}

CPlugInLibrary::~CPlugInLibrary() { FreeLibrary(static_cast<HMODULE>(m_handle)); }

PlugInMainProc CPlugInLibrary::Entry() const
{
    return reinterpret_cast<PlugInMainProc>(
        reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(m_handle), "PlugInMain")));
}

}  // namespace openhost
