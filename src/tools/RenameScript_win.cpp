#include "base/Names.h"
#include "tools/RenameScript.h"

ScriptFile MakeScriptFile(const std::string& folder, const std::string& script, const std::string& input,
                          const std::string& output)
{
    ScriptFile file{.path = WithTrailingSeparator(folder) + "script.bat", .content = {}, .start = {}};
    file.content = BatchScriptText(file.path, script, input, output);
    // The system starts its command interpreter for it. Through the command line of the interpreter itself, the path
    // would have to be quoted as no list of arguments can be.
    file.start.program = file.path;
    return file;
}
