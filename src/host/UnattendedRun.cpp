#include "host/UnattendedRun.h"

#include "common/Log.h"
#include "hostapi/HostConstants.h"
#include "hostcalls/Application.h"
#include "hostcalls/HostEntry.h"
#include "hostcalls/HostFrame.h"
#include "platform/Environment.h"
#include "platform/HostWindow.h"

namespace {

constexpr char kHostWindowClass[] = "AcrobatSDIWIndow";
constexpr int kMessagesWhileHiding = 1000;

CUnattendedRun* theRun = nullptr;  // the callbacks carry nothing of ours

}  // namespace

CUnattendedRun::CUnattendedRun(CLogWriter& log, CHostCloser& host)
    : m_log(log), m_driver({.environment = platform::EnvironmentText, .log = log, .events = m_events, .host = host})
{
}

CUnattendedRun::~CUnattendedRun()
{
    if (theRun == this) theRun = nullptr;
}

void CUnattendedRun::Register()
{
    theRun = this;
    RegisterNotification(AVAppDidInitializeNSEL, reinterpret_cast<void*>(OnHostStarted));
}

void CUnattendedRun::HostHasStarted()
{
    const auto error = CatchHostError([this] { m_startup = ReadStartup(platform::EnvironmentText, m_log, *this); });
    if (error) m_log.NameValue("The unattended run cannot be scheduled", error->text, 0);
}

void CUnattendedRun::HideHostWindow()
{
    if (const auto window = platform::FindHostWindow(kHostWindowClass)) platform::HideAndMoveOffScreen(window);
    platform::PumpMessages(kMessagesWhileHiding);
}

void CUnattendedRun::KeepHostWindowOffScreen()
{
    RegisterNotification(AVDocWillOpenFromPDDocNSEL, reinterpret_cast<void*>(OnViewWillOpen));
}

void CUnattendedRun::ScheduleRunDriver(int periodTicks) { RegisterIdle(OnIdle, static_cast<unsigned>(periodTicks)); }

void CUnattendedRun::OnHostStarted(void*)
{
    GuardCallback([] {
        if (theRun != nullptr) theRun->HostHasStarted();
    });
}

void CUnattendedRun::OnViewWillOpen(PDDoc, void*)
{
    GuardCallback([] {
        if (const auto window = platform::FindHostWindow(kHostWindowClass)) platform::MoveOffScreen(window);
    });
}

void CUnattendedRun::OnIdle(void*)
{
    if (theRun != nullptr) theRun->m_driver.Idle();
}
