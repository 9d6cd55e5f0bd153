#include "cli/CommandRows.h"

namespace cli {

namespace {

std::vector<OptionRow> NamingOptions()
{
    return {
        {.name = "--name",
         .kind = ValueKind::Text,
         .valueName = "TEXT",
         .help = "The name, without extension; <title>, <subject>, <author>, <pagecount>, <year>, <month>, <day>, "
                 "<hour>, <minute>, <second>, <user> and <computer> stand for what they say."},
        {.name = "--replace",
         .kind = ValueKind::Text,
         .valueName = "TEXT=TEXT",
         .help = "Replace every occurrence in the name, before the first \"=\", by what is behind it; repeatable.",
         .repeatable = true},
        {.name = "--replace-regex",
         .kind = ValueKind::Text,
         .valueName = "EXPR=TEXT",
         .help = "The same for an expression of Perl, after those; \\1 to \\99 are its groups; repeatable.",
         .repeatable = true},
        {.name = "--case",
         .kind = ValueKind::Choice,
         .valueName = "CASE",
         .help = "The letters of the name.",
         .fallback = "original",
         .choices = {"original", "lower", "upper"}},
        {.name = "--max-length",
         .kind = ValueKind::Number,
         .valueName = "N",
         .help = "Characters of the name; the rest is cut off.",
         .fallback = "100",
         .lowest = 1,
         .highest = 256},
        {.name = "--settings",
         .kind = ValueKind::File,
         .valueName = "FILE",
         .help = "Settings of the rename tool (.docren) instead of the options above; also whether files are moved "
                 "or replaced. Their script is run for each file that got its name; with --apply only that counts."},
        {.name = "--script-timeout",
         .kind = ValueKind::Number,
         .valueName = "SECONDS",
         .help = "The script of the settings is ended when it takes longer for a file, which then is incomplete.",
         .fallback = "60",
         .lowest = 1,
         .highest = 1'000'000},
        {.name = "--plan",
         .kind = ValueKind::File,
         .valueName = "FILE",
         .help = "Keep the list of new names in this file, which must be new."},
        FilesFromOption("Name and rename"),
        OptionOfRun("--no-subfolders"),
        PasswordOption(),
        NoCacheOption()};
}

}  // namespace

CommandRow RenameRow()
{
    CommandRow row{
        .name = "rename",
        .summary = "give documents names from what is in them, or files the names of a list",
        .text =
            "With --name or --settings each document gets a name that is made from what is in it; --dry-run writes "
            "the "
            "names as a list and renames nothing. With --apply every file of such a list, which may have been "
            "edited, is "
            "renamed. The list is a table with a heading, as spreadsheets save it as CSV: in the "
            "column \"Input File\" the path, in the column \"Output Filename\" the new name, or a whole path. A file "
            "without a new name is left alone. Files may swap their names, or pass them on.\n\n"
            "It is a run like that of a sequence: a record, --resume, and \"ferrule undo\". No file of the list is "
            "ever replaced. A new name that another file has gets a number, unless --overwrite is given.",
        .operands = {{.name = "PATH",
                      .kind = ValueKind::Path,
                      .help = "Documents, and folders of them, to name and rename.",
                      .optional = true,
                      .repeatable = true}},
        .examples = {
            {"New names to look at and edit:", "ferrule rename scans --name '<title>_<year>' --dry-run > names.csv"},
            {"What would that do?", "ferrule rename --apply names.csv --dry-run"},
            {"Rename, with a record:", "ferrule rename --apply names.csv --record renamed.jsonl"},
            {"Move the files to another folder, replacing what is there, with a way back:",
             "ferrule rename --apply names.csv -o out --overwrite --keep-originals kept"},
            {"As it was before:", "ferrule undo --record renamed.jsonl"}}};
    AddSection(row, "Names from what is in the documents", NamingOptions());
    AddSection(row, "Renaming",
               {{.name = "--apply",
                 .kind = ValueKind::File,
                 .valueName = "PLAN",
                 .help = "The list: values between commas, semicolons or tabs, UTF-8 or as its mark says. Relative "
                         "paths count from its folder."},
                OptionOfRun("--output", "Existing folder to move the files to; else each stays in its own."),
                {.name = "--overwrite", .help = "Replace files that are not in the list and have a new name."},
                OptionOfRun("--keep-originals",
                            "Keep every file here that is replaced, so that \"ferrule undo\" can put it back. The "
                            "folder is made when it is missing.")});
    AddSection(row, "Workers and limits", WorkerOptions());
    AddSection(row, "Going on and trying out",
               {OptionOfRun("--resume"), OptionOfRun("--retry-failed"), OptionOfRun("--dry-run")});
    AddSection(row, "Reports",
               {OptionOfRun("--record"),
                OptionOfRun("--report"),
                {.name = "--report-text",
                 .kind = ValueKind::File,
                 .valueName = "FILE",
                 .help = "Write into this file, which must be new, how many files were renamed, and which were not."},
                OptionOfRun("--log"),
                OptionOfRun("--json"),
                OptionOfRun("--quiet")});
    AddSection(row, "", ProgramOptions());
    return row;
}

}  // namespace cli
