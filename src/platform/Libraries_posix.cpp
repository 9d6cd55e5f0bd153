#include <dlfcn.h>

#include "platform/Libraries.h"

namespace platform {

LibraryFunction FunctionOfLibrary(const std::string& path, const char* name, std::string& problem)
{
    if (!path.starts_with('/')) {  // would be looked for in the system's folders
        problem = "not an absolute path";
        return nullptr;
    }
    void* const library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    void* const function = library ? dlsym(library, name) : nullptr;
    if (!function) {
        const char* const said = dlerror();
        problem = said ? said : "unknown reason";
    }
    return reinterpret_cast<LibraryFunction>(function);
}

}  // namespace platform
