// Programs of other makers, which look at what was written.
#pragma once

#include <string>
#include <vector>

struct ToolResult {
    int code = -1;
    std::string output;
};

/// Arguments are passed as they are. The output is what comes on both streams.
ToolResult RunTool(const std::vector<std::string>& command);

/// False for all of them on Windows.
bool HaveTool(const std::string& name);
