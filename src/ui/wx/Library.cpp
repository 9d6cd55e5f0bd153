// The entry of the library of windows.
#include <cstdio>
#include <memory>

#include "ui/WindowsFactory.h"
#include "ui/wx/WxWindows.h"

#ifdef _WIN32
#define LIBRARY_EXPORT __declspec(dllexport)
#else
#define LIBRARY_EXPORT __attribute__((visibility("default")))
#endif

namespace {

CWindows* Refuse(WindowsRequest& request, const std::string& problem)
{
    std::snprintf(request.problem, sizeof request.problem, "%s", problem.c_str());
    return nullptr;
}

CWindows* Make(WindowsRequest& request)
{
    if (WindowsVersion() != request.version)
        return Refuse(request, "the library of windows is of another version than the plug-in; install both anew.");
    std::string problem;
    auto owner = [ask = request.owner, context = request.context] { return ask ? ask(context) : nullptr; };
    std::unique_ptr<CWindows> windows = CWxWindows::Make(owner, problem);
    return windows ? windows.release() : Refuse(request, problem);
}

}  // namespace

extern "C" LIBRARY_EXPORT CWindows* FerruleMakeWindows(WindowsRequest* request)
{
    try {
        return Make(*request);
    } catch (...) {
        return Refuse(*request, "out of memory.");
    }
}
