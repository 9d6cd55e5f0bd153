#include "cli/Generated.h"

#include <set>
#include <sstream>
#include <vector>

#include "base/Text.h"
#include "cli/CommandTable.h"
#include "cli/Help.h"
#include "protocol/FinalAction.h"

namespace cli {

namespace {

std::string Joined(const std::vector<std::string>& words, const char* separator)
{
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "" : separator) + word;
    return text;
}

/// The fixed values that an option takes; empty when any text will do.
std::vector<std::string> FixedValues(const OptionRow& option)
{
    if (option.kind != ValueKind::FinalAction) return option.choices;
    std::vector<std::string> names;
    for (const FinalActionFacts& facts : FinalActions()) names.emplace_back(facts.word);
    return names;
}

std::vector<const OptionRow*> ShownOptions(const CommandRow& command)
{
    std::vector<const OptionRow*> shown;
    for (const OptionRow& option : command.options)
        if (!option.hidden) shown.push_back(&option);
    return shown;
}

std::vector<const CommandRow*> ShownCommands()
{
    std::vector<const CommandRow*> shown;
    for (const CommandRow& command : Commands())
        if (!command.hidden) shown.push_back(&command);
    return shown;
}

std::string FirstWord(const std::string& name) { return name.substr(0, name.find(' ')); }

/// The word behind the first one; empty when there is none.
std::string SecondWord(const std::string& name)
{
    const auto blank = name.find(' ');
    return blank == std::string::npos ? "" : name.substr(blank + 1);
}

std::vector<std::string> ShownFirstWords()
{
    std::vector<std::string> words;
    for (const CommandRow* command : ShownCommands())
        if (words.empty() || words.back() != FirstWord(command->name)) words.push_back(FirstWord(command->name));
    return words;
}

std::vector<std::string> SecondWords(const std::string& first)
{
    std::vector<std::string> words;
    for (const CommandRow* command : ShownCommands())
        if (FirstWord(command->name) == first && !SecondWord(command->name).empty())
            words.push_back(SecondWord(command->name));
    return words;
}

// --- bash

std::string BashValues(const OptionRow& option)
{
    const auto fixed = FixedValues(option);
    if (!fixed.empty()) return "_ferrule_words '" + Joined(fixed, " ") + "'";
    switch (option.kind) {
        case ValueKind::File:
        case ValueKind::Path:
            return "_ferrule_paths -f";
        case ValueKind::Folder:
            return "_ferrule_paths -d";
        default:
            return ":";
    }
}

std::string BashOptionCases(const CommandRow& command)
{
    std::string text;
    for (const OptionRow* option : ShownOptions(command)) {
        if (option->kind == ValueKind::None) continue;
        const std::string key = "'" + command.name + ":";
        std::string pattern = key + option->name + "'";
        if (!option->shortName.empty()) pattern += "|" + key + option->shortName + "'";
        text += "        " + pattern + ") " + BashValues(*option) + "; return ;;\n";
    }
    return text;
}

std::string BashNames(const CommandRow& command)
{
    std::vector<std::string> names = {"--help"};
    for (const OptionRow* option : ShownOptions(command)) names.push_back(option->name);
    return "        '" + command.name + "') _ferrule_words '" + Joined(names, " ") + "' ;;\n";
}

constexpr char kBashHead[] = R"(# Completion of ferrule for bash; made from its command table.
_ferrule_words() { mapfile -t COMPREPLY < <(compgen -W "$1" -- "$cur"); }
_ferrule_paths() { compopt -o filenames; mapfile -t COMPREPLY < <(compgen "$1" -- "$cur"); }
_ferrule() {
    local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]} name=${COMP_WORDS[1]}
    COMPREPLY=()
)";

// --- zsh

/// For text inside single quotes and square brackets of a specification.
std::string ZshText(std::string text)
{
    text = ReplaceAll(text, "\\", "\\\\");
    for (const char* const special : {"[", "]", ":"}) text = ReplaceAll(text, special, std::string("\\") + special);
    return ReplaceAll(text, "'", "'\\''");
}

std::string ZshValues(const OptionRow& option)
{
    if (option.kind == ValueKind::None) return "";
    const std::string start = ":" + ZshText(option.valueName) + ":";
    const auto fixed = FixedValues(option);
    if (!fixed.empty()) return start + "(" + Joined(fixed, " ") + ")";
    if (option.kind == ValueKind::Folder) return start + "_files -/";
    return option.kind == ValueKind::File || option.kind == ValueKind::Path ? start + "_files" : start;
}

std::string ZshOption(const OptionRow& option)
{
    const std::string names = option.shortName.empty() ? "" : option.shortName + " ";
    const std::string before = option.repeatable ? "'*'" : "'(" + names + option.name + ")'";
    const std::string spelled =
        option.shortName.empty() ? option.name : "{" + option.shortName + "," + option.name + "}";
    return "            " + before + spelled + "'[" + ZshText(option.help) + "]" + ZshValues(option) + "' \\\n";
}

