#include "host/FerruleApp.h"

#include "host/Help.h"
#include "hostcalls/Application.h"
#include "hostcalls/HostFrame.h"
#include "hostcalls/HostTables.h"
#include "hostcalls/Jobs.h"
#include "platform/Paths.h"

namespace {

HostFacts AskHostFacts()
{
    const HostVersion version = GetHostVersion();
    return {.applicationName = HostName(),
            .language = HostLanguage(),
            .majorVersion = version.major,
            .minorVersion = version.minor,
            .buildDate = __DATE__};
}

}  // namespace

CFerruleApp::CFerruleApp(const std::string& moduleFile, platform::WindowHandle hostWindow)
    : m_paths(MakeAppPaths(moduleFile, platform::ApplicationDataFolder())),
      m_hostWindow(hostWindow),
      m_windows(moduleFile, [this] { return HostWindow(); }),
      m_tools{m_paths, m_settings, m_log, [this] { return Dialogs(); }},
      m_hostClosing(hostWindow, m_log),
      m_commands(m_log, m_tools.dialogs),
      m_unattendedRun(m_log, m_hostClosing, [this] { return ProgressWindow(); })
{
    CreateSettingsFolder(m_paths);
}

CFerruleApp::~CFerruleApp() { m_log.Close(m_paths.modulePath); }

void CFerruleApp::ImportAndRegister()
{
    m_unattendedRun.Register();
    HostTables().ImportOptional();
}

void CFerruleApp::Initialize()
{
    BuildMenus(m_tools);
    m_settings = LoadAppSettings(m_paths.settingsFile);
    OpenLog();
    const auto error = CatchHostError([this] { m_commands.RegisterAll(); });
    if (!error) return;
    m_log.NameValue("The batch commands cannot be registered", error->text, 0);
    throw CHostException(*error);
}

// The log ends here and not when the library goes: the last lines need nothing of the host any more, but an exiting
// process need not get as far as releasing its libraries.
void CFerruleApp::Unload()
{
    m_commands.ReleaseAll();
    m_windows.Stop();
    // A start that failed before the settings were read must not overwrite them with defaults; a job gets a copy of
    // the user's, which nobody reads again.
    if (m_settings && !JobText()) SaveAppSettings(m_paths.settingsFile, *m_settings, m_log);
    m_log.Close(m_paths.modulePath);
}

void* CFerruleApp::HostWindow() const
{
    void* owner = nullptr;
    (void)CatchHostError([&] { owner = ModalParent(); });
    return owner ? owner : m_hostWindow;
}

// A host without a window has nobody in front of it who could answer.
Expected<DialogServices> CFerruleApp::Dialogs()
{
    if (!HostWindow()) return Failure("This host has no windows, so Ferrule cannot open any.");
    const auto windows = m_windows.Windows();
    if (!windows) return Failure(windows.Error());
    const auto help = [this, &shown = **windows](const std::string& topic) {
        if (const std::string problem = ShowHelp(m_paths, topic); !problem.empty())
            shown.Message(MessageKind::Warning, problem);
    };
    return DialogServices{**windows, help};
}

std::unique_ptr<CProgressWindow> CFerruleApp::ProgressWindow()
{
    const auto dialogs = Dialogs();
    return dialogs ? dialogs->windows.MakeProgress() : nullptr;
}

void CFerruleApp::OpenLog()
{
    m_log.SetHostFacts(AskHostFacts());
    if (m_paths.logFileEnabled) m_log.Open(m_paths.logFile, true);
}
