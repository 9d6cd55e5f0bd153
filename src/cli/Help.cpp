#include "cli/Help.h"

#include <algorithm>
#include <sstream>

#include "protocol/FinalAction.h"

namespace cli {

namespace {

constexpr std::size_t kTermColumn = 2;
constexpr std::size_t kHelpColumn = 26;

std::size_t Columns(const std::string& text)
{
    return static_cast<std::size_t>(std::count_if(
        text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

/// A term on the left and its explanation beside it, or below when the term is long.
std::string Entry(const std::string& term, const std::string& help, std::size_t width)
{
    std::string text = std::string(kTermColumn, ' ') + term;
    if (Columns(text) + 2 > kHelpColumn)
        text += "\n" + std::string(kHelpColumn, ' ');
    else
        text += std::string(kHelpColumn - Columns(text), ' ');
    return text + Wrapped(help, kHelpColumn, width) + "\n";
}

std::string OperandTerm(const OperandRow& row)
{
    std::string term = row.repeatable ? row.name + "..." : row.name;
    return row.optional ? "[" + term + "]" : term;
}

std::string Paragraphs(const std::string& text, std::size_t width)
{
    std::string wrapped;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) wrapped += Wrapped(line, 0, width) + "\n";
    return wrapped;
}

std::string OptionList(const CommandRow& command, std::size_t width)
{
    std::string text, section;
    for (const OptionRow& option : command.options) {
        if (option.hidden) continue;
        if (option.section != section) text += "\n" + option.section + ":\n";
        section = option.section;
        text += Entry(OptionTerm(option), OptionHelp(option), width);
    }
    return text + "\n" + Entry("-h, --help", "Show this help.", width);
}

std::string FinalActionList(std::size_t width)
{
    std::string text = "\nFinal actions (what happens to the input):\n";
    for (const FinalActionFacts& facts : FinalActions())
        text += Entry(std::string(facts.word), ActionHelp(facts), width);
    return text;
}

std::string ExampleList(const CommandRow& command, std::size_t width)
{
    std::string text = "\nExamples:\n";
    for (const Example& example : command.examples) {
        if (!example.what.empty()) text += "  " + Wrapped(example.what, 2, width) + "\n";
        text += "    " + example.command + "\n";
    }
    return text;
}

std::string ExitCodeList(std::size_t width)
{
    std::string text = "\nExit codes:\n";
    for (const ExitCodeRow& row : ExitCodes()) text += Entry(std::to_string(row.code), row.meaning, width);
    return text;
}

}  // namespace

std::string Wrapped(const std::string& text, std::size_t indent, std::size_t width)
{
    std::istringstream words(text);
    std::string wrapped;
    std::size_t column = indent;
    for (std::string word; words >> word;) {
        const bool first = column == indent;
        if (!first && column + 1 + Columns(word) > width) {
            wrapped += "\n" + std::string(indent, ' ') + word;
            column = indent + Columns(word);
        } else {
            wrapped += (first ? "" : " ") + word;
            column += Columns(word) + (first ? 0 : 1);
        }
    }
    return wrapped;
}

std::string UsageLine(const CommandRow& command)
{
    std::string line = "ferrule " + command.name;
    for (const OperandRow& operand : command.operands) line += " " + OperandTerm(operand);
    const bool hasOptions =
        std::any_of(command.options.begin(), command.options.end(), [](const OptionRow& row) { return !row.hidden; });
    return hasOptions ? line + " [OPTION]..." : line;
}

std::string OptionTerm(const OptionRow& option)
{
    std::string term = option.shortName.empty() ? option.name : option.shortName + ", " + option.name;
    return option.valueName.empty() ? term : term + " " + option.valueName;
}

std::string ActionHelp(const FinalActionFacts& facts)
{
    return std::string(facts.help) + " (code " + std::to_string(static_cast<int>(facts.action)) + ")";
}

std::string OptionHelp(const OptionRow& option)
{
    std::string help = option.help;
    std::string choices;
    for (const std::string& choice : option.choices) choices += (choices.empty() ? "" : ", ") + choice;
    if (!choices.empty()) help += " One of " + choices + ".";
    if (!option.fallback.empty()) help += " [" + option.fallback + "]";
    return option.required ? help + " Required." : help;
}

std::string CommandHelp(const CommandRow& command, std::size_t width)
{
    std::string text = "Usage: " + UsageLine(command) + "\n\n" + Paragraphs(command.text, width);
    if (!command.operands.empty()) text += "\nArguments:\n";
    for (const OperandRow& operand : command.operands) text += Entry(operand.name, operand.help, width);
    text += OptionList(command, width);
    if (FindOption(command, "--final-action")) text += FinalActionList(width);
    if (!command.examples.empty()) text += ExampleList(command, width);
    return text + ExitCodeList(width);
}

std::string ProgramHelp(std::size_t width)
{
    std::string text = "Usage: ferrule COMMAND [ARGUMENT]...\n\nferrule - " + ProgramSummary() + "\n\nCommands:\n";
    for (const CommandRow& command : Commands())
        if (!command.hidden) text += Entry(command.name, command.summary, width);
    text += "\nOptions:\n" + Entry("-h, --help", "Show this help; \"ferrule COMMAND --help\" shows more.", width) +
            Entry("--version", "Show the version.", width);
    return text + ExampleList(Commands().front(), width) + ExitCodeList(width);
}

}  // namespace cli
