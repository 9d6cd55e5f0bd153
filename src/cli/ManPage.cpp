#include "cli/ManPage.h"

#include <sstream>

#include "cli/CommandTable.h"
#include "cli/Help.h"
#include "protocol/FinalAction.h"

namespace cli {

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
