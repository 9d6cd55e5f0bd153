#include "cli/CommandLine.h"

#include <gtest/gtest.h>

#include <sstream>

#include "platform/LogFile.h"
#include "support/TemporaryFolder.h"

namespace {

struct Outcome {
    int code;
    std::string data, messages;
};

Outcome Ferrule(const std::vector<std::string>& words)
{
    std::ostringstream data, messages;
    const cli::Screen screen{&data, &messages, false, false, {}, [] { return std::uint64_t{0}; }};
    const int code = cli::RunCommandLine(words, screen);
    return {code, data.str(), messages.str()};
}

}  // namespace

TEST(CommandLine, UsageErrorsEndWithTwoAndSayWhereHelpIs)
{
    const struct {
        std::vector<std::string> words;
        const char* named;
    } rows[] = {{{"fly"}, "\"fly\""},
                {{"sequence"}, "show, check, new, convert"},
                {{"sequence", "fly"}, "\"fly\""},
                {{"--jobs", "2"}, "--jobs"},
                {{"run"}, "--manifest"},
                {{"run", "s", "--shard", "1/2"}, "--manifest"},
                {{"run", "s", "--json", "--record", "-"}, "--record"},
                {{"run", "s", "--destination", "x"}, "--destination"},
                {{"run", "--manifest", "m"}, "--journal"},
                {{"log", "--clear", "--path"}, "exclude"},
                {{"rum", "s"}, "did you mean \"run\"?"},
                {{"sequence", "chekc"}, "did you mean \"check\"?"},
                {{"run", "s", "--ouput=x"}, "there is no option \"--ouput\"; did you mean \"--output\"?"},
                {{"plan", "s", "--manifst", "m"}, "\"--manifest\"?"},
                {{"run", "s", "--final", "move"}, "\"--final-action\"?"},
                {{"run", "s", "-Output"}, "\"--output\"?"},
                {{"run", "s", "--zzz"}, "there is no option \"--zzz\"\n"}};
    for (const auto& row : rows) {
        const Outcome outcome = Ferrule(row.words);
        EXPECT_EQ(outcome.code, 2) << row.named;
        EXPECT_NE(outcome.messages.find(row.named), std::string::npos) << outcome.messages;
        EXPECT_NE(outcome.messages.find("--help\""), std::string::npos) << outcome.messages;
        EXPECT_EQ(outcome.data, "");
    }
    EXPECT_EQ(Ferrule({}).code, 2);
}

TEST(CommandLine, HelpAndVersionAreData)
{
    for (const std::vector<std::string>& words : {std::vector<std::string>{"--help"},
                                                  {"help"},
                                                  {"sequence", "--help"},
                                                  {"run", "--help"},
                                                  {"sequence", "new", "-h"}}) {
        const Outcome outcome = Ferrule(words);
        EXPECT_EQ(outcome.code, 0) << words.back();
        EXPECT_EQ(outcome.data.substr(0, 14), "Usage: ferrule");
        EXPECT_EQ(outcome.messages, "");
    }
    EXPECT_EQ(Ferrule({"--version"}).data.substr(0, 8), "ferrule ");
}

TEST(CommandLine, FullOutputIsNoSuccess)
{
    std::ostringstream data, messages;
    data.setstate(std::ios::badbit);
    const cli::Screen screen{&data, &messages, false, false, {}, {}};
    EXPECT_EQ(cli::RunCommandLine({"--version"}, screen), 1);
    EXPECT_NE(messages.str().find("standard output"), std::string::npos);
}

TEST(CommandLine, LogsAreShownAndClearedUnlessARunWritesThem)
{
    const CTemporaryFolder folder;
    const std::string path = folder.Write("log", "1: LOG STARTED\r\n");
    EXPECT_EQ(Ferrule({"log", "--log", path}).data, "1: LOG STARTED\r\n");
    EXPECT_EQ(Ferrule({"log", "--log", path, "--path"}).data, path + "\n");
    std::ostringstream data, messages;
    const cli::Screen terminal{&data, &messages, false, false, {}, {}, true};
    EXPECT_EQ(cli::RunCommandLine({"log", "--log", folder.Write("steering", "1: \x1b[2J\n")}, terminal), 0);
    EXPECT_EQ(data.str(), "1: \\x1b[2J\n");
    {
        platform::CLogFile writer;
        ASSERT_TRUE(writer.Open(path, true).Ok());
        const Outcome refused = Ferrule({"log", "--log", path, "--clear"});
        EXPECT_EQ(refused.code, 1);
        EXPECT_NE(refused.messages.find("a run is writing"), std::string::npos);
        EXPECT_EQ(FileBytes(path), "1: LOG STARTED\r\n");
    }
    EXPECT_EQ(Ferrule({"log", "--log", path, "--clear"}).code, 0);
    EXPECT_EQ(FileBytes(path), "");
    EXPECT_EQ(Ferrule({"log", "--log", folder / "none"}).code, 1);
}
