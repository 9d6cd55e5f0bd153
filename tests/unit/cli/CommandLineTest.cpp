// From typed words to what is done: options, the description of a run, logs.
#include <filesystem>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "cli/Arguments.h"
#include "cli/CommandLine.h"
#include "cli/LogCommand.h"
#include "cli/RunArguments.h"
#include "platform/HeldFiles.h"
#include "support/TemporaryFolder.h"

namespace {

using cli::CArguments;
using Words = std::vector<std::string>;

struct Outcome {
    int code;
    std::string data, messages;
};

Outcome Ferrule(const Words& words, bool terminal = false, std::ios::iostate state = std::ios::goodbit)
{
    std::ostringstream data, messages;
    data.setstate(state);
    const cli::Screen screen{&data, &messages, false, false, {}, [] { return std::uint64_t{0}; }, terminal};
    const int code = cli::RunCommandLine(words, screen);
    return {code, data.str(), messages.str()};
}

CArguments Parsed(const char* command, const Words& words)
{
    auto parsed = cli::ParseArguments(*cli::FindCommand(command), words);
    if (!parsed.arguments) throw std::runtime_error(parsed.problem);
    return *parsed.arguments;
}

/// A folder with a sequence, two inputs and an output.
struct Place {
    CTemporaryFolder folder;
    std::string sequence = folder.Write("s.sequ", "");
    std::string one = folder.MakeFolder("one"), two = folder.MakeFolder("two"), out = folder.MakeFolder("out");

    RunDescription Request(Words words) const
    {
        words.insert(words.begin(), sequence);
        const cli::CArguments arguments = Parsed("run", words);
        return cli::ReadRequest(arguments, cli::ReadSequenceWork(arguments));
    }
    /// The exit code and message with which a request is refused.
    std::pair<int, std::string> Refusal(const Words& words) const
    {
        try {
            (void)Request(words);
            return {0, ""};
        } catch (const cli::CCommandError& error) {
            return {error.ExitCode(), error.what()};
        }
    }
};

}  // namespace

TEST(Arguments, OptionsAndOperandsMixInAnyOrderAndSpelling)
{
    for (const Words& words : {Words{"s.sequ", "--input", "a", "--jobs", "4", "--input", "b"},
                               {"-i", "a", "-j4", "s.sequ", "-i", "b"},
                               {"--input=a", "--jobs=9", "--input=b", "-j", "4", "--", "s.sequ"}}) {
        const CArguments arguments = Parsed("run", words);
        EXPECT_EQ(arguments.Operands(), Words{"s.sequ"}) << words[0];
        EXPECT_EQ(arguments.All("--input"), (Words{"a", "b"})) << words[0];
        EXPECT_EQ(arguments.Number("--jobs"), 4) << words[0];
    }
}

