#pragma once

#include <functional>
#include <memory>
#include <string>

#include "ui/Windows.h"

/// The plug-in's windows, which are in a library of their own so that nobody pays for them who opens none:
/// Ferrule/FerruleWindows.dll (elsewhere .so) in the plug-in's folder. It is loaded by the first question for
/// windows.
class CWindowsLibrary {
public:
    /// `plugIn`: absolute path of the plug-in. `owner` answers the host's window or null, and is asked before each
    /// window.
    CWindowsLibrary(const std::string& plugIn, std::function<void*()> owner);
    CWindowsLibrary(const CWindowsLibrary&) = delete;
    CWindowsLibrary& operator=(const CWindowsLibrary&) = delete;
    /// Stops the toolkit; the library stays in the process, since what it has loaded cannot be unloaded safely.
    ~CWindowsLibrary();

    /// Stops the toolkit, for good, while the host still lives: the end of a process is too late for it.
    void Stop() { m_windows.reset(); }

    /// Valid until Stop and as long as this object. What cannot be had is tried again the next time.
    [[nodiscard]] Expected<CWindows*> Windows();

private:
    std::string m_file;
    std::function<void*()> m_owner;
    std::unique_ptr<CWindows> m_windows;
};