std::string ZshCommand(const CommandRow& command)
{
    std::string text = "        '" + command.name + "') _arguments -s \\\n";
    for (const OptionRow* option : ShownOptions(command)) text += ZshOption(*option);
    text += "            '(- *)'{-h,--help}'[Show help]'";
    for (const OperandRow& operand : command.operands)
        text += " \\\n            '" + std::string(operand.repeatable ? "*" : "") + ":" + operand.name + ":_files'";
    return text + " ;;\n";
}

/// A list for _describe: 'word:explanation' for each command that goes on with `first`, or for all first words.
std::string ZshChoices(const std::string& first)
{
    std::string text;
    std::set<std::string> seen;
    for (const CommandRow* command : ShownCommands()) {
        if (!first.empty() && FirstWord(command->name) != first) continue;
        const std::string word = first.empty() ? FirstWord(command->name) : SecondWord(command->name);
        if (!seen.insert(word).second) continue;
        const bool family = first.empty() && !SecondWord(command->name).empty();
        text += " '" + word + ":" + ZshText(family ? "commands for sequence files" : command->summary) + "'";
    }
    return text;
}

// --- fish

std::string FishText(const std::string& text)
{
    return "'" + ReplaceAll(ReplaceAll(text, "\\", "\\\\"), "'", "\\'") + "'";
}

std::string FishCondition(const CommandRow& command)
{
    const std::string first = "__fish_seen_subcommand_from " + FirstWord(command.name);
    const std::string second = SecondWord(command.name);
    return "'" + first + (second.empty() ? "" : "; and __fish_seen_subcommand_from " + second) + "'";
}

std::string FishValues(const OptionRow& option)
{
    const auto fixed = FixedValues(option);
    if (!fixed.empty()) return " -x -a '" + Joined(fixed, " ") + "'";
    switch (option.kind) {
        case ValueKind::None:
            return "";
        case ValueKind::File:
        case ValueKind::Path:
            return " -r -F";
        case ValueKind::Folder:
            return " -x -a '(__fish_complete_directories)'";
        default:
            return " -x";
    }
}

std::string FishCommand(const CommandRow& command)
{
    const std::string start = "complete -c ferrule -n " + FishCondition(command);
    std::string text;
    for (const OptionRow* option : ShownOptions(command))
        text += start + (option->shortName.empty() ? "" : " -s " + option->shortName.substr(1)) + " -l " +
                option->name.substr(2) + FishValues(*option) + " -d " + FishText(option->help) + "\n";
    return command.operands.empty() ? text : text + start + " -F\n";
}

std::string FishFirstWords()
{
    std::string text;
    std::set<std::string> seen;
    for (const CommandRow* command : ShownCommands()) {
        const std::string first = FirstWord(command->name), second = SecondWord(command->name);
        if (seen.insert(first).second)
            text += "complete -c ferrule -n __fish_use_subcommand -a " + first + " -d " +
                    FishText(second.empty() ? command->summary : "commands for sequence files") + "\n";
        if (!second.empty())
            text += "complete -c ferrule -n '__fish_seen_subcommand_from " + first +
                    "; and not __fish_seen_subcommand_from " + Joined(SecondWords(first), " ") + "' -a " + second +
                    " -d " + FishText(command->summary) + "\n";
    }
    return text;
}

}  // namespace

std::string BashCompletion()
{
    std::string text = kBashHead;
    text += "    if (( COMP_CWORD == 1 )); then _ferrule_words '" + Joined(ShownFirstWords(), " ") +
            " --help --version'; " + "return; fi\n";
    for (const std::string& first : ShownFirstWords()) {
        const auto second = SecondWords(first);
        if (second.empty()) continue;
        text += "    if [[ $name == " + first + " ]]; then\n        if (( COMP_CWORD == 2 )); then _ferrule_words '" +
                Joined(second, " ") + "'; return; fi\n        name+=\" ${COMP_WORDS[2]}\"\n    fi\n";
    }
    text += "    case \"$name:$prev\" in\n";
    for (const CommandRow* command : ShownCommands()) text += BashOptionCases(*command);
    text += "    esac\n    if [[ $cur != -* ]]; then _ferrule_paths -f; return; fi\n    case $name in\n";
    for (const CommandRow* command : ShownCommands()) text += BashNames(*command);
    return text + "    esac\n}\ncomplete -F _ferrule ferrule\n";
}

