#include <dlfcn.h>

#include "openhost/program/PlugIns.h"

namespace openhost {

std::unique_ptr<CPlugInLibrary> CPlugInLibrary::Load(const std::string& path, std::string& problem)
{
    // A name without a slash would be looked for in the system's library folders.
    const std::string file = path.find('/') == std::string::npos ? "./" + path : path;
    void* const handle = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle) return std::unique_ptr<CPlugInLibrary>(new CPlugInLibrary(handle));
    const char* const said = dlerror();
    problem = said ? said : "unknown reason";
    return nullptr;
}

CPlugInLibrary::~CPlugInLibrary() { dlclose(m_handle); }

PlugInMainProc CPlugInLibrary::Entry() const
{
    return reinterpret_cast<PlugInMainProc>(dlsym(m_handle, "PlugInMain"));
}

}  // namespace openhost
