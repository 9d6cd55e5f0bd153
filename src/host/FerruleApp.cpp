#include "host/FerruleApp.h"

#include <cstddef>
#include <utility>

#include "base/Names.h"
#include "base/Text.h"
#include "base/Unicode.h"
#include "common/SettingsFile.h"
#include "hostcalls/Application.h"
#include "hostcalls/HostFrame.h"
#include "hostcalls/HostTables.h"
#include "hostcalls/Jobs.h"
#include "hostcalls/Menus.h"
#include "platform/Files.h"
#include "platform/Paths.h"

namespace {

constexpr std::size_t kLongestModulePath = 255;  // characters

/// Bytes that are no text count as characters.
std::string FirstCharacters(const std::string& text, std::size_t count)
{
    if (!IsValidUtf8(text)) return text.substr(0, count);
    std::size_t end = 0;
    for (; count > 0 && end < text.size(); --count) (void)NextUtf8(text, end);
    return text.substr(0, end);
}

}  // namespace

AppPaths MakeAppPaths(const std::string& moduleFile, const std::string& applicationDataFolder)
{
    AppPaths paths;
    static_cast<ProductPaths&>(paths) = MakeProductPaths(applicationDataFolder);
    paths.modulePath = UpperCasedName(FirstCharacters(moduleFile, kLongestModulePath));
    paths.helpFile = ReplaceAll(paths.modulePath, ".API", ".CHM");
    paths.logFileEnabled = true;
    return paths;
}

void CreateSettingsFolder(const AppPaths& paths) { (void)platform::CreateFolders(paths.settingsFolder); }

namespace {

constexpr char kAllowLogging[] = "AllowLogging";
constexpr char kPasswordTool[] = "PasswordProtectFiles";

bool MayBeReplaced(SettingsFileState state)
{
    return state == SettingsFileState::Ok || state == SettingsFileState::Missing ||
           state == SettingsFileState::Damaged;  // ours, and nothing in it can be used any more
}

bool NotSaved(CLogWriter& log, const std::string& reason)
{
    log.NameValue("Settings are not saved", reason, 0);
    return false;
}

}  // namespace

AppSettings LoadAppSettings(const std::string& path)
{
    AppSettings settings;
    const SettingsFileContent file = ReadSettingsFile(path);
    if (!file.Ok()) return settings;
    settings.allowLogging = file.record.Bool(kAllowLogging, true);
    const CSettingsRecord* tool = file.record.Record(kPasswordTool);
    const CSettingsRecord* security = tool != nullptr ? tool->Record(kSecuritySettingsKey) : nullptr;
    if (security != nullptr) settings.passwordTool = ReadSecuritySettings(*security);
    return settings;
}

bool SaveAppSettings(const std::string& path, const AppSettings& settings, CLogWriter& log)
{
    SettingsFileContent file = ReadSettingsFile(path);
    if (!MayBeReplaced(file.state)) return NotSaved(log, file.problem);

    CSettingsRecord tool;
    tool.PutRecord(kSecuritySettingsKey, WriteSecuritySettings(settings.passwordTool));
    file.record.PutRecord(kPasswordTool, std::move(tool));
    file.record.PutBool(kAllowLogging, settings.allowLogging);
    const platform::FileResult written = WriteSettingsFile(path, file.record);
    return written.Ok() || NotSaved(log, platform::ErrorText(written.errorNumber));
}

