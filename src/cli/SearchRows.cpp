#include "cli/CommandRows.h"

namespace cli {

namespace {

OptionRow PagesOption()
{
    return {.name = "--pages",
            .kind = ValueKind::Text,
            .valueName = "FIRST..LAST",
            .help =
                "Only these pages: numbers from 1, from the end as in -1, \"last\", \"b:\" and the title of a "
                "bookmark, \"d:\" and the name of a destination, or \"l:\" and a page label. A single one is that "
                "page; nothing behind the points is the last page."};
}

OptionRow AreaOption()
{
    return {.name = "--area",
            .kind = ValueKind::Text,
            .valueName = "LEFT,BOTTOM,RIGHT,TOP",
            .help =
                "Only words whose middle lies in this rectangle, in units of the page's own coordinates (1/72 inch "
                "as a rule), from its left lower corner, before the page is turned."};
}

}  // namespace

OptionRow NoCacheOption()
{
    return {.name = "--no-cache", .help = "Read every document anew, and keep nothing of it; see \"ferrule cache\"."};
}

CommandRow SearchRow()
{
    CommandRow row{
        .name = "search",
        .summary = "find text in documents",
        .text =
            "Looks for a text, or for several, in every PDF file, and prints where it stands. Words that are "
            "divided at the end of a line are whole, and a text that goes on in the next line is found. No document "
            "is changed. What is read of documents that are not encrypted is kept for the next time in a folder of "
            "your own, unless --no-cache is given.\n\n"
            "Expressions are those of Perl; \\w, \\d, \\s and \\b know ASCII only, \\p{L} and its like know every "
            "letter. A leading \"!\" finds the files in which the rest does not match.\n\n"
            "Ends with 0 when something was found, with 1 when nothing was, and with 2 when a file could not be "
            "searched or nothing could be done at all.",
        .operands = {{.name = "PATTERN",
                      .kind = ValueKind::Text,
                      .help = "What to look for, unless --pattern is given.",
                      .optional = true},
                     {.name = "PATH",
                      .kind = ValueKind::Path,
                      .help = "Files and folders to search in.",
                      .optional = true,
                      .repeatable = true}},
        .examples = {
            {"Where is this phrase?", "ferrule search 'payable within' contracts"},
            {"Which files mention one of two names, in any letter case?",
             "ferrule search -e Miller -e Meyer -i -l contracts"},
            {"The invoice numbers in the upper right corner of the first pages:",
             "ferrule search --regex 'No\\. (\\d+)' --format '\\1' --pages 1 --area 300,700,595,842 in"},
            {"Copy every file that mentions a name, with a list of the places:",
             "ferrule search Miller contracts --copy-to found --report found.txt"},
            {"Search by the rules that were saved in Acrobat:", "ferrule search --rules contracts.pdfsearch in"}}};
    AddSection(row, "What to look for",
               {{.name = "--pattern",
                 .shortName = "-e",
                 .kind = ValueKind::Text,
                 .valueName = "PATTERN",
                 .help = "Look for this; repeatable.",
                 .repeatable = true},
                {.name = "--regex", .shortName = "-r", .help = "Patterns are expressions, not plain text."},
                {.name = "--ignore-case", .shortName = "-i", .help = "Letter case does not matter."},
                {.name = "--whole-words", .shortName = "-w", .help = "Only between white space."},
                {.name = "--line-ends",
                 .help = "Lines end with a line feed, so that ^ and $ match there; else with a blank."},
                {.name = "--format",
                 .kind = ValueKind::Text,
                 .valueName = "FORM",
                 .help = "What to print of a match: \\0 to \\99 and \\g<name> are what its groups hold."}});
    AddSection(
        row, "Rules, copies and reports",
        {{.name = "--rules",
          .kind = ValueKind::File,
          .valueName = "FILE",
          .help = "Search by the rules of this file (.pdfsearch) instead of patterns, and do what they say: "
                  "scripts, copies, reports. Changes that a script makes are not saved."},
         {.name = "--copy-to",
          .kind = ValueKind::Folder,
          .valueName = "FOLDER",
          .help = "Copy each file in which something is found into this folder, which is made when it is missing. "
                  "A name that is taken gets a number. \"ferrule undo\" takes the copies away."},
         {.name = "--report",
          .kind = ValueKind::File,
          .valueName = "FILE",
          .help = "Write what was found into this file, and beside it as CSV. Only an older report is replaced."},
         {.name = "--dry-run", .shortName = "-n", .help = "Only search: no copies, no reports."},
         {.name = "--resume", .help = "Go on with the same search after it was stopped or broke off."}});
    AddSection(row, "Where",
               {PagesOption(),
                AreaOption(),
                {.name = "--no-subfolders", .help = "Take files from the top of each folder only."},
                NoCacheOption(),
                PasswordOption()});
    AddSection(
        row, "What is printed",
        {{.name = "--count", .shortName = "-c", .help = "Only how often something was found in each file."},
         {.name = "--files-with-matches", .shortName = "-l", .help = "Only the files in which something is found."},
         JsonOption("One JSON object for each place."),
         {.name = "--record",
          .kind = ValueKind::File,
          .valueName = "FILE",
          .help = "Write what was found in each file as JSON Lines, in input order."},
         {.name = "--quiet", .shortName = "-q", .help = "No remarks about pages without text."}});
    AddSection(row, "Workers and limits", WorkerOptions());
    AddSection(row, "", ProgramOptions());
    return row;
}

CommandRow TextRow()
{
    CommandRow row{
        .name = "text",
        .summary = "print the text of a document",
        .text = "Prints the text in reading order, with a form feed between two pages.",
        .operands = {{.name = "FILE", .help = "PDF file."}},
        .examples = {{"The heading of the second page:", "ferrule text letter.pdf --pages 2 --area 0,700,595,842"}}};
    AddSection(row, "Options",
               {PagesOption(), AreaOption(), NoCacheOption(), PasswordOption(),
                JsonOption("One JSON object for each page.")});
    AddSection(row, "", ProgramOptions());
    return row;
}

CommandRow CacheStatusRow()
{
    CommandRow row{
        .name = "cache status",
        .summary = "show what is kept of documents that were read",
        .text =
            "\"ferrule search\" and \"ferrule text\" keep the words of documents in a folder that only you "
            "may look into: never of encrypted ones, and at most 1 GiB; what was not used for the longest "
            "time goes first. Runs of sequences keep nothing.",
        .examples = {{"", "ferrule cache status"}}};
    AddSection(row, "Options", {JsonOption("One JSON object.")});
    return row;
}

CommandRow CacheClearRow()
{
    CommandRow row{.name = "cache clear",
                   .summary = "remove what is kept of documents that were read",
                   .text = "Removes the words that searches have kept; the documents themselves are not touched.",
                   .examples = {{"", "ferrule cache clear"}}};
    AddSection(row, "Options", {{.name = "--dry-run", .shortName = "-n", .help = "Only say what would be removed."}});
    return row;
}

}  // namespace cli
