#include "host/UnattendedRun.h"

#include "common/Log.h"
#include "hostapi/HostConstants.h"
#include "hostcalls/Application.h"
#include "hostcalls/HostFrame.h"
#include "hostcalls/Jobs.h"
#include "jobs/JobDispatcher.h"
#include "platform/HostWindow.h"
#include "platform/Paths.h"

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

namespace {

constexpr char kHostWindowClass[] = "AcrobatSDIWIndow";
constexpr int kMessagesWhileHiding = 1000;

CUnattendedRun* theRun = nullptr;  // the callbacks carry nothing of ours

}  // namespace

CUnattendedRun::CUnattendedRun(CLogWriter& log, CHostCloser& host, CCustomMonitor::WindowFactory progressWindow)
    : m_log(log),
      m_host(host),
      m_driver({.settings = [&log] { return ReadRunSettings(platform::EnvironmentText, log); },
                .log = log,
                .events = m_events,
                .host = host,
                .progressWindow = std::move(progressWindow)})
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
    m_job = JobText();
    const WorkDescription work = m_job ? JobWork(*m_job) : SequenceWork(platform::EnvironmentText("FERRULESEQU"));
    const std::string noProgress = m_job ? "" : platform::EnvironmentText("FERRULENOPROGRESS");
    const auto error = CatchHostError([&] {
        m_startup = ReadStartup(work, noProgress, m_log, *this);
        // A job says itself what is missing.
        if (m_job && !m_startup.runScheduled) ScheduleRunDriver(0);
    });
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
    GuardCallback([] {
        if (theRun != nullptr) theRun->Idle();
    });
}

void CUnattendedRun::Idle()
{
    if (m_job) return DoJobOnce();
    if (m_driver.HasStarted()) return;
    const CJobOverseer overseer(false);  // for the host's record of the run
    m_driver.Idle();
}

void CUnattendedRun::DoJobOnce()
{
    if (m_jobBegun) return;
    m_jobBegun = true;  // before anything else: the host's idle loop may come back here during the job
    DoJob(*m_job, {.log = m_log, .events = m_events, .host = m_host, .report = JobReport});
}