namespace {

// What the plug-in's menu items run.

enum class Tool { CreateBatchFile, PasswordProtect, EditMetadata, ExportMetadata, Rename };

constexpr int kFirstHostWithTools = 9;

/// The guard in front of every tool: true for hosts from version 9 on, else an alert tells the user. May throw
/// CHostException, as all functions here.
bool HostCanRunTools()
{
    if (GetHostVersion().major >= kFirstHostWithTools) return true;
    AlertNote("Can't execute in the Acrobat version prior 9.0.");
    return false;
}

/// Runs a tool when the host is new enough. No tool is built yet: the user is told that it is not available.
void RunTool(Tool)
{
    if (!HostCanRunTools()) return;
    AlertNote("This tool is not available in this version of Ferrule.");
}

/// No help viewer is built yet: an alert names the help file.
void ShowHelp(const std::string& helpFile) { AlertNote("The help is in the file " + helpFile); }

/// Product and version.
void ShowAbout() { AlertNote("Ferrule " FERRULE_VERSION); }

struct ToolItem {
    const char* title;
    const char* name;
    Tool tool;
};

ToolItem createBatchFile = {"&Create Batch File...", "QLNX:Ferrule", Tool::CreateBatchFile};
ToolItem toolItems[] = {
    {"&Password Protect Multiple Documents...", "QLNX:FerrulePasswordProtect", Tool::PasswordProtect},
    {"&Edit Metadata For Multiple Documents...", "QLNX:FerruleEditMetadata", Tool::EditMetadata},
    {"E&xport Metadata and Document Properties For Multiple Documents...", "QLNX:FerruleExportMetadata",
     Tool::ExportMetadata},
    {"&Rename PDF Files...", "QLNX:FerruleAutoRename", Tool::Rename},
};

ASBool HOSTCALL AlwaysEnabled(void*) { return 1; }

void HOSTCALL ExecuteTool(void* data)
{
    GuardCallback([data] { RunTool(static_cast<const ToolItem*>(data)->tool); });
}

void HOSTCALL ExecuteHelp(void* data)
{
    GuardCallback([data] { ShowHelp(*static_cast<const std::string*>(data)); });
}

void HOSTCALL ExecuteAbout(void*)
{
    GuardCallback([] { ShowAbout(); });
}

void AddTool(const CMenuRef& menu, ToolItem& tool)
{
    CMenuItemRef item = NewMenuItem(tool.title, tool.name);
    item.SetExecute(ExecuteTool, &tool);
    item.SetComputeEnabled(AlwaysEnabled, nullptr);
    AppendMenuItem(menu, item);
}

void AddCommand(const CMenuRef& menu, const char* title, const char* name, AVExecuteProc execute, void* data)
{
    CMenuItemRef item = NewMenuItem(title, name);
    item.SetExecute(execute, data);
    AppendMenuItem(menu, item);
}

void AddTools(const CMenuRef& extensions, void* helpFile)
{
    const CMenuRef subMenu = NewMenu("Ferrule Tools", "QLNX:FerruleToolsMenu");
    AddTool(extensions, createBatchFile);
    for (ToolItem& tool : toolItems) AddTool(subMenu, tool);
    AppendMenuItem(subMenu, NewMenuItem("-", "QLNX:FerruleSepHelpDest"));
    AddCommand(subMenu, "&Help...", "QLNX:FerruleHelp2", ExecuteHelp, helpFile);
    AppendMenuItem(extensions, NewMenuItem("Ferrule Tools", "QLNX:FerruleTools", &subMenu));
}

/// Adds the sub-menu "Ferrule Tools" with its items, and the items for help and about. Items of a menu that the host
/// does not have are left out. Call once; the items keep using `helpFile`, which must live until the host exits.
/// May throw CHostException.
void BuildMenus(const std::string& helpFile)
{
    void* help = const_cast<std::string*>(&helpFile);  // the host hands the pointer back, it does not write
    if (const auto extensions = FindMenu("Extensions")) AddTools(*extensions, help);
    if (const auto about = FindMenu("AboutExtensions")) {
        AddCommand(*about, "Ferrule...", "QLNX:AboutFerrule", ExecuteAbout, nullptr);
    }
    if (const auto usage = FindMenu("UsingExtensions")) {
        AddCommand(*usage, "Ferrule...", "QLNX:FerruleHelp", ExecuteHelp, help);
    }
}

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