std::string ZshCompletion()
{
    std::string text =
        "#compdef ferrule\n# Completion of ferrule for zsh; made from its command table.\n_ferrule() {\n";
    text += "    local -a choices\n    local name=$words[2]\n    if (( CURRENT == 2 )); then\n        choices=(" +
            ZshChoices("") + ")\n        _describe command choices\n        return\n    fi\n";
    for (const std::string& first : ShownFirstWords()) {
        if (SecondWords(first).empty()) continue;
        text += "    if [[ $name == " + first +
                " ]]; then\n        if (( CURRENT == 3 )); then\n            choices=(" + ZshChoices(first) +
                ")\n            _describe command choices\n            return\n        fi\n" +
                "        name+=\" $words[3]\"\n        shift words\n        (( CURRENT-- ))\n    fi\n";
    }
    text += "    shift words\n    (( CURRENT-- ))\n    case $name in\n";
    for (const CommandRow* command : ShownCommands()) text += ZshCommand(*command);
    return text + "    esac\n}\n_ferrule \"$@\"\n";
}

std::string FishCompletion()
{
    std::string text = "# Completion of ferrule for fish; made from its command table.\ncomplete -c ferrule -f\n";
    text += FishFirstWords();
    for (const CommandRow* command : ShownCommands()) text += FishCommand(*command);
    return text + "complete -c ferrule -l help -s h -d 'Show help'\n";
}

namespace {

/// Text as troff prints it letter for letter: backslashes and hyphens mean something else there.
std::string Escaped(const std::string& text)
{
    std::string escaped;
    for (const char c : text) {
        if (c == '\\')
            escaped += "\\e";
        else if (c == '-')
            escaped += "\\-";
        else
            escaped += c;
    }
    return escaped;
}

/// A line of text: one that begins with a dot or an apostrophe would be a request.
std::string Line(const std::string& text)
{
    const bool request = !text.empty() && (text[0] == '.' || text[0] == '\'');
    return (request ? "\\&" : "") + Escaped(text) + "\n";
}

std::string Bold(const std::string& text) { return "\\fB" + Escaped(text) + "\\fR"; }
std::string Italic(const std::string& text) { return "\\fI" + Escaped(text) + "\\fR"; }

std::string Entry(const std::string& term, const std::string& help) { return ".TP\n" + term + "\n" + Line(help); }

std::string Term(const OptionRow& option)
{
    std::string term = option.shortName.empty() ? "" : Bold(option.shortName) + ", ";
    term += Bold(option.name);
    return option.valueName.empty() ? term : term + " " + Italic(option.valueName);
}

std::string Synopsis()
{
    std::string text = ".SH SYNOPSIS\n";
    for (const CommandRow& command : Commands()) {
        if (command.hidden) continue;
        std::string line = UsageLine(command);
        const std::string name = "ferrule " + command.name;
        text += Bold(name) + Escaped(line.substr(name.size())) + "\n.br\n";
    }
    return text;
}

std::string Section(const CommandRow& command)
{
    std::string text = ".SS " + Escaped("ferrule " + command.name) + "\n";
    std::istringstream lines(command.text);
    for (std::string line; std::getline(lines, line);) text += line.empty() ? ".PP\n" : Line(line);
    for (const OperandRow& operand : command.operands) text += Entry(Italic(operand.name), operand.help);
    for (const OptionRow& option : command.options)
        if (!option.hidden) text += Entry(Term(option), OptionHelp(option));
    return text;
}

std::string FinalActionSection()
{
    std::string text = ".SH FINAL ACTIONS\nWhat happens to an input once its result is there.\n";
    for (const FinalActionFacts& facts : FinalActions())
        text +=
            Entry(Bold(std::string(facts.word)),
                  ActionHelp(facts) + (facts.destination == Destination::None
                                           ? ""
                                           : "; destination: " + std::string(DestinationWord(facts.destination))));
    return text;
}

std::string ExampleSection()
{
    std::string text = ".SH EXAMPLES\n";
    for (const CommandRow& command : Commands())
        for (const Example& example : command.examples)
            text += ".PP\n" + (example.what.empty() ? "" : Line(example.what)) + ".RS\n.nf\n" +
                    Line(example.command) + ".fi\n.RE\n";
    return text;
}

}  // namespace

std::string ManPage(const std::string& version)
{
    std::string text = ".TH FERRULE 1 \"\" \"Ferrule " + Escaped(version) + "\" \"User Commands\"\n.SH NAME\n";
    text += "ferrule \\- " + Escaped(ProgramSummary()) + "\n" + Synopsis() + ".SH COMMANDS\n";
    for (const CommandRow& command : Commands())
        if (!command.hidden) text += Section(command);
    text += FinalActionSection() + ".SH EXIT STATUS\n";
    for (const ExitCodeRow& row : ExitCodes()) text += Entry(Bold(std::to_string(row.code)), row.meaning);
    text += ".SH ENVIRONMENT\n" + Entry(Bold("NO_COLOR"), "When set and not empty, nothing is coloured.");
    text += Entry(Bold("XDG_CONFIG_HOME"),
                  "Where settings, log and unfinished runs are kept, in Quillon/Ferrule; "
                  "normally ~/.config.");
    return text + ExampleSection();
}

}  // namespace cli
