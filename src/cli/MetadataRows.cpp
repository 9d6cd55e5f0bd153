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

}  // namespace cli
