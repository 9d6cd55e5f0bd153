#include "host/FerruleApp.h"

#include "host/PlugInMenus.h"
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
      m_hostClosing(hostWindow, m_log),
      m_commands(m_log),
      m_unattendedRun(m_log, m_hostClosing)
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
    BuildMenus(m_paths.helpFile);
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
    // A start that failed before the settings were read must not overwrite them with defaults; a job gets a copy of
    // the user's, which nobody reads again.
    if (m_settings && !JobText()) SaveAppSettings(m_paths.settingsFile, *m_settings, m_log);
    m_log.Close(m_paths.modulePath);
}

void CFerruleApp::OpenLog()
{
    m_log.SetHostFacts(AskHostFacts());
    if (m_paths.logFileEnabled) m_log.Open(m_paths.logFile, true);
}
