#include <utility>

#include "cli/CommandRows.h"

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

}  // namespace cli
