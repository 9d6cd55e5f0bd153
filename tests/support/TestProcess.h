// What tests change in, and ask of, their own process.
#pragma once

#include <cstdlib>
#include <string>

#ifdef _WIN32
#include <process.h>

#include "platform/Handle_win.h"
#else
#include <unistd.h>

#include <csignal>
#endif

/// Whether tests can make symbolic links, and files whose names are no text or end with a blank.
#ifdef _WIN32
inline constexpr bool kHasLinks = false;
inline constexpr bool kHasModes = false;  ///< of files: who may read them
#else
inline constexpr bool kHasLinks = true;
inline constexpr bool kHasModes = true;
#endif

/// For this process and its children. An empty value removes the variable.
inline void SetVariable(const std::string& name, const std::string& value)
{
#ifdef _WIN32
    _putenv_s(name.c_str(), value.c_str());
#else
    if (value.empty())
        unsetenv(name.c_str());
    else
        setenv(name.c_str(), value.c_str(), 1);
#endif
}

/// Sets a variable for one test.
class CVariable {
public:
    CVariable(const char* name, const std::string& value) : m_name(name)
    {
        if (const char* before = std::getenv(name)) m_before = before;
        SetVariable(m_name, value);
    }
    ~CVariable() { SetVariable(m_name, m_before); }
    CVariable(const CVariable&) = delete;
    CVariable& operator=(const CVariable&) = delete;

private:
    std::string m_name, m_before;
};

inline int ProcessId()
{
#ifdef _WIN32
    return _getpid();
#else
    return static_cast<int>(getpid());
#endif
}

/// Whoever started the tests may ignore interrupts, which processes inherit; those that are sent here are to arrive.
inline void HeedInterrupts()
{
#ifndef _WIN32
    std::signal(SIGINT, SIG_DFL);
#endif
}

/// Asks this process to end, as a key does (see platform/ThisProcess.h); the request has arrived when this comes
/// back.
inline void Interrupt()
{
#ifdef _WIN32
    // What the system starts a thread with; a key, or what stands for one, would reach everybody at this console.
    const auto pressed = reinterpret_cast<LPTHREAD_START_ROUTINE>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("kernelbase.dll"), "CtrlRoutine")));
    if (!pressed) std::abort();
    const platform::CHandle thread(
        CreateThread(nullptr, 0, pressed, reinterpret_cast<void*>(INT_PTR{CTRL_BREAK_EVENT}), 0, nullptr));
    WaitForSingleObject(thread.Get(), INFINITE);
#else
    std::raise(SIGINT);
#endif
}

/// How the end of a worker that has aborted is told.
#ifdef _WIN32
inline constexpr char kAborted[] = "crashed (0xC0000409)";
#else
inline constexpr char kAborted[] = "crashed (signal 6)";
#endif
