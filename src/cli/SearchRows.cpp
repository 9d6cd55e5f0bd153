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

CommandRow SearchRow()
{
    CommandRow row{
        .name = "search",
        .summary = "find text in documents",
        .text =
            "Looks for a text, or for several, in every PDF file, and prints where it stands. Words that are "
            "divided at the end of a line are whole, and a text that goes on in the next line is found. Nothing is "
            "changed, and nothing is left behind.\n\n"
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
        .examples = {{"Where is this phrase?", "ferrule search 'payable within' contracts"},
                     {"Which files mention one of two names, in any letter case?",
                      "ferrule search -e Miller -e Meyer -i -l contracts"},
                     {"The invoice numbers in the upper right corner of the first pages:",
                      "ferrule search --regex 'No\\. (\\d+)' --format '\\1' --pages 1 --area 300,700,595,842 in"}}};
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
    AddSection(row, "Where",
               {PagesOption(),
                AreaOption(),
                {.name = "--no-subfolders", .help = "Take files from the top of each folder only."},
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
               {PagesOption(), AreaOption(), PasswordOption(), JsonOption("One JSON object for each page.")});
    AddSection(row, "", ProgramOptions());
    return row;
}

}  // namespace cli
