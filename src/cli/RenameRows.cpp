#include "cli/CommandRows.h"

namespace cli {

CommandRow RenameRow()
{
    CommandRow row{
        .name = "rename",
        .summary = "give files the names of a list",
        .text =
            "Renames every file of a list, which is a table with a heading, as spreadsheets save it as CSV: in the "
            "column \"Input File\" the path, in the column \"Output Filename\" the new name, or a whole path. A file "
            "without a new name is left alone. Files may swap their names, or pass them on.\n\n"
            "It is a run like that of a sequence: a record, --resume, and \"ferrule undo\". No file of the list is "
            "ever replaced. A new name that another file has gets a number, unless --overwrite is given.",
        .examples = {{"What would that do?", "ferrule rename --apply names.csv --dry-run"},
                     {"Rename, with a record:", "ferrule rename --apply names.csv --record renamed.jsonl"},
                     {"Move the files to another folder, replacing what is there, with a way back:",
                      "ferrule rename --apply names.csv -o out --overwrite --keep-originals kept"},
                     {"As it was before:", "ferrule undo --record renamed.jsonl"}}};
    AddSection(row, "New names",
               {{.name = "--apply",
                 .kind = ValueKind::File,
                 .valueName = "PLAN",
                 .help = "The list: values between commas, semicolons or tabs, UTF-8 or as its mark says. Relative "
                         "paths count from its folder.",
                 .required = true},
                OptionOfRun("--output", "Existing folder to move the files to; else each stays in its own."),
                {.name = "--overwrite", .help = "Replace files that are not in the list and have a new name."},
                OptionOfRun("--keep-originals",
                            "Keep every file here that is replaced, so that \"ferrule undo\" can put it back. The "
                            "folder is made when it is missing.")});
    AddSection(row, "Workers and limits", WorkerOptions());
    AddSection(row, "Going on and trying out",
               {OptionOfRun("--resume"), OptionOfRun("--retry-failed"), OptionOfRun("--dry-run")});
    AddSection(row, "Reports",
               {OptionOfRun("--record"), OptionOfRun("--log"), OptionOfRun("--json"), OptionOfRun("--quiet")});
    AddSection(row, "", ProgramOptions());
    return row;
}

}  // namespace cli
