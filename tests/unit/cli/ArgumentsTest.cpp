#include "cli/Arguments.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using cli::CArguments;

CArguments Parsed(const char* command, const std::vector<std::string>& words)
{
    auto parsed = cli::ParseArguments(*cli::FindCommand(command), words);
    if (!parsed.arguments) throw std::runtime_error(parsed.problem);
    return *parsed.arguments;
}

std::string Problem(const char* command, const std::vector<std::string>& words)
{
    const auto parsed = cli::ParseArguments(*cli::FindCommand(command), words);
    return parsed.arguments ? "none" : parsed.problem;
}

}  // namespace

TEST(Arguments, OptionsAndOperandsMixInAnyOrderAndSpelling)
{
    const std::vector<std::string> spellings[] = {
        {"s.sequ", "--input", "a", "--jobs", "4", "--input", "b"},
        {"-i", "a", "-j4", "s.sequ", "-i", "b"},
        {"--input=a", "--jobs=9", "--input=b", "-j", "4", "--", "s.sequ"},
    };
    for (const auto& words : spellings) {
        const CArguments arguments = Parsed("run", words);
        EXPECT_EQ(arguments.Operands(), std::vector<std::string>{"s.sequ"}) << words[0];
        EXPECT_EQ(arguments.All("--input"), (std::vector<std::string>{"a", "b"})) << words[0];
        EXPECT_EQ(arguments.Number("--jobs"), 4) << words[0];
    }
}

TEST(Arguments, NamesStayWhatTheyAre)
{
    for (const char* const name : {"[a,b].pdf", "{x}", "run", "a b", "\xFF.pdf", "%d", "#1", "\"q\"", "[a]"}) {
        const CArguments run = Parsed("run", {"--record", "-", "-i", name, name});
        EXPECT_EQ(run.All("--input"), std::vector<std::string>{name});
        EXPECT_EQ(run.Operands(), std::vector<std::string>{name});
        EXPECT_EQ(run.Text("--record"), "-");
        const CArguments merge = Parsed("merge", {"--manifest", "m", name, name});
        EXPECT_EQ(merge.Operands(), (std::vector<std::string>{name, name}));
    }
    EXPECT_EQ(Parsed("run", {"--", "--x"}).Operands(), std::vector<std::string>{"--x"});
}

TEST(Arguments, MistakesAreNamed)
{
    const struct {
        const char* command;
        std::vector<std::string> words;
        const char* named;
    } rows[] = {
        {"run", {"s", "--jobs", "0"}, "1 to 512"},
        {"run", {"s", "--jobs", "2x"}, "2x"},
        {"run", {"s", "--memory", "lots"}, "512M"},
        {"run", {"s", "--final-action", "burn"}, "move-versions"},
        {"run", {"s", "--final-action", "9"}, "0 to 8"},
        {"run", {"s", "--input"}, "--input"},
        {"run", {"s", "--input", ""}, "empty"},
        {"run", {"s", "t"}, "t"},
        {"run", {"s", "--shrd", "1/2"}, "--shrd"},
        {"plan", {"s"}, "--manifest"},
        {"merge", {"--manifest", "m"}, "JOURNAL"},
        {"sequence new", {"f", "--template", "x"}, "protect, save, text"},
        {"sequence convert", {"f"}, "TARGET"},
        {"generate", {"html"}, "man, bash, zsh, fish"},
    };
    for (const auto& row : rows)
        EXPECT_NE(Problem(row.command, row.words).find(row.named), std::string::npos)
            << row.command << " " << row.words.back() << ": " << Problem(row.command, row.words);
}

TEST(Arguments, HelpGoesBeforeMistakes)
{
    EXPECT_TRUE(cli::ParseArguments(*cli::FindCommand("run"), {"--jobs", "x", "--help"}).helpWanted);
    EXPECT_FALSE(cli::ParseArguments(*cli::FindCommand("run"), {"--", "--help"}).helpWanted);
}

TEST(Arguments, SizesHaveUnits)
{
    const struct {
        const char* text;
        std::uint64_t bytes;
    } rows[] = {{"0", 0},          {"1048576", 1048576},  {"512K", 524288},
                {"64m", 67108864}, {"2GiB", 2147483648U}, {"1.5g", 1610612736},
                {"3MB", 3145728}};
    for (const auto& row : rows) EXPECT_EQ(cli::ParseSize(row.text), row.bytes) << row.text;
    for (const char* const text : {"", "G", "-1", "2T", "1e400", "nan", "inf", "2 G", "2Gx", "99999999999G"})
        EXPECT_FALSE(cli::ParseSize(text)) << text;
}
