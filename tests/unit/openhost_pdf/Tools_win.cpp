#include "unit/openhost_pdf/Tools.h"

ToolResult RunTool(const std::vector<std::string>&) { return {}; }

bool HaveTool(const std::string&) { return false; }
