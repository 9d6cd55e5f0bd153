#pragma once

#include <cstddef>
#include <string>

#include "ui/GridRows.h"
#include "ui/Windows.h"

// What the plug-in and its library of windows have to agree on. Both are made by one build, so C++ objects cross
// between them: never exceptions (each side may have a C++ run-time library of its own), and what one side has made
// is deleted through its virtual destructor.

/// The window of the host that ours belong to; null: none. Asked before each window. `context` is the asker's.
using WindowOwnerProc = void* (*)(void* context);

struct WindowsRequest {
    const char* version;  ///< what WindowsVersion() says in the plug-in
    WindowOwnerProc owner;
    void* context;
    char problem[512];  ///< the answer when there are no windows: why
};

/// The one function of the library. The windows live until they are deleted, which stops the toolkit if they started
/// it; null: `problem` says why not. To be called in the host's thread for windows, like all that comes of it.
using MakeWindowsProc = CWindows* (*)(WindowsRequest* request);
inline constexpr char kMakeWindows[] = "FerruleMakeWindows";

/// Differs whenever the two sides would not understand each other.
inline std::string WindowsVersion()
{
    std::string text = FERRULE_VERSION " built with " __VERSION__;
    for (const std::size_t size :
         {sizeof(DialogForm), sizeof(FormControl), sizeof(FileChoice), sizeof(CGridRows), sizeof(CGridModel)})
        text += "-" + std::to_string(size);
    return text;
}
