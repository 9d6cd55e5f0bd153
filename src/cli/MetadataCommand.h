// "metadata": the properties of documents on the screen and as a table, and changing them.
#pragma once

#include "cli/Arguments.h"
#include "cli/Console.h"

namespace cli {

/// All answer the exit code and throw CCommandError when the command does not begin.
int MetadataShowCommand(const CArguments& arguments, const Screen& screen);
int MetadataExportCommand(const CArguments& arguments, const Screen& screen);
int MetadataSetCommand(const CArguments& arguments, const Screen& screen);
int MetadataImportCommand(const CArguments& arguments, const Screen& screen);

}  // namespace cli
