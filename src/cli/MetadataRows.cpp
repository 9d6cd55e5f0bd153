#include "cli/CommandRows.h"

namespace cli {

namespace {

std::vector<OperandRow> DocumentOperands()
{
    return {{.name = "PATH",
             .kind = ValueKind::Path,
             .help = "Files and folders to read.",
             .optional = true,
             .repeatable = true}};
}

std::vector<OptionRow> ReadingOptions()
{
    return {FilesFromOption("Read"),
            OptionOfRun("--no-subfolders"),
            {.name = "--fields",
             .kind = ValueKind::Text,
             .valueName = "LIST",
             .help = "Further entries of the document information, separated by commas; each becomes a column."},
            PasswordOption()};
}

}  // namespace

CommandRow MetadataShowRow()
{
    CommandRow row{
        .name = "metadata show",
        .summary = "print the properties of documents",
        .text =
            "Prints title, author, keywords and the like of each document, and its size, pages and restrictions. "
            "What is empty is left out. No document is changed.",
        .operands = DocumentOperands(),
        .examples = {{"One document:", "ferrule metadata show report.pdf"},
                     {"A folder, for a program, with two entries of its own:",
                      "ferrule metadata show contracts --fields Client,Case --json"}}};
    AddSection(row, "Options", ReadingOptions());
    AddSection(row, "Workers and limits", WorkerOptions());
    AddSection(row, "Reports",
               {JsonOption("Print an object for each document, one a line, with all its properties.")});
    AddSection(row, "", ProgramOptions());
    return row;
}

CommandRow MetadataExportRow()
{
    CommandRow row{
        .name = "metadata export",
        .summary = "write the properties of documents as a table",
        .text =
            "Writes one row for each document, in the order of the inputs, and one column for each property. A "
            "document that cannot be opened has a row that says so. The table appears when it is complete.",
        .operands = DocumentOperands(),
        .examples = {{"As a spreadsheet:", "ferrule metadata export contracts --output contracts.xml"},
                     {"As CSV, with an entry of its own:",
                      "ferrule metadata export contracts -o contracts.csv --fields Client"}}};
    std::vector<OptionRow> options = {
        {.name = "--output",
         .shortName = "-o",
         .kind = ValueKind::File,
         .valueName = "FILE",
         .help = "The table to write.",
         .required = true},
        {.name = "--format",
         .kind = ValueKind::Choice,
         .valueName = "FORM",
         .help = "Its form: a spreadsheet as XML, values between commas, values between tabs, JSON, or HTML; without "
                 "it as the name of the file ends.",
         .choices = {"xml", "csv", "txt", "json", "html"}},
        OverwriteOption()};
    for (OptionRow& option : ReadingOptions()) options.push_back(std::move(option));
    AddSection(row, "Options", std::move(options));
    AddSection(row, "Workers and limits", WorkerOptions());
    AddSection(row, "Reports", {{.name = "--quiet", .shortName = "-q", .help = "Only what went wrong."}});
    AddSection(row, "", ProgramOptions());
    return row;
}

namespace {

std::vector<OptionRow> EntryOptions()
{
    std::vector<OptionRow> options;
    for (const char* name : {"--title", "--subject", "--author", "--keywords"})
        options.push_back({.name = name,
                           .kind = ValueKind::Text,
                           .valueName = "TEXT",
                           .help = "The new text of this field; an empty one takes it away."});
    options.push_back({.name = "--set",
                       .kind = ValueKind::Text,
                       .valueName = "FIELD=TEXT",
                       .help = "The same for any field; repeatable. CreationDate and ModDate take dates such as "
                               "2024-01-31T09:30:00+01:00.",
                       .repeatable = true});
    options.push_back({.name = "--remove",
                       .kind = ValueKind::Text,
                       .valueName = "FIELD",
                       .help = "Take a field away; repeatable.",
                       .repeatable = true});
    return options;
}

/// What all commands have that change documents.
void AddChangeSections(CommandRow& row)
{
    AddSection(
        row, "Inputs and results",
        {OptionOfRun("--output", "Existing folder for the changed documents. A name that is taken gets a number."),
         {.name = "--in-place", .help = "Put each changed document in the place of its input."},
         {.name = "--rewrite",
          .help =
              "Write each document as a whole, so that old values are gone from its file, and see to it that they "
              "are. A document that still holds one in its metadata stays as it is and fails."},
         OptionOfRun("--keep-originals"),
         FilesFromOption("Change"),
         OptionOfRun("--no-subfolders"),
         OptionOfRun("--min-age"),
         PasswordOption()});
    AddSection(row, "Workers and limits", WorkerOptions());
    AddSection(row, "Going on and trying out",
               {OptionOfRun("--resume"), OptionOfRun("--retry-failed"),
                OptionOfRun("--dry-run", "Show what would change in each document, and touch nothing.")});
    AddSection(row, "Reports",
               {OptionOfRun("--record"), OptionOfRun("--report"), OptionOfRun("--log"), OptionOfRun("--json"),
                OptionOfRun("--quiet")});
    AddSection(row, "What is left alone otherwise",
               {{.name = "--break-signatures",
                 .help = "Change signed and certified documents, too; their signatures are worthless then."},
                OptionOfRun("--accept-damaged")});
    AddSection(row, "", ProgramOptions());
}

}  // namespace

CommandRow MetadataSetRow()
{
    CommandRow row{
        .name = "metadata set",
        .summary = "change the metadata of documents",
        .text =
            "Gives each document the same title, author or other field, in its information and in its metadata "
            "packet. Fields that are not named stay as they are, and a document that has them already is not "
            "written. It is a run like that of a sequence: several processors, a record, --resume, and \"ferrule "
            "undo\".",
        .operands = DocumentOperands(),
        .examples = {
            {"What would change?", "ferrule metadata set contracts --author 'Smith & Co' --in-place --dry-run"},
            {"In place, with a way back:",
             "ferrule metadata set contracts --set Client=Smith --in-place --keep-originals kept"},
            {"Before they are given away, so that nobody finds the old author in them:",
             "ferrule metadata set contracts --author 'Smith & Co' --rewrite --output public"}}};
    AddSection(row, "Fields", EntryOptions());
    AddChangeSections(row);
    return row;
}

CommandRow MetadataImportRow()
{
    CommandRow row{
        .name = "metadata import",
        .summary = "change the metadata of documents as a table says",
        .text =
            "Takes title, subject, author, keywords, creator and producer of each document from a table such as "
            "\"ferrule metadata export\" writes and a spreadsheet program edits. Its first line names the fields; "
            "one of them is \"Filename\". The exact path counts first, then one that differs in letter case; a name "
            "without folder fits a document of that name. How many records fit is told before anything is changed; "
            "one that fits several documents stops it.\n\n"
            "Then it is a run like that of \"ferrule metadata set\".",
        .operands = DocumentOperands(),
        .examples = {
            {"Edit the properties of a folder in a spreadsheet:", "ferrule metadata export contracts -o table.csv"},
            {"", "ferrule metadata import contracts --table table.csv --in-place --keep-originals kept"}}};
    AddSection(
        row, "Table",
        {{.name = "--table",
          .kind = ValueKind::File,
          .valueName = "FILE",
          .help = "The table: values between commas, or between tabs when its name ends in .txt.",
          .required = true},
         {.name = "--fields",
          .kind = ValueKind::Text,
          .valueName = "LIST",
          .help = "Further columns to take, separated by commas; each is the field of that name."},
         {.name = "--clear-empty", .help = "Take a field away where the table has nothing; else it stays as it is."},
         {.name = "--match",
          .kind = ValueKind::Choice,
          .valueName = "HOW",
          .help = "Whether a Filename with a folder must be the whole path, or only its name counts.",
          .fallback = "path",
          .choices = {"path", "name"}},
         {.name = "--separator",
          .kind = ValueKind::Choice,
          .valueName = "WHAT",
          .help = "What stands between values; without it as the name of the table ends.",
          .choices = {"comma", "semicolon", "tab"}},
         {.name = "--encoding",
          .kind = ValueKind::Choice,
          .valueName = "SET",
          .help = "The table's character set; auto: by its mark, else UTF-8 when it is that, else the code page.",
          .fallback = "auto",
          .choices = {"auto", "utf-8", "utf-16le", "utf-16be", "code-page"}}});
    AddChangeSections(row);
    return row;
}

}  // namespace cli
