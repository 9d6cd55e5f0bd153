#include "host/PlugInMenus.h"

#include "hostcalls/Application.h"
#include "hostcalls/HostFrame.h"
#include "hostcalls/Menus.h"

namespace {

constexpr int kFirstHostWithTools = 9;

}  // namespace

bool HostCanRunTools()
{
    if (GetHostVersion().major >= kFirstHostWithTools) return true;
    AlertNote("Can't execute in the Acrobat version prior 9.0.");
    return false;
}

void RunTool(Tool)
{
    if (!HostCanRunTools()) return;
    AlertNote("This tool is not available in this version of Ferrule.");
}

void ShowHelp(const std::string& helpFile) { AlertNote("The help is in the file " + helpFile); }

void ShowAbout() { AlertNote("Ferrule " FERRULE_VERSION); }

namespace {

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

}  // namespace

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
