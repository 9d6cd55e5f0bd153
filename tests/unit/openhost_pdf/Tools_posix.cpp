#include "unit/openhost_pdf/Tools.h"

#include <sys/wait.h>

#include <cstdio>

namespace {

std::string ShellQuoted(const std::string& text)
{
    std::string quoted = "'";
    for (const char c : text) quoted += c == '\'' ? "'\\''" : std::string(1, c);
    return quoted + '\'';
}

}  // namespace

ToolResult RunTool(const std::vector<std::string>& command)
{
    std::string line;
    for (const std::string& word : command) line += ShellQuoted(word) + ' ';
    ToolResult result;
    std::FILE* pipe = ::popen((line + "2>&1 </dev/null").c_str(), "r");
    if (!pipe) return result;
    char chunk[4096];
    while (const std::size_t got = std::fread(chunk, 1, sizeof chunk, pipe)) result.output.append(chunk, got);
    const int status = ::pclose(pipe);
    result.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

bool HaveTool(const std::string& name) { return RunTool({"which", name}).code == 0; }
