#include "platform/HostWindow.h"

namespace platform {

WindowHandle FindHostWindow(const char*) { return nullptr; }
bool IsWindow(WindowHandle) { return false; }
void HideAndMoveOffScreen(WindowHandle) {}
void MoveOffScreen(WindowHandle) {}
int PumpMessages(int) { return 0; }
bool PostClose(WindowHandle) { return false; }

}  // namespace platform
