// Programs of other makers, which look at what was written; there are none of them on Windows.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

struct ToolResult {
    int code = -1;
    std::string output;
};

#ifdef _WIN32
inline ToolResult RunTool(const std::vector<std::string>&) { return {}; }
#else
#include <sys/wait.h>

/// Arguments, which hold no single quotes, are passed as they are. The output is what comes on both streams.
inline ToolResult RunTool(const std::vector<std::string>& command)
{
    std::string line;
    for (const std::string& word : command) line += '\'' + word + "' ";
    ToolResult result;
    std::FILE* pipe = ::popen((line + "2>&1 </dev/null").c_str(), "r");
    if (!pipe) return result;
    char chunk[4096];
    while (const std::size_t got = std::fread(chunk, 1, sizeof chunk, pipe)) result.output.append(chunk, got);
    const int status = ::pclose(pipe);
    result.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}
#endif

inline bool HaveTool(const std::string& name) { return RunTool({"which", name}).code == 0; }
