// What the command line offers, as data: the parser, the help, the manual page and the shells' completions are all
// made from these rows, so none of them can know an option that the others do not.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace cli {

enum class ValueKind {
    None,  ///< a switch
    Text,
    File,
    Folder,
    Path,    ///< a file or a folder
    Number,  ///< a whole number from `lowest` to `highest`
    Size,    ///< bytes: a number, with K, M or G in units of 1024; 0 for no limit
    Choice,  ///< one of `choices`
    FinalAction
};

struct OptionRow {
    std::string name = {};       ///< "--jobs"
    std::string shortName = {};  ///< "-j" or empty
    ValueKind kind = ValueKind::None;
    std::string valueName = {};  ///< "N"; empty for a switch
    std::string help = {};       ///< one or more sentences
    std::string fallback = {};   ///< what counts when the option is absent; shown in the help
    std::vector<std::string> choices = {};
    long long lowest = 0;
    long long highest = 0;
    bool repeatable = false;
    bool required = false;
    bool hidden = false;
    std::string section = {};  ///< heading that it stands under; filled in by Section()
};

struct OperandRow {
    std::string name = {};  ///< "SEQUENCE"
    ValueKind kind = ValueKind::File;
    std::string help = {};
    std::vector<std::string> choices = {};
    bool optional = false;
    bool repeatable = false;
};

struct Example {
    std::string what = {};
    std::string command = {};
};

struct CommandRow {
    std::string name = {};     ///< words between "ferrule" and the arguments: "run", "sequence show"
    std::string summary = {};  ///< one line without a full stop
    std::string text = {};     ///< paragraphs, separated by empty lines
    std::vector<OperandRow> operands = {};
    std::vector<OptionRow> options = {};
    std::vector<Example> examples = {};
    bool hidden = false;
};

/// All commands in the order in which help shows them. Lives as long as the program.
const std::vector<CommandRow>& Commands();

/// Null when there is no command of that name.
const CommandRow* FindCommand(std::string_view name);
/// Null when the command has no such option.
const OptionRow* FindOption(const CommandRow& command, std::string_view name);

struct ExitCodeRow {
    int code;
    std::string meaning;
};
const std::vector<ExitCodeRow>& ExitCodes();

/// The sentence that introduces the program.
std::string ProgramSummary();

}  // namespace cli
