#include "platform/Terminal.h"
#include "platform/Windows_win.h"

namespace platform {
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

}  // namespace platform
