#include "host/HostClosing.h"

#include "common/Log.h"
#include "hostcalls/Application.h"

namespace {

constexpr int kLastHostClosedThroughWindow = 5;
constexpr char kClosed[] = "Adobe Acrobat has been closed.";
constexpr char kNoQuit[] = "Quit command is not available. Cannot close Adobe Acrobat.";

}  // namespace

void CHostClosing::CloseHost()
{
    if (GetHostVersion().major <= kLastHostClosedThroughWindow) {
        CloseThroughWindow();
    } else {
        CloseThroughMenu();
    }
}

void CHostClosing::CloseThroughWindow()
{
    if (m_mainWindow == nullptr || !platform::IsWindow(m_mainWindow)) return;
    platform::PostClose(m_mainWindow);
    m_log.NameValue(kClosed, "", 0);
}

void CHostClosing::CloseThroughMenu() { m_log.NameValue(ExecuteQuit() ? kClosed : kNoQuit, "", 0); }
