#include "cli/CommandRows.h"

namespace cli {

namespace {

OperandRow IndexOperand() { return {.name = "INDEX", .help = "Description of the index (.pdx)."}; }

}  // namespace

CommandRow IndexCreateRow()
{
    CommandRow row{.name = "index create",
                   .summary = "describe a full-text index of folders",
                   .text =
                       "Writes the description, a small text file, which says whose documents the index is made of. "
                       "Folders at or "
                       "below the description are kept relative to it, so that all can be moved together. The index "
                       "itself, which "
                       "\"index build\" makes, lies in a folder beside the description, with \".index\" in place of "
                       "\".pdx\", and is "
                       "readable for you alone.",
                   .operands = {{.name = "INDEX", .help = "Description to write (.pdx)."},
                                {.name = "FOLDER",
                                 .kind = ValueKind::Folder,
                                 .help = "Folders whose documents are to be found, with all folders in them.",
                                 .repeatable = true}},
                   .examples = {{"An index of all contracts:", "ferrule index create contracts.pdx contracts"}}};
    AddSection(
        row, "Options",
        {{.name = "--include-encrypted",
          .help = "Take the text of encrypted documents into the index, which is not encrypted itself. Without "
                  "it they are left out."}});
    AddSection(row, "", ProgramOptions());
    return row;
}

CommandRow IndexBuildRow()
{
    CommandRow row{.name = "index build",
                   .summary = "build a full-text index, or bring it up to date",
                   .text =
                       "Reads the documents that are new or have changed and takes out those that are gone. The "
                       "former index serves "
                       "until the new one is complete; a build that is interrupted leaves it as it was. Documents "
                       "without text, and "
                       "those that cannot be read, are named. A document that takes too long or needs too much "
                       "memory is tried again "
                       "when it has changed.\n\n"
                       "Ends with 3 when documents failed, could not be read or are in the index in part only.",
                   .operands = {IndexOperand()},
                   .examples = {{"Every night:", "ferrule index build contracts.pdx --quiet"}}};
    AddSection(row, "Options",
               {PasswordOption(),
                NoCacheOption(),
                JsonOption("Print the summary as JSON on standard output."),
                {.name = "--quiet",
                 .shortName = "-q",
                 .help = "Only what went wrong: documents that failed, could not be read or are not whole. Nothing "
                         "when all is fine."}});
    AddSection(row, "Readers and limits", WorkerOptions());
    AddSection(row, "", ProgramOptions());
    return row;
}

CommandRow IndexPurgeRow()
{
    CommandRow row{.name = "index purge",
                   .summary = "empty a full-text index",
                   .text =
                       "Removes the index, and nothing that the index did not write. The description stays, so that "
                       "\"index build\" makes it anew.",
                   .operands = {IndexOperand()},
                   .examples = {{"", "ferrule index purge contracts.pdx"}}};
    AddSection(row, "", ProgramOptions());
    return row;
}

CommandRow IndexStatusRow()
{
    CommandRow row{
        .name = "index status",
        .summary = "say what a full-text index holds",
        .text = "Checks the index file, counts what it holds and names the documents that it does not have.",
        .operands = {IndexOperand()},
        .examples = {{"", "ferrule index status contracts.pdx"}}};
    AddSection(row, "Options", {JsonOption("Print it as JSON.")});
    AddSection(row, "", ProgramOptions());
    return row;
}

CommandRow IndexSearchRow()
{
    CommandRow row{
        .name = "index search",
        .summary = "find documents through a full-text index",
        .text =
            "Prints the pages on which the words of the query stand, in the documents that the query holds for. It "
            "knows the documents as they were when the index was built.\n\n"
            "Words side by side all have to be there; \"a phrase\" in quotation marks stands together; begin* finds "
            "words "
            "that begin so; -word or NOT word must not be there; OR and parentheses do what they say. Letter case "
            "and "
            "accents do not matter.\n\n"
            "Ends with 0 when something was found, with 1 when nothing was, and with 2 when the index could not be "
            "searched.",
        .operands = {IndexOperand(), {.name = "QUERY", .kind = ValueKind::Text, .help = "What to look for."}},
        .examples = {
            {"Which pages speak of both?", "ferrule index search contracts.pdx 'penalty \"payable within\"'"},
            {"Which documents mention one of two names, but not the third?",
             "ferrule index search contracts.pdx '(Miller OR Meyer) -Smith' --files-with-matches"}}};
    AddSection(
        row, "Options",
        {{.name = "--same-page", .help = "The whole query has to hold on one page, not only for the document."},
         {.name = "--limit",
          .kind = ValueKind::Number,
          .valueName = "N",
          .help = "So many pages at most.",
          .lowest = 1,
          .highest = 1'000'000'000},
         {.name = "--count", .shortName = "-c", .help = "Only the number of pages in each document."},
         {.name = "--files-with-matches", .shortName = "-l", .help = "Only the documents."},
         JsonOption("One JSON object for each page.")});
    AddSection(row, "", ProgramOptions());
    return row;
}

}  // namespace cli
