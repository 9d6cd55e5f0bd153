#include "platform/Surroundings.h"

#include <fcntl.h>
#include <io.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>

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

/// Opened in order, so that each gets the number that it is to have.
void FillStandardStreams()
{
    std::FILE* const streams[] = {stdin, stdout, stderr};
    const DWORD names[] = {STD_INPUT_HANDLE, STD_OUTPUT_HANDLE, STD_ERROR_HANDLE};
    for (int number = 0; number < 3; ++number) {
        const HANDLE handle = GetStdHandle(names[number]);
        const bool open = handle && handle != INVALID_HANDLE_VALUE &&
                          (GetFileType(handle) != FILE_TYPE_UNKNOWN || GetLastError() == NO_ERROR);
        if (open && _fileno(streams[number]) == number) continue;
        if (!std::freopen("NUL", number == 0 ? "rb" : "wb", streams[number])) std::_Exit(1);
        SetStdHandle(names[number], reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(streams[number]))));
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

void SettleSurroundings()
{
    OpenNoDialogs();
    FillStandardStreams();
    CarryBytes();
    ShowUtf8();
}

}  // namespace platform
