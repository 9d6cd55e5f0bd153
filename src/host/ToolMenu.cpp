#include "host/ToolMenu.h"

#include <utility>

#include "batchrun/DlgCreateBatchFile.h"
#include "common/Log.h"
#include "host/Help.h"
#include "hostcalls/Application.h"
#include "hostcalls/HostFrame.h"
#include "hostcalls/Menus.h"
#include "platform/Paths.h"
#include "tools/EditMetadataTool.h"
#include "tools/ExportMetadataTool.h"
#include "tools/PasswordProtectTool.h"
#include "tools/rename/RenameTool.h"

namespace {

// What the plug-in's menu items run.

ToolServices* services = nullptr;  // the callbacks carry nothing of ours

constexpr int kFirstHostWithTools = 9;

/// The guard in front of every tool: true for hosts from version 9 on, else an alert tells the user. May throw
/// CHostException, as all functions here.
bool HostCanRunTools()
{
    if (GetHostVersion().major >= kFirstHostWithTools) return true;
    AlertNote("Can't execute in the Acrobat version prior 9.0.");
    return false;
}

// The tools.

void CreateBatchFile(const DialogServices& dialogs)
{
    static BatchFileChoices choices;  // for as long as the plug-in is loaded
    const int version = GetHostVersion().major;
    CNumberedLog& log = services->log;
    CDlgCreateBatchFile dialog(dialogs,
                               {.hostMajorVersion = version,
                                .hostProgram = platform::ExecutablePath(),
                                .sequences = FindSequenceFiles(version)},
                               choices,
                               {.path = services->paths.logFile,
                                .isOpen = [&log] { return log.IsOpen(); },
                                .clear = [&log] { return log.Clear(); },
                                .allowed = &services->settings->allowLogging});
    (void)dialog.Show();
}

void ProtectDocuments(const DialogServices& dialogs)
{
    ProtectDocuments(dialogs, services->settings->passwordTool, services->log);
}

void ExportDocumentMetadata(const DialogServices& dialogs) { ExportMetadata(dialogs, services->log); }

void EditDocumentMetadata(const DialogServices& dialogs)
{
    EditMetadata(dialogs, services->settings->metadataWidths, services->log);
}

void RenameDocuments(const DialogServices& dialogs) { RenameDocuments(dialogs, services->paths, services->log); }

struct ToolItem {
    const char* title;
    const char* name;
    void (*run)(const DialogServices& dialogs);
};

constexpr ToolItem kCreateBatchFile = {"&Create Batch File...", "QLNX:Ferrule", CreateBatchFile};
constexpr ToolItem kToolItems[] = {
    {"&Password Protect Multiple Documents...", "QLNX:FerrulePasswordProtect", ProtectDocuments},
    {"&Edit Metadata For Multiple Documents...", "QLNX:FerruleEditMetadata", EditDocumentMetadata},
    {"E&xport Metadata and Document Properties For Multiple Documents...", "QLNX:FerruleExportMetadata",
     ExportDocumentMetadata},
    {"&Rename PDF Files...", "QLNX:FerruleAutoRename", RenameDocuments},
};

/// While it lives, no other tool can be started: the menu of a host may be used beside a window of ours.
class CToolTurn {
public:
    CToolTurn() : m_granted(!std::exchange(running, true)) {}
    CToolTurn(const CToolTurn&) = delete;
    CToolTurn& operator=(const CToolTurn&) = delete;
    ~CToolTurn()
    {
        if (m_granted) running = false;
    }
    explicit operator bool() const { return m_granted; }

private:
    static inline bool running = false;
    bool m_granted;
};

void Run(const ToolItem& item)
{
    if (!HostCanRunTools() || !services->settings) return;
    const CToolTurn turn;
    if (!turn) return AlertNote("A tool of Ferrule is open already. Please finish with it first.");
    const auto dialogs = services->dialogs();
    if (!dialogs) return AlertNote(dialogs.Error());
    item.run(*dialogs);
}

// What the host calls.

ASBool HOSTCALL AlwaysEnabled(void*) { return 1; }

void HOSTCALL ExecuteTool(void* data)
{
    GuardCallback([data] { Run(*static_cast<const ToolItem*>(data)); });
}

void HOSTCALL ExecuteHelp(void*)
{
    GuardCallback([] {
        if (const std::string problem = ShowHelp(services->paths, ""); !problem.empty()) AlertNote(problem);
    });
}

void HOSTCALL ExecuteAbout(void*)
{
    GuardCallback([] {
        const auto dialogs = services->dialogs();
        if (!dialogs) return AlertNote("Ferrule " FERRULE_VERSION);
        DialogForm form = AboutForm();
        dialogs->windows.Show(form);
    });
}

void AddTool(const CMenuRef& menu, const ToolItem& tool)
{
    CMenuItemRef item = NewMenuItem(tool.title, tool.name);
    item.SetExecute(ExecuteTool, const_cast<ToolItem*>(&tool));  // the host hands it back and does not write
    item.SetComputeEnabled(AlwaysEnabled, nullptr);
    AppendMenuItem(menu, item);
}

void AddCommand(const CMenuRef& menu, const char* title, const char* name, AVExecuteProc execute)
{
    CMenuItemRef item = NewMenuItem(title, name);
    item.SetExecute(execute, nullptr);
    AppendMenuItem(menu, item);
}

void AddTools(const CMenuRef& extensions)
{
    const CMenuRef subMenu = NewMenu("Ferrule Tools", "QLNX:FerruleToolsMenu");
    AddTool(extensions, kCreateBatchFile);
    for (const ToolItem& tool : kToolItems) AddTool(subMenu, tool);
    AppendMenuItem(subMenu, NewMenuItem("-", "QLNX:FerruleSepHelpDest"));
    AddCommand(subMenu, "&Help...", "QLNX:FerruleHelp2", ExecuteHelp);
    AppendMenuItem(extensions, NewMenuItem("Ferrule Tools", "QLNX:FerruleTools", &subMenu));
}

}  // namespace

DialogForm AboutForm()
{
    return {
        .title = "About Ferrule",
        .controls = {{.what = StaticText{.text = "Ferrule " FERRULE_VERSION, .bold = true}},
                     {.what = StaticText{"Automates work on very many PDF documents: unattended runs of batch "
                                         "sequences over folders, password protection, metadata, renaming, search "
                                         "and copy."}},
                     {.what = StaticText{"Built on " __DATE__ "."}}},
        .buttons = {{.what = Button{"OK", [] { return FormAnswer::Confirm; }, ButtonRole::Default}}}};
}

void BuildMenus(ToolServices& toolServices)
{
    services = &toolServices;
    if (const auto extensions = FindMenu("Extensions")) AddTools(*extensions);
    if (const auto about = FindMenu("AboutExtensions"))
        AddCommand(*about, "Ferrule...", "QLNX:AboutFerrule", ExecuteAbout);
    if (const auto usage = FindMenu("UsingExtensions"))
        AddCommand(*usage, "Ferrule...", "QLNX:FerruleHelp", ExecuteHelp);
}
