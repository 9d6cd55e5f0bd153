#include "platform/ThisProcess_win.h"

#include <fcntl.h>
#include <io.h>

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <iterator>
#include <limits>

#include "base/Unicode.h"
#include "platform/ThisProcess.h"
#include "platform/Windows_win.h"

namespace platform {
namespace {

constexpr UINT kExitCodeOfAbort = 0xC0000409;  // what newer run-time libraries make of it
UINT formerCodePage = 0;

void GoOn(const wchar_t*, const wchar_t*, const wchar_t*, unsigned, uintptr_t) {}

void Crash(int) { TerminateProcess(GetCurrentProcess(), kExitCodeOfAbort); }

// The process ends at once, with the exception as its exit code. The error mode alone keeps dialogs away, but not
// whoever is registered to debug programs that crash.
LONG WINAPI EndBy(EXCEPTION_POINTERS*) { return EXCEPTION_EXECUTE_HANDLER; }

void OpenNoDialogs()
{
    SetErrorMode(GetErrorMode() | SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
    SetUnhandledExceptionFilter(&EndBy);
    _set_invalid_parameter_handler(&GoOn);  // the call fails instead
    _set_error_mode(_OUT_TO_STDERR);
    std::signal(SIGABRT, &Crash);
}

bool IsOpen(HANDLE handle)
{
    if (!handle || handle == INVALID_HANDLE_VALUE) return false;
    SetLastError(NO_ERROR);
    return GetFileType(handle) != FILE_TYPE_UNKNOWN || GetLastError() == NO_ERROR;
}

/// Lets the stream lead nowhere, under its own number. False when the system refuses.
bool LeadNowhere(std::FILE* stream, int number, DWORD name)
{
    const int nowhere = _open("NUL", _O_RDWR | _O_BINARY);
    if (nowhere < 0) return false;
    if (nowhere != number) {
        const int copied = _dup2(nowhere, number);
        _close(nowhere);
        if (copied != 0) return false;
    }
    // The run-time library has taken the number from a stream that it found without a handle; reopening would give
    // it another one, or fail.
    stream->_file = number;
    return SetStdHandle(name, reinterpret_cast<HANDLE>(_get_osfhandle(number)));
}

void FillStandardStreams()
{
    std::FILE* const streams[] = {stdin, stdout, stderr};
    const DWORD names[] = {STD_INPUT_HANDLE, STD_OUTPUT_HANDLE, STD_ERROR_HANDLE};
    for (int number = 0; number < 3; ++number) {
        const bool open = _fileno(streams[number]) == number && IsOpen(GetStdHandle(names[number]));
        if (!open && !LeadNowhere(streams[number], number, names[number])) std::_Exit(1);
    }
    std::setvbuf(stderr, nullptr, _IONBF, 0);
}

void CarryBytes()
{
    for (std::FILE* const stream : {stdin, stdout, stderr}) _setmode(_fileno(stream), _O_BINARY);
}

void ShowUtf8()
{
    DWORD mode = 0;
    if (!GetConsoleMode(GetStdHandle(STD_OUTPUT_HANDLE), &mode) &&
        !GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode))
        return;
    formerCodePage = GetConsoleOutputCP();
    if (formerCodePage == CP_UTF8 || !SetConsoleOutputCP(CP_UTF8)) return;
    // The console outlives this process, and others that know nothing of UTF-8 go on writing there.
    std::atexit([] { SetConsoleOutputCP(formerCodePage); });
}

}  // namespace

void PrepareProcess()
{
    OpenNoDialogs();
    FillStandardStreams();
    CarryBytes();
    ShowUtf8();
}

int OnDeepStack(const std::function<int()>& work) { return work(); }

namespace {

std::atomic<int> count{0};
HANDLE wakeUp = nullptr;  // never closed

// Called in a thread of its own.
BOOL WINAPI Count(DWORD request)
{
    ++count;
    if (wakeUp) SetEvent(wakeUp);
    // These end the process as soon as this returns, and after a time that the system knows even if it does not:
    // until then the run may come to its end.
    if (request == CTRL_CLOSE_EVENT || request == CTRL_LOGOFF_EVENT || request == CTRL_SHUTDOWN_EVENT)
        Sleep(INFINITE);
    return TRUE;
}

}  // namespace

void CountInterrupts()
{
    if (wakeUp) return;
    // Without an event the requests still count; only the waits do not end early.
    wakeUp = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    SetConsoleCtrlHandler(&Count, TRUE);
}

int Interrupts() { return count; }

HANDLE InterruptEvent() { return wakeUp; }

void ForgetInterruptWakeUps()
{
    if (wakeUp) ResetEvent(wakeUp);
}

std::optional<MemoryStatus> GlobalMemoryStatus()
{
    MEMORYSTATUSEX found;
    found.dwLength = sizeof found;
    if (!GlobalMemoryStatusEx(&found)) return std::nullopt;
    return MemoryStatus{.totalPhysical = found.ullTotalPhys,
                        .availablePhysical = found.ullAvailPhys,
                        .totalVirtual = found.ullTotalVirtual,
                        .availableVirtual = found.ullAvailVirtual,
                        .totalPageFile = found.ullTotalPageFile,
                        .availablePageFile = found.ullAvailPageFile,
                        .loadPercent = found.dwMemoryLoad};
}

/// Pipes and files of workers are handles, of which there are as many as memory holds.
std::uint64_t MakeRoomForOpenFiles(std::uint64_t) { return std::numeric_limits<std::uint64_t>::max(); }

namespace {

constexpr int kUsualWidth = 80;

HANDLE HandleOf(StandardStream stream)
{
    return GetStdHandle(stream == StandardStream::Output ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE);
}

}  // namespace

// Terminals of another kind stand behind a pipe and are none: nothing tells their width.
bool TakesControlCodes(StandardStream stream)
{
    const HANDLE console = HandleOf(stream);
    DWORD mode = 0;
    if (!GetConsoleMode(console, &mode)) return false;
    constexpr DWORD kNeeded = ENABLE_PROCESSED_OUTPUT | ENABLE_VIRTUAL_TERMINAL_PROCESSING;
    return (mode & kNeeded) == kNeeded || SetConsoleMode(console, mode | kNeeded);
}

bool IsTerminal(StandardStream stream)
{
    DWORD mode = 0;
    return GetConsoleMode(HandleOf(stream), &mode) != 0;
}

int TerminalWidth(StandardStream stream)
{
    CONSOLE_SCREEN_BUFFER_INFO facts{};
    if (!GetConsoleScreenBufferInfo(HandleOf(stream), &facts)) return kUsualWidth;
    const int width = facts.srWindow.Right - facts.srWindow.Left + 1;
    return width > 0 ? width : kUsualWidth;
}

namespace {

using NameCall = BOOL(WINAPI*)(LPWSTR, LPDWORD);

std::string NameOf(NameCall call)
{
    wchar_t name[256] = {};
    DWORD length = std::size(name);
    return call(name, &length) ? Utf16ToUtf8(reinterpret_cast<const char16_t*>(name)) : std::string();
}

}  // namespace

std::string UserName() { return NameOf(&::GetUserNameW); }
std::string ComputerName() { return NameOf(&::GetComputerNameW); }

}  // namespace platform
