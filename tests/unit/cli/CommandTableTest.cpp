#include "cli/CommandTable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <set>
#include <sstream>

#include "base/Text.h"
#include "cli/Arguments.h"
#include "cli/Completions.h"
#include "cli/Help.h"
#include "cli/ManPage.h"

namespace {

/// Whether the word stands there, and not only as the beginning of a longer one.
bool Holds(const std::string& text, const std::string& word)
{
    for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1)) {
        const std::size_t end = at + word.size();
        if (end == text.size() || (std::isalnum(static_cast<unsigned char>(text[end])) == 0 && text[end] != '-'))
            return true;
    }
    return false;
}

/// The lines of a generated text that speak about one command.
std::string Lines(const std::string& text, const std::string& with)
{
    std::istringstream stream(text);
    std::string found;
    for (std::string line; std::getline(stream, line);)
        if (line.find(with) != std::string::npos) found += line + "\n";
    return found;
}

std::string Between(const std::string& text, const std::string& from, const std::string& to)
{
    const std::size_t start = text.find(from);
    if (start == std::string::npos) return {};
    return text.substr(start, text.find(to, start + from.size()) - start);
}

std::string FishLines(const cli::CommandRow& command)
{
    std::string condition = "'__fish_seen_subcommand_from " + command.name + "'";
    if (const auto blank = command.name.find(' '); blank != std::string::npos)
        condition = "'__fish_seen_subcommand_from " + command.name.substr(0, blank) +
                    "; and __fish_seen_subcommand_from " + command.name.substr(blank + 1) + "'";
    return Lines(cli::FishCompletion(), condition);
}

/// What each shell, the help and the manual page say about one command.
std::vector<std::pair<std::string, std::string>> TextsAbout(const cli::CommandRow& command)
{
    return {{"help", cli::CommandHelp(command, 80)},
            {"man", ReplaceAll(Between(cli::ManPage("1"), ".SS ferrule " + command.name + "\n", ".S"), "\\-", "-")},
            {"bash", Lines(cli::BashCompletion(), "'" + command.name + "')")},
            {"zsh", Between(cli::ZshCompletion(), "'" + command.name + "') _arguments", ";;")},
            {"fish", ReplaceAll(FishLines(command), " -l ", " --")}};
}

}  // namespace

TEST(CommandTable, EveryOptionIsInEveryTextAndHiddenOnesInNone)
{
    int checked = 0;
    for (const cli::CommandRow& command : cli::Commands()) {
        if (command.hidden) continue;
        for (const auto& [kind, text] : TextsAbout(command))
            for (const cli::OptionRow& option : command.options) {
                EXPECT_EQ(Holds(text, option.name), !option.hidden)
                    << kind << ": " << command.name << " " << option.name;
                ++checked;
            }
    }
    EXPECT_GT(checked, 200);
}

TEST(CommandTable, NamesAreUniqueAndHelpIsWhole)
{
    std::set<std::string> commands;
    for (const cli::CommandRow& command : cli::Commands()) {
        EXPECT_TRUE(commands.insert(command.name).second) << command.name;
        std::set<std::string> names = {"-h", "--help"};
        for (const cli::OptionRow& option : command.options) {
            EXPECT_TRUE(names.insert(option.name).second) << command.name << option.name;
            EXPECT_TRUE(option.shortName.empty() || names.insert(option.shortName).second) << option.shortName;
            EXPECT_TRUE(option.help.ends_with('.')) << command.name << option.name;
            EXPECT_EQ(option.kind == cli::ValueKind::None, option.valueName.empty()) << command.name << option.name;
            EXPECT_NE(option.hidden, !option.section.empty()) << command.name << option.name;
        }
    }
}

TEST(CommandTable, ExamplesAreAccepted)
{
    int checked = 0;
    for (const cli::CommandRow& command : cli::Commands())
        for (const cli::Example& example : command.examples) {
            const std::string start = "ferrule " + command.name + " ";
            if (!example.command.starts_with(start)) continue;
            const std::string words = example.command.substr(start.size(), example.command.find(" |") - start.size());
            const auto parsed = cli::ParseArguments(command, Split(words, " "));
            EXPECT_TRUE(parsed.arguments) << example.command << ": " << parsed.problem;
            ++checked;
        }
    EXPECT_GT(checked, 10);
}

TEST(CommandTable, FallbacksAreValuesThatTheirOptionsTake)
{
    for (const cli::CommandRow& command : cli::Commands())
        for (const cli::OptionRow& option : command.options) {
            if (option.fallback.empty()) continue;
            cli::CommandRow alone{.name = "x"};
            alone.options = {option};
            const auto parsed = cli::ParseArguments(alone, {option.name, option.fallback});
            EXPECT_TRUE(parsed.arguments) << command.name << option.name << parsed.problem;
        }
}

TEST(CommandTable, HelpKeepsToItsWidthExceptForExamples)
{
    for (const cli::CommandRow& command : cli::Commands()) {
        std::istringstream lines(cli::CommandHelp(command, 80));
        for (std::string line; std::getline(lines, line);)
            EXPECT_TRUE(line.size() <= 80 || line.starts_with("    ferrule") || line.starts_with("    grep")) << line;
    }
}
