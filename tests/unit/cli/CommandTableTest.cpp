#include <map>
#include <set>
#include <sstream>

#include <gtest/gtest.h>

#include "base/Text.h"
#include "cli/Arguments.h"
#include "cli/CommandTable.h"
#include "cli/Generated.h"
#include "cli/Help.h"

namespace {

/// How often the word stands there, and not only as the beginning of a longer one.
int Occurrences(const std::string& text, const std::string& word)
{
    int count = 0;
    for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1)) {
        const std::size_t end = at + word.size();
        count += end == text.size() || (std::isalnum(static_cast<unsigned char>(text[end])) == 0 && text[end] != '-');
    }
    return count;
}

}  // namespace

TEST(CommandTable, EveryTextHasEachOptionOfEachCommandAndNoHiddenOne)
{
    std::map<std::string, int> commandsWith;
    for (const cli::CommandRow& command : cli::Commands()) {
        if (command.hidden) continue;
        for (const cli::OptionRow& option : command.options) {
            commandsWith[option.name] += !option.hidden;
            EXPECT_EQ(Occurrences(cli::CommandHelp(command, 80), option.name) > 0, !option.hidden) << option.name;
        }
    }
    EXPECT_GT(commandsWith.size(), 40u);
    const std::string texts[] = {ReplaceAll(cli::ManPage("1"), "\\-", "-"), cli::BashCompletion(),
                                 cli::ZshCompletion(), ReplaceAll(cli::FishCompletion(), " -l ", " --")};
    for (const std::string& text : texts)
        for (const auto& [name, commands] : commandsWith) {
            EXPECT_GE(Occurrences(text, name), commands) << name << " in " << text.substr(0, 40);
            EXPECT_EQ(Occurrences(text, name) > 0, commands > 0) << name << " in " << text.substr(0, 40);
        }
}

TEST(CommandTable, NamesAreUniqueAndHelpIsWholeAndFits)
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
        std::istringstream lines(cli::CommandHelp(command, 80));
        for (std::string line; std::getline(lines, line);)
            EXPECT_TRUE(line.size() <= 80 || line.starts_with("    ferrule") || line.starts_with("    grep")) << line;
    }
}

/// As a shell takes them: blanks between single quotation marks divide nothing.
std::vector<std::string> ShellWords(const std::string& line)
{
    std::vector<std::string> words(1);
    bool quoted = false;
    for (const char c : line) {
        if (c == '\'')
            quoted = !quoted;
        else if (c == ' ' && !quoted)
            words.emplace_back();
        else
            words.back() += c;
    }
    return words;
}

TEST(CommandTable, ExamplesAndFallbacksAreAccepted)
{
    int checked = 0;
    for (const cli::CommandRow& command : cli::Commands()) {
        for (const cli::Example& example : command.examples) {
            const std::string start = "ferrule " + command.name + " ";
            if (!example.command.starts_with(start)) continue;
            const std::string words = example.command.substr(start.size(), example.command.find(" |") - start.size());
            const auto parsed = cli::ParseArguments(command, ShellWords(words));
            EXPECT_TRUE(parsed.arguments) << example.command << ": " << parsed.problem;
            ++checked;
        }
        for (const cli::OptionRow& option : command.options) {
            if (option.fallback.empty()) continue;
            cli::CommandRow alone{.name = "x"};
            alone.options = {option};
            const auto parsed = cli::ParseArguments(alone, {option.name, option.fallback});
            EXPECT_TRUE(parsed.arguments) << command.name << option.name << parsed.problem;
        }
    }
    EXPECT_GT(checked, 10);
}
