#pragma once

/// The host's main window and the thread's messages. Systems without such windows find none and do nothing.
namespace platform {

using WindowHandle = void*;  ///< borrowed; may die at any time, so every function checks it

/// The top-level window of a class; null when there is none.
WindowHandle FindHostWindow(const char* windowClass);
bool IsWindow(WindowHandle window);

/// Hides the window, then moves it off the screen.
void HideAndMoveOffScreen(WindowHandle window);
/// Moves the window to (10000, 10000), keeping its size, without activating or redrawing it; it is hidden then.
void MoveOffScreen(WindowHandle window);

/// Takes at most so many pending messages and dispatches each whose window exists; answers how many. The request to
/// quit stays for the loop of the host.
int PumpMessages(int atMost);

/// Posts the window-close message; false when the window is gone or refuses.
bool PostClose(WindowHandle window);

}  // namespace platform
