#include "platform/HostWindow.h"
#include "platform/Windows_win.h"

namespace platform {
namespace {

constexpr int kOffScreen = 10000;
constexpr UINT kQuietly =
    SWP_NOSIZE | SWP_NOREDRAW | SWP_NOACTIVATE | SWP_HIDEWINDOW | SWP_NOOWNERZORDER | SWP_NOSENDCHANGING;

HWND AsWindow(WindowHandle window) { return static_cast<HWND>(window); }

}  // namespace

WindowHandle FindHostWindow(const char* windowClass) { return FindWindowA(windowClass, nullptr); }

bool IsWindow(WindowHandle window) { return ::IsWindow(AsWindow(window)); }

void HideAndMoveOffScreen(WindowHandle window)
{
    if (!IsWindow(window)) return;
    ShowWindow(AsWindow(window), SW_HIDE);
    MoveOffScreen(window);
}

void MoveOffScreen(WindowHandle window)
{
    if (IsWindow(window)) SetWindowPos(AsWindow(window), nullptr, kOffScreen, kOffScreen, 0, 0, kQuietly);
}

int PumpMessages(int atMost)
{
    int dispatched = 0;
    MSG message;
    for (int i = 0; i < atMost && PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE); ++i) {
        if (message.message == WM_QUIT) {
            // Meant for the loop of the host, which has not seen it.
            PostQuitMessage(static_cast<int>(message.wParam));
            break;
        }
        if (!::IsWindow(message.hwnd)) continue;
        DispatchMessageW(&message);
        ++dispatched;
    }
    return dispatched;
}

bool PostClose(WindowHandle window) { return IsWindow(window) && PostMessageW(AsWindow(window), WM_CLOSE, 0, 0); }

}  // namespace platform
