#include "base/Names.h"
#include "tools/RenameScript.h"

ScriptFile MakeScriptFile(const std::string& folder, const std::string& script, const std::string& input,
                          const std::string& output)
{
    ScriptFile file{.path = WithTrailingSeparator(folder) + "script.sh", .content = script + '\n', .start = {}};
    file.start.program = "/bin/sh";
    file.start.arguments = {file.path};
    file.start.environment = {"OUTPUTDOCUMENT=" + output, "INPUTDOCUMENT=" + input};
    return file;
}
