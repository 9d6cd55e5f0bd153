// The dialogs in which files and folders are chosen, and the windows that other windows belong to.
#include <cstddef>
#include <limits>
#include <string>
#include <vector>

#include "openhost/app/HostWindow.h"
#include "openhost/app/Slots.h"
#include "openhost/core/Host.h"
#include "openhost/core/Memory.h"
#include "openhost/files/FilePaths.h"
#include "openhost/values/Text.h"

namespace openhost {

namespace {

/// The host's window; null: nobody is there to choose anything. Raises genErrBadParm without parameters.
CHostWindow* WindowFor(AVOpenSaveDialogParams params)
{
    Require(params && params->size >= offsetof(AVOpenSaveDialogParamsRec, settingsComputeEnabledProc),
            "a dialog needs its parameters");
    return Part<WindowPlace>().window;
}

std::string TitleOf(AVOpenSaveDialogParams params, const char* usual)
{
    return params->windowTitle ? TextAt(params->windowTitle).Utf8() : usual;
}

void AddPatterns(const AVFileFilterRec& filter, std::string& patterns)
{
    for (AVArraySize number = 0; number < filter.numFileDescs; ++number)
        patterns += (patterns.empty() ? "*." : ";*.") + std::string(filter.fileDescs[number].extension);
}

/// Those of all filters as "*.pdf;*.txt": the window shows them together.
std::string PatternsOf(AVOpenSaveDialogParams params)
{
    std::string patterns;
    if (!params->fileFilters) return patterns;
    for (AVArraySize number = 0; number < params->numFileFilters; ++number)
        if (params->fileFilters[number]) AddPatterns(*params->fileFilters[number], patterns);
    return patterns;
}

/// The paths in memory that the plug-in frees; it releases the paths, too.
ASPathName* SharedPaths(const std::vector<std::string>& files)
{
    auto* const paths =
        static_cast<ASPathName*>(AllocateShared(static_cast<ASSize_t>(files.size() * sizeof(ASPathName))));
    if (!paths) Raise(genErrNoMemory, "out of memory");
    for (std::size_t number = 0; number < files.size(); ++number) paths[number] = NewPath(files[number]);
    return paths;
}

ASBool OpenDialog(AVOpenSaveDialogParams params, ASFileSys* fileSys, ASPathName** paths, AVArraySize* count,
                  AVFilterIndex*)
{
    CHostWindow* const window = WindowFor(params);
    if (!window) return 0;
    Require(paths && count, "no place for the chosen files");
    const bool several = params->flags & kAVOpenSaveAllowMultiple;
    const auto files = window->ChooseFiles(TitleOf(params, "Open"), PatternsOf(params), several);
    if (files.empty()) return 0;
    Require(files.size() <= std::numeric_limits<AVArraySize>::max(),
            "more files were chosen than can be handed over");
    *paths = SharedPaths(files);
    *count = static_cast<AVArraySize>(files.size());
    if (fileSys) *fileSys = DefaultFileSys();
    return 1;
}

ASBool FolderDialog(AVOpenSaveDialogParams params, ASFileSys* fileSys, ASPathName* path)
{
    CHostWindow* const window = WindowFor(params);
    if (!window) return 0;
    Require(path != nullptr, "no place for the chosen folder");
    const std::string folder = window->ChooseFolder(TitleOf(params, "Select a folder"));
    if (folder.empty()) return 0;
    *path = NewPath(folder);
    if (fileSys) *fileSys = DefaultFileSys();
    return 1;
}

// The window asks for no targets: plug-ins are answered as if the user had cancelled.

ASBool SaveDialog(AVOpenSaveDialogParams params, ASFileSys*, ASPathName*, AVFilterIndex*)
{
    WindowFor(params);
    return 0;
}

ASBool SaveDialogEx(AVOpenSaveDialogParams params, AVOpenSaveDialogOutParams)
{
    WindowFor(params);
    return 0;
}

HWND OwnWindow()
{
    CHostWindow* const window = Part<WindowPlace>().window;
    return window ? static_cast<HWND>(window->Handle()) : nullptr;
}

HWND ModalParent(AVDoc) { return OwnWindow(); }
HWND ModelessParent() { return OwnWindow(); }

}  // namespace

void OfferDialogSlots(CTables& tables)
{
    OFFER(tables, AcroView, AVAppOpenDialog, OpenDialog);
    OFFER(tables, AcroView, AVAppSaveDialog, SaveDialog);
    OFFER(tables, AcroView, AVAppSaveDialogEx, SaveDialogEx);
    OFFER(tables, AcroView, AVAppChooseFolderDialog, FolderDialog);
    OFFER(tables, Win, WinAppGetModalParent, ModalParent);
    OFFER(tables, Win, WinAppGetModelessParent, ModelessParent);
}

}  // namespace openhost
