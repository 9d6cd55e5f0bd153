#include "cli/CommandRows.h"

#include <utility>

namespace cli {

void AddSection(CommandRow& command, const std::string& heading, std::vector<OptionRow> options)
{
    for (OptionRow& option : options) {
        option.section = heading;
        command.options.push_back(std::move(option));
    }
}

std::vector<OptionRow> ProgramOptions()
{
    return {{.name = "--host",
             .kind = ValueKind::File,
             .valueName = "FILE",
             .help = "The host program; normally ferrule-host beside this program.",
             .hidden = true},
            {.name = "--plugin",
             .kind = ValueKind::File,
             .valueName = "FILE",
             .help = "Plug-in to load; normally every *.api in the folder plug_ins beside this program.",
             .repeatable = true,
             .hidden = true}};
}

OptionRow JsonOption(const std::string& what) { return {.name = "--json", .help = what}; }

CommandRow LogRow()
{
    CommandRow row{.name = "log",
                   .summary = "show the log",
                   .text =
                       "Prints your log. A log above 2,000,000 bytes is set aside before the next run, in the same "
                       "folder.",
                   .examples = {{"Watch a run from another terminal:", "ferrule log --follow"},
                                {"", "grep -c 'saved successfully' \"$(ferrule log --path)\""}}};
    AddSection(
        row, "Options",
        {{.name = "--follow", .shortName = "-f", .help = "Go on printing what is added, until Ctrl-C."},
         {.name = "--clear", .help = "Empty the log; refused while a run writes it."},
         {.name = "--path", .help = "Print only where the log is."},
         {.name = "--log", .kind = ValueKind::File, .valueName = "FILE", .help = "This log instead of your own."}});
    return row;
}

CommandRow GenerateRow()
{
    return {.name = "generate",
            .summary = "write the manual page or a shell's completions to standard output",
            .operands = {{.name = "WHAT",
                          .kind = ValueKind::Choice,
                          .help = "What to write.",
                          .choices = {"man", "bash", "zsh", "fish"}}},
            .hidden = true};
}

namespace {

}  // namespace

OptionRow OverwriteOption() { return {.name = "--overwrite", .help = "Replace a file that is there already."}; }

namespace {

std::vector<OptionRow> ProtectOptions()
{
    return {
        {.name = "--user-password-file",
         .kind = ValueKind::File,
         .valueName = "FILE",
         .help = "File whose first line is the password that opens the results; - for standard input."},
        {.name = "--owner-password-file",
         .kind = ValueKind::File,
         .valueName = "FILE",
         .help = "File whose first line is the password that gives all rights; - for standard input."},
        {.name = "--method",
         .kind = ValueKind::Choice,
         .valueName = "METHOD",
         .help = "How to encrypt.",
         .fallback = "aes256",
         .choices = {"aes256", "aes128", "rc4"}},
        {.name = "--allow",
         .kind = ValueKind::Text,
         .valueName = "LIST",
         .help =
             "What stays allowed, separated by commas: print (at low resolution), print-high, copy, edit, annotate, "
             "fill-forms, assemble, templates, extract; or all, or none.",
         .fallback = "all"},
    };
}

std::vector<OptionRow> SaveOptions()
{
    return {
        {.name = "--in-folder",
         .kind = ValueKind::Folder,
         .valueName = "FOLDER",
         .help = "Where the sequence saves; without it beside each input. --output of a run goes before both."},
        {.name = "--prefix",
         .kind = ValueKind::Text,
         .valueName = "TEXT",
         .help = "Put before the name of each result."},
        {.name = "--suffix",
         .kind = ValueKind::Text,
         .valueName = "TEXT",
         .help = "Put after the name of each result."},
        {.name = "--replace", .help = "Let results replace files of the same name, instead of taking a free name."},
        {.name = "--no-linearize", .help = "Do not arrange the results for fast web view."},
    };
}

}  // namespace

CommandRow SequenceShowRow()
{
    CommandRow row{.name = "sequence show",
                   .summary = "show what a sequence does",
                   .text = "Prints the steps of a sequence with their parameters. Passwords are never shown.",
                   .operands = {{.name = "FILE", .help = "Sequence file (.sequ)."}},
                   .examples = {{"", "ferrule sequence show protect.sequ"}}};
    AddSection(row, "Options", {JsonOption("Print it as JSON.")});
    AddSection(row, "", ProgramOptions());
    return row;
}

CommandRow SequenceCheckRow()
{
    CommandRow row{.name = "sequence check",
                   .summary = "find what would go wrong in a run",
                   .text =
                       "Names what an unattended run of the sequence would stumble over: errors with line and "
                       "column, steps that are not available, results that would be lost, weak protection. Ends "
                       "with 3 when there are errors; warnings and notes do not count.",
                   .operands = {{.name = "FILE", .help = "Sequence files (.sequ).", .repeatable = true}},
                   .examples = {{"", "ferrule sequence check *.sequ"}}};
    AddSection(row, "Options", {JsonOption("Print the findings as JSON, one object for each file.")});
    AddSection(row, "What a run would bring along",
               {{.name = "--input",
                 .shortName = "-i",
                 .kind = ValueKind::Path,
                 .valueName = "PATH",
                 .help = "The input, as in \"ferrule run\"."},
                {.name = "--output",
                 .shortName = "-o",
                 .kind = ValueKind::Folder,
                 .valueName = "FOLDER",
                 .help = "The output, as in \"ferrule run\"."},
                {.name = "--final-action",
                 .kind = ValueKind::FinalAction,
                 .valueName = "NAME",
                 .help = "The final action, as in \"ferrule run\"."}});
    AddSection(row, "", ProgramOptions());
    return row;
}

CommandRow SequenceNewRow()
{
    CommandRow row{
        .name = "sequence new",
        .summary = "write a sequence from a template",
        .text =
            "Templates: protect sets passwords and permissions and saves; save only saves, which repairs "
            "damaged files and converts images; text writes the text of each document.\n\n"
            "Passwords are read from files so that they stay out of the command line. The sequence "
            "holds them in clear and can therefore be read by you alone.",
        .operands = {{.name = "FILE", .help = "Sequence file to write (.sequ)."}},
        .examples = {{"One password for all rights, printing allowed:",
                      "ferrule sequence new protect.sequ --template protect --owner-password-file owner.txt "
                      "--allow print,print-high"},
                     {"Text beside each document:", "ferrule sequence new text.sequ --template text"}}};
    AddSection(row, "Options",
               {{.name = "--template",
                 .kind = ValueKind::Choice,
                 .valueName = "NAME",
                 .help = "What to begin with.",
                 .choices = {"protect", "save", "text"},
                 .required = true},
                {.name = "--title", .kind = ValueKind::Text, .valueName = "TEXT", .help = "Title of the sequence."},
                {.name = "--description",
                 .kind = ValueKind::Text,
                 .valueName = "TEXT",
                 .help = "A sentence for people about what the sequence does."},
                OverwriteOption(),
                {.name = "--force", .help = "Write the sequence although a check of it finds errors."},
                JsonOption("Print what was written as JSON.")});
    AddSection(row, "Template protect", ProtectOptions());
    AddSection(row, "How results are saved", SaveOptions());
    AddSection(row, "", ProgramOptions());
    return row;
}

CommandRow SequenceConvertRow()
{
    CommandRow row{.name = "sequence convert",
                   .summary = "write a sequence in the other form",
                   .text =
                       "Between XML and the host's own form. What has no place in the other form is named; nothing "
                       "is left out silently. Passwords are kept.",
                   .operands = {{.name = "FILE", .help = "Sequence file to read."},
                                {.name = "TARGET", .help = "Sequence file to write."}},
                   .examples = {{"", "ferrule sequence convert old.sequ new.sequ --to xml"}}};
    AddSection(row, "Options",
               {{.name = "--to",
                 .kind = ValueKind::Choice,
                 .valueName = "FORM",
                 .help = "The form to write.",
                 .fallback = "xml",
                 .choices = {"xml", "host"}},
                {.name = "--title",
                 .kind = ValueKind::Text,
                 .valueName = "TEXT",
                 .help = "Title when the source has none; the name of the source without it."},
                {.name = "--description",
                 .kind = ValueKind::Text,
                 .valueName = "TEXT",
                 .help = "Description when the source has none."},
                {.name = "--allow-loss", .help = "Write the target although a run of it would do something else."},
                OverwriteOption(),
                JsonOption("Print what was written as JSON.")});
    AddSection(row, "", ProgramOptions());
    return row;
}

CommandRow BatchFileRow()
{
    CommandRow row{
        .name = "batchfile",
        .summary = "write a command file that starts an unattended run",
        .text =
            "The file sets the variables of a run and starts the host. Its first argument is the file or folder to "
            "take inputs from, its second the folder for the results; without them the sequence says both.\n\n"
            "The command interpreter of Windows reads some characters otherwise wherever they stand, so a value with "
            "one of % \" & ^ | < > is refused for the form bat.",
        .operands = {{.name = "SEQUENCE", .help = "Sequence file (.sequ)."}},
        .examples = {{"A script for a scheduler:", "ferrule batchfile protect.sequ --output nightly.sh"},
                     {"Moves what is done:",
                      "ferrule batchfile protect.sequ --final-action move --destination done --output nightly.sh"}}};
    AddSection(row, "Options",
               {{.name = "--form",
                 .kind = ValueKind::Choice,
                 .valueName = "FORM",
                 .help = "For the command interpreter of Windows, or for a shell; without it as this system has.",
                 .choices = {"bat", "sh"}},
                {.name = "--output",
                 .shortName = "-o",
                 .kind = ValueKind::File,
                 .valueName = "FILE",
                 .help = "The file to write; without it to standard output."},
                OverwriteOption()});
    AddSection(row, "What the run does",
               {{.name = "--ext",
                 .kind = ValueKind::Text,
                 .valueName = "LIST",
                 .help = "Accepted extensions, separated by commas; without it the sequence decides."},
                {.name = "--no-subfolders", .help = "Take files from the top of the folder only."},
                OptionOfRun("--final-action"),
                OptionOfRun("--destination"),
                {.name = "--in-steps", .help = "Set EXECUTEINSTEPS."},
                {.name = "--no-progress", .help = "Show no window with the progress, where the host has windows."},
                {.name = "--hidden", .help = "Start the host without its window."}});
    AddSection(row, "", ProgramOptions());
    return row;
}

}  // namespace cli
