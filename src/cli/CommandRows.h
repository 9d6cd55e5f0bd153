// The rows of the command table, one function for each command; those of run, plan and merge are in RunRows.
#pragma once

#include "cli/CommandTable.h"

namespace cli {

CommandRow RunRow();
CommandRow PlanRow();
CommandRow MergeRow();
CommandRow UndoRow();
CommandRow SequenceShowRow();
CommandRow SequenceCheckRow();
CommandRow SequenceNewRow();
CommandRow SequenceConvertRow();
CommandRow LogRow();
CommandRow GenerateRow();

/// Puts options under a heading, at the end of the command's options.
void AddSection(CommandRow& command, const std::string& heading, std::vector<OptionRow> options);

/// The hidden options that say which programs do the work.
std::vector<OptionRow> ProgramOptions();
OptionRow JsonOption(const std::string& what);

}  // namespace cli
