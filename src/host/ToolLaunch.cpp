#include "host/ToolLaunch.h"

#include "hostcalls/Application.h"

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
