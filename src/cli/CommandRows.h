// The rows of the command table, one function for each command; those of run, plan and merge are in RunRows, that of
// protect in ProtectRows, that of rename in RenameRows, those of search and text in SearchRows, that of watch in
// WatchRows, those of index in IndexRows.
#pragma once

#include "cli/CommandTable.h"

namespace cli {

CommandRow RunRow();
CommandRow PlanRow();
CommandRow WatchRow();
CommandRow MergeRow();
CommandRow ReportRow();
CommandRow UndoRow();
CommandRow ProtectRow();
CommandRow RenameRow();
CommandRow MetadataShowRow();
CommandRow MetadataExportRow();
CommandRow MetadataSetRow();
CommandRow MetadataImportRow();
CommandRow SearchRow();
CommandRow TextRow();
CommandRow IndexCreateRow();
CommandRow IndexBuildRow();
CommandRow IndexPurgeRow();
CommandRow IndexStatusRow();
CommandRow IndexSearchRow();
CommandRow SequenceShowRow();
CommandRow SequenceCheckRow();
CommandRow SequenceNewRow();
CommandRow SequenceConvertRow();
CommandRow BatchFileRow();
CommandRow CacheStatusRow();
CommandRow CacheClearRow();
CommandRow LogRow();
CommandRow GenerateRow();

/// Puts options under a heading, at the end of the command's options.
void AddSection(CommandRow& command, const std::string& heading, std::vector<OptionRow> options);

/// The hidden options that say which programs do the work.
std::vector<OptionRow> ProgramOptions();
/// An option of "run", for commands in which it means the same; with another text in its help, unless that is empty.
OptionRow OptionOfRun(const char* name, const std::string& help = {});
/// A list of inputs, for commands whose operands are inputs; see ReadInputs. `verb`: what is done with them, "Read".
OptionRow FilesFromOption(const std::string& verb);
OptionRow OverwriteOption();
OptionRow JsonOption(const std::string& what);
OptionRow PasswordOption();
OptionRow NoCacheOption();
/// The number of workers, and what each of them may use.
std::vector<OptionRow> WorkerOptions();

}  // namespace cli
