#include "cli/CommandRows.h"

namespace cli {

namespace {

constexpr char kInputSection[] = "Inputs and results";
constexpr char kWorkerSection[] = "Workers and limits";
constexpr char kSafetySection[] = "What a run refuses to start with";
constexpr char kReportSection[] = "Reports";

std::vector<OptionRow> PlaceOptions()
{
    return {
        {.name = "--input",
         .shortName = "-i",
         .kind = ValueKind::Path,
         .valueName = "PATH",
         .help = "File or folder to process; repeatable. Without it what the sequence itself names is taken.",
         .repeatable = true},
        {.name = "--output",
         .shortName = "-o",
         .kind = ValueKind::Folder,
         .valueName = "FOLDER",
         .help = "Existing folder for the results, instead of what the sequence names."},
        {.name = "--ext",
         .kind = ValueKind::Text,
         .valueName = "LIST",
         .help = "Accepted extensions, separated by commas; \"all\" for everything that can be converted.",
         .fallback = "pdf"},
        {.name = "--no-subfolders", .help = "Take files from the top of each folder only."},
        {.name = "--min-age",
         .kind = ValueKind::Number,
         .valueName = "SECONDS",
         .help = "Leave files alone that changed less than so long ago: they may still be being copied.",
         .fallback = "0",
         .highest = 1'000'000'000},
        {.name = "--final-action",
         .kind = ValueKind::FinalAction,
         .valueName = "NAME",
         .help = "What happens to each input once its result is there; name or code.",
         .fallback = "nothing"},
        {.name = "--destination",
         .kind = ValueKind::Path,
         .valueName = "PLACE",
         .help =
             "Where the final action puts the input: a folder, for rename the new name, for execute the program."},
        {.name = "--keep-originals",
         .kind = ValueKind::Folder,
         .valueName = "FOLDER",
         .help =
             "Keep every file here that a result replaces, or that the final action deletes or replaces, so that "
             "\"ferrule undo\" can put it back. The folder is made when it is missing. It holds documents as they "
             "were before they were protected, so only you may read what is kept."},
    };
}

}  // namespace

OptionRow PasswordOption()
{
    return {.name = "--password-file",
            .kind = ValueKind::File,
            .valueName = "FILE",
            .help = "Passwords to try on protected inputs, one a line, UTF-8; blanks count."};
}

std::vector<OptionRow> WorkerOptions()
{
    return {
        {.name = "--jobs",
         .shortName = "-j",
         .kind = ValueKind::Number,
         .valueName = "N",
         .help = "Number of worker processes; without it one for each processor.",
         .lowest = 1,
         .highest = 512},
        {.name = "--timeout",
         .kind = ValueKind::Number,
         .valueName = "SECONDS",
         .help = "A file that takes longer fails, and its worker is replaced; 0 for no limit.",
         .fallback = "300",
         .highest = 1'000'000},
        {.name = "--memory",
         .kind = ValueKind::Size,
         .valueName = "SIZE",
         .help = "A file that needs more memory fails, and its worker is replaced; as in 512M or 2G, 0 for no limit.",
         .fallback = "2G"},
    };
}

namespace {

std::vector<OptionRow> SafetyOptions()
{
    return {
        {.name = "--skip-unavailable",
         .help =
             "Run although a step of the sequence is not available; it is left out and the files are incomplete."},
        {.name = "--allow-no-output",
         .help = "Run although the sequence saves nothing and the final action moves or deletes the inputs."},
        {.name = "--allow-in-place", .help = "Run although a save step replaces the inputs and --output is given."},
        {.name = "--accept-damaged",
         .help = "Treat documents that lost something to damage like any other: they count as saved, and may be "
                 "replaced, moved and deleted."},
        {.name = "--force",
         .help = "Run although \"sequence check\" finds errors in the sequence, steps that are not available among "
                 "them."},
    };
}

OptionRow QuietOption()
{
    return {
        .name = "--quiet",
        .shortName = "-q",
        .help = "Only what went wrong: each file that was not saved, and their number. Nothing when all is fine."};
}

OptionRow RecordOption()
{
    return {.name = "--record",
            .kind = ValueKind::File,
            .valueName = "FILE",
            .help = "Write what became of each file as JSON Lines, in input order; - for standard output."};
}

OptionRow LogOption()
{
    return {.name = "--log",
            .kind = ValueKind::File,
            .valueName = "FILE",
            .help = "Write the log here instead of into your own log."};
}

OptionRow ReportOption()
{
    return {.name = "--report",
            .kind = ValueKind::File,
            .valueName = "FILE",
            .help = "Write a page for people about the whole run at its end, in HTML, as \"ferrule report\" does."};
}

OptionRow ManifestOption(const std::string& help, bool required)
{
    return {.name = "--manifest", .kind = ValueKind::File, .valueName = "FILE", .help = help, .required = required};
}

void AddOneTimeOptions(CommandRow& row)
{
    AddSection(row, "Going on and trying out",
               {{.name = "--resume", .help = "Go on with the same run after it was stopped or broke off."},
                {.name = "--retry-failed", .help = "Like --resume, and do files again that did not come out."},
                {.name = "--dry-run", .help = "Say what would be done with each file, and touch nothing."}});
}

void AddShardOptions(CommandRow& row)
{
    AddSection(row, "One part of a planned run",
               {ManifestOption("The plan that \"ferrule plan\" has written; takes the place of SEQUENCE.", false),
                {.name = "--shard",
                 .kind = ValueKind::Text,
                 .valueName = "I/N",
                 .help = "Do part I of N of the plan, from 1/N to N/N.",
                 .fallback = "1/1"},
                {.name = "--journal",
                 .kind = ValueKind::File,
                 .valueName = "FILE",
                 .help = "Where this part keeps what it has done. Doing a part again goes on where it ended."}});
}

}  // namespace

CommandRow RunRow()
{
    CommandRow row{
        .name = "run",
        .summary = "run a sequence over files",
        .text =
            "Runs the sequence over every input on several processors. A file that fails, hangs or crashes costs "
            "only itself. The first Ctrl-C lets the files in work finish and stops; the second stops at once.\n\n"
            "Every result is written completely before it gets its name, and nothing is done to an input before "
            "its result is there. After an interruption --resume goes on; nothing is done twice.",
        .operands = {{.name = "SEQUENCE", .help = "Sequence file (.sequ).", .optional = true}},
        .examples = {
            {"Protect all PDF files of a folder, and move each input away when its result is there:",
             "ferrule run protect.sequ --input in --output out --final-action move --destination done"},
            {"What would that do?", "ferrule run protect.sequ -i in -o out --dry-run"},
            {"Go on after a power cut, and do failed files again:",
             "ferrule run protect.sequ -i in -o out --resume --retry-failed"},
            {"Files that failed, for a script:",
             "ferrule run protect.sequ -i in -o out -q --record - | jq -r 'select(.outcome!=\"saved\").path'"},
            {"The second of four parts of a planned run:",
             "ferrule run --manifest plan.jsonl --shard 2/4 --journal part2.jsonl"}}};
    auto places = PlaceOptions();
    places.push_back(PasswordOption());
    AddSection(row, kInputSection, std::move(places));
    AddSection(row, kWorkerSection, WorkerOptions());
    AddOneTimeOptions(row);
    AddSection(row, kReportSection,
               {RecordOption(), ReportOption(), LogOption(),
                JsonOption("Print the summary as JSON on standard output."), QuietOption()});
    AddSection(row, kSafetySection, SafetyOptions());
    AddShardOptions(row);
    AddSection(row, "", ProgramOptions());
    return row;
}

OptionRow OptionOfRun(const char* name, const std::string& help)
{
    OptionRow row = *FindOption(RunRow(), name);
    if (!help.empty()) row.help = help;
    return row;
}

OptionRow FilesFromOption(const std::string& verb)
{
    return {.name = "--files-from",
            .kind = ValueKind::File,
            .valueName = "FILE",
            .help = verb +
                    " also the files and folders of this list, one a line, or each ended by a zero byte as "
                    "\"find -print0\" has them; - for standard input. One that is gone fails, and no more."};
}

CommandRow PlanRow()
{
    CommandRow row{
        .name = "plan",
        .summary = "write down what a run is to do, for several machines",
        .text =
            "Collects the inputs and writes a manifest: one line for each file. Parts of it are then done "
            "by \"ferrule run --manifest\", anywhere the same paths are seen, and joined by \"ferrule "
            "merge\". Files whose names would collide always come into the same part.",
        .operands = {{.name = "SEQUENCE", .help = "Sequence file (.sequ)."}},
        .examples = {{"Plan a run for a cluster:", "ferrule plan protect.sequ -i in -o out --manifest plan.jsonl"},
                     {"Let Slurm do it, by \"sh plan.jsonl.slurm.sh --cpus-per-task=4\":",
                      "ferrule plan protect.sequ -i in -o out --manifest plan.jsonl --engine slurm"},
                     {"Let GNU Parallel do it in 16 parts, by \"sh plan.jsonl.parallel.sh --sshlogin node1,node2\":",
                      "ferrule plan protect.sequ -i in -o out --manifest plan.jsonl --engine parallel --shards 16"}}};
    auto places = PlaceOptions();
    places.push_back(PasswordOption());
    AddSection(row, kInputSection, std::move(places));
    AddSection(row, "Plan",
               {ManifestOption("The plan to write.", true),
                {.name = "--engine",
                 .kind = ValueKind::Choice,
                 .valueName = "ENGINE",
                 .help = "Write beside the plan also the script by which this engine does its parts and joins them: "
                         "FILE.slurm.sh or FILE.parallel.sh.",
                 .choices = {"slurm", "parallel"}},
                {.name = "--shards",
                 .kind = ValueKind::Number,
                 .valueName = "N",
                 .help = "Number of parts; without it so many that starting them hardly counts.",
                 .lowest = 1,
                 .highest = 100'000}});
    AddSection(row, kReportSection, {JsonOption("Print the summary as JSON on standard output."), QuietOption()});
    AddSection(row, kSafetySection, SafetyOptions());
    AddSection(row, "", ProgramOptions());
    return row;
}

CommandRow ReportRow()
{
    CommandRow row{
        .name = "report",
        .summary = "tell what runs came to",
        .text =
            "Sums up the records of one or several runs: how the files ended and for what reasons, how long they "
            "took, "
            "their sizes and protection before and after, and what became of the inputs. Without an option it is "
            "printed.\n\n"
            "Of a file that stands in several records of one run the record that is named last counts. What cannot "
            "be "
            "told, because a record is cut off or was changed, is named with file and line; then the report says "
            "that it is incomplete, and the exit code is 3.",
        .operands = {{.name = "RECORD",
                      .help = "Records, journals of parts, or packed runs (.jsonl.gz).",
                      .repeatable = true}},
        .examples = {{"A page of last night's run:", "ferrule report record.jsonl --html report.html"},
                     {"The parts of a run that is not over:", "ferrule report part1.jsonl part2.jsonl"},
                     {"The reasons, for a script:",
                      "ferrule report record.jsonl --json | jq -r '.reasons[] | [.count, .reason] | @tsv'"}}};
    AddSection(
        row, "Options",
        {{.name = "--html",
          .kind = ValueKind::File,
          .valueName = "FILE",
          .help = "Write one HTML page with pictures, which needs nothing from anywhere else. A report that is "
                  "there already is replaced, another file is not."},
         JsonOption("Print the figures as JSON.")});
    return row;
}

CommandRow UndoRow()
{
    CommandRow row{
        .name = "undo",
        .summary = "take a run back",
        .text =
            "Removes what a run has written, moves files back, and puts back what --keep-originals has kept, so that "
            "the folders are as they were. Without RECORD the last run is taken back.\n\n"
            "A result is removed or replaced only as long as it is what the run has written; nothing newer is ever "
            "replaced. What cannot be taken back is told first, and then nothing is touched, unless --partly is "
            "given. After an interruption the same command goes on; given twice it does nothing.",
        .operands = {{.name = "RECORD",
                      .help = "A record, the journal of a part, or a packed run (.jsonl.gz).",
                      .optional = true}},
        .examples = {
            {"What would become of the files?", "ferrule undo --dry-run"},
            {"Take back the run whose record this is, as far as possible:", "ferrule undo record.jsonl --partly"}}};
    AddSection(row, "Options",
               {{.name = "--dry-run", .help = "Say what would be done, and touch nothing."},
                {.name = "--partly", .help = "Take back what can be, although something cannot."},
                JsonOption("Print the summary as JSON on standard output."),
                {.name = "--quiet", .shortName = "-q", .help = "Only what cannot be taken back."}});
    return row;
}

CommandRow MergeRow()
{
    CommandRow row{
        .name = "merge",
        .summary = "join the parts of a planned run",
        .text =
            "Checks that every file of the plan has exactly one outcome in the journals, and writes one "
            "log and one record, as if one run had done everything.",
        .operands = {{.name = "JOURNAL", .help = "The journals of all parts.", .repeatable = true}},
        .examples = {{"Join four parts:",
                      "ferrule merge --manifest plan.jsonl part1.jsonl part2.jsonl part3.jsonl part4.jsonl "
                      "--record record.jsonl"}}};
    AddSection(row, "Plan", {ManifestOption("The plan that the parts belong to.", true)});
    AddSection(row, kReportSection,
               {RecordOption(), ReportOption(), LogOption(),
                JsonOption("Print the summary as JSON on standard output."), QuietOption()});
    return row;
}

}  // namespace cli
