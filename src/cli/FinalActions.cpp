#include "cli/FinalActions.h"

#include "base/Text.h"

namespace cli {

const std::vector<FinalActionRow>& FinalActions()
{
    static const std::vector<FinalActionRow> rows = {
        {0, "nothing", "leave it where it is", ""},
        {1, "copy", "copy it, replacing a file of the same name", "folder"},
        {2, "move", "move it, unless a file of the same name exists", "folder"},
        {3, "delete", "delete it", ""},
        {4, "rename", "rename it in its own folder", "new name"},
        {5, "execute", "start a program with it", "program"},
        {6, "move-replace", "move it, replacing a file of the same name", "folder"},
        {7, "move-versions", "move it, under a new name when the name is taken", "folder"},
        {8, "copy-versions", "copy it, under a new name when the name is taken", "folder"},
    };
    return rows;
}

const FinalActionRow* FindFinalAction(std::string_view nameOrCode)
{
    for (const FinalActionRow& row : FinalActions())
        if (EqualsIgnoreCaseAscii(nameOrCode, row.name) || nameOrCode == std::to_string(row.code)) return &row;
    return nullptr;
}

}  // namespace cli
