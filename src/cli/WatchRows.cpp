#include "cli/CommandRows.h"

namespace cli {

namespace {

OptionRow Age()
{
    return {.name = "--min-age",
            .kind = ValueKind::Number,
            .valueName = "SECONDS",
            .help =
                "A file is taken when size and times are the same at two looks so far apart, and on Windows when "
                "nobody has it open.",
            .fallback = "5",
            .highest = 86'400};
}

std::vector<OptionRow> PlacesOfWatch()
{
    std::vector<OptionRow> rows = {
        OptionOfRun("--input", "The folder to watch."),
        OptionOfRun("--output", ""),
        OptionOfRun("--ext", ""),
        OptionOfRun("--no-subfolders", "Watch the top of the folder only."),
        Age(),
        OptionOfRun("--final-action", ""),
        OptionOfRun("--destination", ""),
        OptionOfRun("--keep-originals", ""),
        OptionOfRun("--password-file", ""),
    };
    rows.front().kind = ValueKind::Folder;
    rows.front().valueName = "FOLDER";
    rows.front().required = true;
    return rows;
}

std::vector<OptionRow> TroubleOptions()
{
    return {
        {.name = "--tries",
         .kind = ValueKind::Number,
         .valueName = "N",
         .help = "After so many failures a file goes to quarantine.",
         .fallback = "5",
         .lowest = 1,
         .highest = 100},
        {.name = "--retry-pause",
         .kind = ValueKind::Number,
         .valueName = "SECONDS",
         .help = "The pause before the second try; each later one is four times as long, up to a day.",
         .fallback = "60",
         .highest = 86'400},
        {.name = "--quarantine",
         .kind = ValueKind::File,
         .valueName = "FILE",
         .help = "Write the list of the files in quarantine here, as JSON Lines: path, reason, tries, first and last "
                 "time. Without it the list is beside the journal of the watch."},
        {.name = "--retry-quarantined", .help = "Begin with trying all files in quarantine once more."},
    };
}

std::vector<OptionRow> ReportsOfWatch()
{
    OptionRow quiet = OptionOfRun("--quiet", "Only what went wrong.");
    return {{.name = "--records",
             .kind = ValueKind::Folder,
             .valueName = "FOLDER",
             .help = "Existing folder that gets a record of each batch."},
            OptionOfRun("--log", ""),
            JsonOption("Print counts as JSON on standard output at the end."),
            std::move(quiet)};
}

std::vector<OptionRow> SafetyOfWatch()
{
    std::vector<OptionRow> rows;
    for (const char* const name : {"--skip-unavailable", "--allow-no-output", "--allow-in-place", "--force"})
        rows.push_back(OptionOfRun(name, ""));
    return rows;
}

}  // namespace

CommandRow WatchRow()
{
    CommandRow row{
        .name = "watch",
        .summary = "run a sequence over whatever is put into a folder",
        .text =
            "Looks into the folder again and again, which works on network shares, too, and runs the sequence over "
            "each "
            "file that is complete. Each version of a file is done once, whatever happens meanwhile: a journal keeps "
            "path, size, time and hash. Results, and folders inside the watched one that results and final actions "
            "go "
            "to, are no inputs. Hidden files and the names of unfinished downloads are left alone.\n\n"
            "A file that fails is tried again after growing pauses, and then left in quarantine. A document that is "
            "damaged goes there at once and gets no final action. Change or touch a file to have it tried again.\n\n"
            "A request to end lets the files in work finish; the next start goes on. \"ferrule undo\" takes back a "
            "batch by its packed run or record.",
        .operands = {{.name = "SEQUENCE", .help = "Sequence file (.sequ)."}},
        .examples = {{"Protect what comes in, and move each input away:",
                      "ferrule watch protect.sequ -i in -o out --final-action move-versions --destination done"},
                     {"Work off what is there, and end:", "ferrule watch protect.sequ -i in -o out --once"},
                     {"Which files would be taken?", "ferrule watch protect.sequ -i in -o out --dry-run"}}};
    AddSection(row, "Inputs and results", PlacesOfWatch());
    AddSection(row, "Workers and limits", WorkerOptions());
    AddSection(row, "Files that do not come out", TroubleOptions());
    AddSection(row, "Once and trying out",
               {{.name = "--once", .help = "Work off what is complete, and end."},
                {.name = "--dry-run", .help = "Say which files would be taken, and touch nothing."}});
    AddSection(row, "Reports", ReportsOfWatch());
    AddSection(row, "What a run refuses to start with", SafetyOfWatch());
    AddSection(row, "", ProgramOptions());
    return row;
}

}  // namespace cli