TEST(Arguments, NamesStayWhatTheyAre)
{
    for (const char* const name : {"[a,b].pdf", "{x}", "run", "a b", "\xFF.pdf", "%d", "#1", "\"q\"", "[a]"}) {
        const CArguments run = Parsed("run", {"--record", "-", "-i", name, name});
        EXPECT_EQ(run.All("--input"), Words{name});
        EXPECT_EQ(run.Operands(), Words{name});
        EXPECT_EQ(run.Text("--record"), "-");
        EXPECT_EQ(Parsed("merge", {"--manifest", "m", name, name}).Operands(), (Words{name, name}));
    }
    EXPECT_EQ(Parsed("run", {"--", "--x"}).Operands(), Words{"--x"});
    EXPECT_EQ(Parsed("run", {"--", "--help"}).Operands(), Words{"--help"});
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

TEST(CommandLine, UsageErrorsEndWithTwoAndSayWhereHelpIs)
{
    const struct {
        Words words;
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
                {{"run", "s", "--zzz"}, "there is no option \"--zzz\"\n"},
                {{"run", "s", "--jobs", "0"}, "1 to 512"},
                {{"run", "s", "--jobs", "2x"}, "2x"},
                {{"run", "s", "--memory", "lots"}, "512M"},
                {{"run", "s", "--final-action", "burn"}, "move-versions"},
                {{"run", "s", "--final-action", "9"}, "0 to 8"},
                {{"run", "s", "--input"}, "--input"},
                {{"run", "s", "--input", ""}, "empty"},
                {{"run", "s", "t"}, "expected: t"},
                {{"plan", "s"}, "--manifest"},
                {{"merge", "--manifest", "m"}, "JOURNAL"},
                {{"sequence", "new", "f", "--template", "x"}, "protect, save, text"},
                {{"sequence", "convert", "f"}, "TARGET"},
                {{"generate", "html"}, "man, bash, zsh, fish"}};
    for (const auto& row : rows) {
        const Outcome outcome = Ferrule(row.words);
        EXPECT_EQ(outcome.code, 2) << row.named;
        EXPECT_NE(outcome.messages.find(row.named), std::string::npos) << outcome.messages;
        EXPECT_NE(outcome.messages.find("--help\""), std::string::npos) << outcome.messages;
        EXPECT_EQ(outcome.data, "");
    }
    EXPECT_EQ(Ferrule({}).code, 2);
}

TEST(CommandLine, HelpAndVersionAreDataAndFullOutputIsNoSuccess)
{
    for (const Words& words : {Words{"--help"},
                               {"help"},
                               {"sequence", "--help"},
                               {"run", "--jobs", "x", "--help"},
                               {"sequence", "new", "-h"}}) {
        const Outcome outcome = Ferrule(words);
        EXPECT_EQ(outcome.code, 0) << words.back();
        EXPECT_EQ(outcome.data.substr(0, 14), "Usage: ferrule");
        EXPECT_EQ(outcome.messages, "");
    }
    EXPECT_EQ(Ferrule({"--version"}).data.substr(0, 8), "ferrule ");
    const Outcome full = Ferrule({"--version"}, false, std::ios::badbit);
    EXPECT_EQ(full.code, 1);
    EXPECT_NE(full.messages.find("standard output"), std::string::npos);
}

TEST(CommandLine, LogsAreShownAndClearedUnlessARunWritesThem)
{
    const CTemporaryFolder folder;
    const std::string path = folder.Write("log", "1: LOG STARTED\r\n");
    EXPECT_EQ(Ferrule({"log", "--log", path}).data, "1: LOG STARTED\r\n");
    EXPECT_EQ(Ferrule({"log", "--log", path, "--path"}).data, path + "\n");
    EXPECT_EQ(Ferrule({"log", "--log", folder.Write("steering", "1: \x1b[2J\n")}, true).data, "1: \\x1b[2J\n");
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

TEST(LogTail, FollowsALogThatIsMadeLaterSetAsideAndEmptied)
{
    const CTemporaryFolder folder;
    const std::string path = folder / "log", large = std::string(200'000, 'x') + "\n";
    cli::CLogTail tail(path);
    const auto added = [&](const std::string& text) {
        std::ofstream(path, std::ios::app | std::ios::binary) << text;
        std::string all;
        for (std::string piece = tail.Poll(); !piece.empty(); piece = tail.Poll()) all += piece;
        return all;
    };
    EXPECT_EQ(tail.Poll(), "");
    for (const std::string& text : {std::string("one\n"), std::string(), large}) EXPECT_EQ(added(text), text);
    std::ofstream(path, std::ios::app | std::ios::binary) << "last of the old\n";
    std::filesystem::rename(path, folder / "archive");
    EXPECT_EQ(tail.Poll(), "last of the old\n");
    EXPECT_EQ(added("new\n"), "new\n");
    folder.Write("log", "");
    EXPECT_EQ(added("x\n"), "x\n");
}

TEST(RunArguments, BecomeTheDescriptionOfTheRun)
{
    const Place place;
    const RunDescription request =
        place.Request({"-i", place.one + "/", "-i", place.two, "-o", place.out, "--final-action", "move-versions",
                       "--destination", place.two, "--ext", "pdf;jpg", "--no-subfolders", "--min-age", "60"});
    EXPECT_EQ(WorkFilePath(request.work, kSequenceWork), place.sequence);
    EXPECT_EQ(request.inputs, (Words{place.one, place.two}));
    EXPECT_EQ(request.outputFolder, place.out);
    EXPECT_EQ(request.finalAction, FinalAction::MoveVersions);
    EXPECT_EQ(request.destination, place.two);
    EXPECT_EQ(request.extensions, "pdf;jpg");
    EXPECT_TRUE(request.noSubfolders);
    EXPECT_EQ(request.minAgeSeconds, 60);

    const RunDescription usual = place.Request({});
    EXPECT_EQ(usual.extensions, "pdf");
    EXPECT_EQ(usual.finalAction, FinalAction::Nothing);
    EXPECT_TRUE(usual.inputs.empty() && usual.outputFolder.empty() && usual.destination.empty());
    EXPECT_FALSE(usual.noSubfolders || usual.skipUnavailable || usual.allowNoOutput || usual.allowInPlace);
    EXPECT_EQ(place.Request({"--ext", "ALL"}).extensions, "");
    const auto run = Parsed("run", {place.sequence, "--retry-failed", "--host", place.sequence, "--plugin", "p"});
    EXPECT_TRUE(cli::ReadRun(run, cli::ReadRequest(run, cli::ReadSequenceWork(run))).resume)
        << "what is retried is a run that was there";
}

TEST(RunArguments, PlacesAreThereAndFitTheFinalAction)
{
    const Place place;
    const struct {
        Words words;
        int exitCode;
        const char* named;
    } rows[] = {
        {{"--final-action", "move"}, 2, "--destination"},
        {{"--final-action", "rename"}, 2, "--destination"},
        {{"--final-action", "rename", "--destination", "a/b.pdf"}, 2, "without a folder"},
        {{"--final-action", "delete", "--destination", place.two}, 2, "leave it out"},
        {{"--destination", place.two}, 2, "leave it out"},
        {{"-i", place.one + "/no\x1bpe"}, 1, "no such file"},
        {{"-o", place.folder / "nope"}, 1, "no such file"},
    };
    for (const auto& row : rows) {
        const auto [exitCode, message] = place.Refusal(row.words);
        EXPECT_EQ(exitCode, row.exitCode) << row.named;
        EXPECT_NE(message.find(row.named), std::string::npos) << message;
    }
    EXPECT_EQ(place.Request({"--final-action", "rename", "--destination", "new.pdf"}).destination, "new.pdf");
    EXPECT_EQ(place.Request({"--final-action", "execute", "--destination", "true"}).destination, "true");
    EXPECT_EQ(place.Request({"--final-action", "5", "--destination", "./x"}).destination,
              (std::filesystem::current_path() / "x").string());
    if (!kHasLinks) return;  // nor are there names that the plug-in would cut
    const std::string blank = place.folder.MakeFolder("ends with blank ");
    EXPECT_EQ(place.Request({"-i", blank}).inputs.front(), blank + "/");
    const auto [exitCode, message] = place.Refusal({"-i", place.folder.Write("quote\"", "")});
    EXPECT_EQ(exitCode, 1);
    EXPECT_NE(message.find("rename"), std::string::npos);
}

TEST(RunArguments, PartsOfPlansAreCounted)
{
    const CTemporaryFolder folder;
    const std::string manifest = folder.Write("m", ""), program = folder.Write("host", "");
    const auto read = [&](const Words& more, bool journal = true) {
        Words words = {"--manifest", manifest, "--host", program, "--plugin", program};
        if (journal) words.insert(words.end(), {"--journal", folder / "j"});
        words.insert(words.end(), more.begin(), more.end());
        return cli::ReadShard(Parsed("run", words));
    };
    EXPECT_EQ(read({"--shard", "2/4"}).shard, 2);
    EXPECT_EQ(read({"--shard", "2/4"}).shards, 4);
    EXPECT_EQ(read({}).shards, 1);
    const EngineOptions endless = read({"--timeout", "0", "--memory", "0"}).engine;
    EXPECT_GT(endless.timeoutSeconds, 1'000'000);
    EXPECT_GT(endless.memoryBytes, std::uint64_t{1} << 50);
    EXPECT_EQ(read({"--memory", "200M"}).engine.memoryBytes, 209715200U);
    for (const char* const shard : {"0/4", "5/4", "1", "1/", "/4", "1/4x", "a/b", "-1/4", "1/4/4", "99999999999/4"})
        EXPECT_THROW(read({"--shard", shard}), cli::CCommandError) << shard;
    EXPECT_THROW(read({}, false), cli::CCommandError);
    // What the plan has said, a part of it cannot say otherwise.
    for (const Words& words : {Words{"s.sequ"},
                               {"-i", manifest},
                               {"-o", manifest},
                               {"--destination", manifest},
                               {"--ext", "pdf"},
                               {"--min-age", "1"},
                               {"--log", "l"},
                               {"--final-action", "delete"},
                               {"--dry-run"},
                               {"--no-subfolders"},
                               {"--skip-unavailable"},
                               {"--allow-no-output"},
                               {"--allow-in-place"},
                               {"--accept-damaged"},
                               {"--force"}})
        EXPECT_THROW(read(words), cli::CCommandError) << words.front();
}
