#include "cli/CommandTable.h"

#include <algorithm>

#include "cli/CommandRows.h"

namespace cli {

const std::vector<CommandRow>& Commands()
{
    static const std::vector<CommandRow> rows = {
        RunRow(),
        PlanRow(),
        MergeRow(),
        WatchRow(),
        ReportRow(),
        UndoRow(),
        ProtectRow(),
        MetadataShowRow(),
        MetadataExportRow(),
        MetadataSetRow(),
        MetadataImportRow(),
        RenameRow(),
        SearchRow(),
        TextRow(),
        IndexCreateRow(),
        IndexBuildRow(),
        IndexPurgeRow(),
        IndexStatusRow(),
        IndexSearchRow(),
        SequenceShowRow(),
        SequenceCheckRow(),
        SequenceNewRow(),
        SequenceConvertRow(),
        BatchFileRow(),
        LogRow(),
        CacheStatusRow(),
        CacheClearRow(),
        GenerateRow(),
    };
    return rows;
}

const CommandRow* FindCommand(std::string_view name)
{
    for (const CommandRow& row : Commands())
        if (row.name == name) return &row;
    return nullptr;
}

const OptionRow* FindOption(const CommandRow& command, std::string_view name)
{
    const auto found = std::find_if(command.options.begin(), command.options.end(),
                                    [&](const OptionRow& row) { return row.name == name; });
    return found == command.options.end() ? nullptr : &*found;
}

const std::vector<ExitCodeRow>& ExitCodes()
{
    static const std::vector<ExitCodeRow> rows = {
        {0, "all is fine: every file was saved, or there was nothing to do"},
        {1, "could not start, or broke off"},
        {2, "wrong arguments; nothing was done"},
        {3, "finished, but not every file is fine, or a check found errors"},
        {130, "stopped by Ctrl-C or a request to end"},
    };
    return rows;
}

std::string ProgramSummary() { return "run batch sequences over folders of PDF documents"; }

}  // namespace cli
