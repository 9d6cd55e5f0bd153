#ifndef FERRULE_OPENHOST_PROGRAM_COMMAND_LINE_H
#define FERRULE_OPENHOST_PROGRAM_COMMAND_LINE_H

#include <string>
#include <vector>

namespace openhost {

/// Runs the program: reads its arguments, loads the plug-ins, runs the host to its end and answers the exit code.
int RunCommandLine(int argumentCount, char** arguments);

/// The plug-ins of a folder: every file *.api, sorted by name.
std::vector<std::string> PlugInsOfFolder(const std::string& folder);

}  // namespace openhost

#endif
