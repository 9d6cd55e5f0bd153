#include "cli/RunArguments.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "cli/CommandError.h"
#include "support/TemporaryFolder.h"

namespace {

cli::CArguments ParsedWords(const char* command, const std::vector<std::string>& words)
{
    auto parsed = cli::ParseArguments(*cli::FindCommand(command), words);
    EXPECT_TRUE(parsed.arguments) << parsed.problem;
    return *parsed.arguments;
}

/// A folder with a sequence, two inputs and an output.
struct Place {
    CTemporaryFolder folder;
    std::string sequence = folder.Write("s.sequ", "");
    std::string one = folder.MakeFolder("one"), two = folder.MakeFolder("two"), out = folder.MakeFolder("out");

    RunDescription Request(std::vector<std::string> words) const
    {
        words.insert(words.begin(), sequence);
        return cli::ReadRequest(ParsedWords("run", words));
    }
    /// The exit code and message with which a request is refused.
    std::pair<int, std::string> Refusal(const std::vector<std::string>& words) const
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

TEST(RunArguments, BecomeTheDescriptionOfTheRun)
{
    const Place place;
    const RunDescription request =
        place.Request({"-i", place.one + "/", "-i", place.two, "-o", place.out, "--final-action", "move-versions",
                       "--destination", place.two, "--ext", "pdf;jpg", "--no-subfolders", "--min-age", "60"});
    EXPECT_EQ(request.sequence, place.sequence);
    EXPECT_EQ(request.inputs, (std::vector<std::string>{place.one, place.two}));
    EXPECT_EQ(request.outputFolder, place.out);
    EXPECT_EQ(request.finalAction, FinalAction::MoveVersions);
    EXPECT_EQ(request.destination, place.two);
    EXPECT_EQ(request.extensions, "pdf;jpg");
    EXPECT_TRUE(request.noSubfolders);
    EXPECT_EQ(request.minAgeSeconds, 60);
}

TEST(RunArguments, WithoutOptionsOnlyPdfAndNothingElseIsSet)
{
    const Place place;
    const RunDescription request = place.Request({});
    EXPECT_EQ(request.extensions, "pdf");
    EXPECT_EQ(request.finalAction, FinalAction::Nothing);
    EXPECT_TRUE(request.inputs.empty() && request.outputFolder.empty() && request.destination.empty());
    EXPECT_FALSE(request.noSubfolders || request.skipUnavailable || request.allowNoOutput || request.allowInPlace);
    EXPECT_EQ(place.Request({"--ext", "ALL"}).extensions, "");
}

TEST(RunArguments, DestinationsFitTheirActions)
{
    const Place place;
    const struct {
        std::vector<std::string> words;
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
}

TEST(RunArguments, NamesThatThePlugInWouldCutAreKeptOrRefused)
{
    if (!kHasLinks) GTEST_SKIP() << "no such names here";
    const Place place;
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
    const auto read = [&](std::vector<std::string> more) {
        std::vector<std::string> words = {"--manifest", manifest, "--host", program, "--plugin", program};
        words.insert(words.end(), more.begin(), more.end());
        return cli::ReadShard(ParsedWords("run", words));
    };
    const ShardOptions options = read({"--journal", folder / "j", "--shard", "2/4"});
    EXPECT_EQ(options.shard, 2);
    EXPECT_EQ(options.shards, 4);
    EXPECT_EQ(read({"--journal", folder / "j"}).shards, 1);
    const EngineOptions endless = read({"--journal", folder / "j", "--timeout", "0", "--memory", "0"}).engine;
    EXPECT_GT(endless.timeoutSeconds, 1'000'000);
    EXPECT_GT(endless.memoryBytes, std::uint64_t{1} << 50);
    EXPECT_EQ(read({"--journal", folder / "j", "--memory", "200M"}).engine.memoryBytes, 209715200U);
    for (const char* const shard : {"0/4", "5/4", "1", "1/", "/4", "1/4x", "a/b", "-1/4", "1/4/4", "99999999999/4"})
        EXPECT_THROW(read({"--journal", folder / "j", "--shard", shard}), cli::CCommandError) << shard;
    EXPECT_THROW(read({}), cli::CCommandError);
    // What the plan has said, a part of it cannot say otherwise.
    std::vector<std::vector<std::string>> refused = {
        {"s.sequ"},       {"-i", manifest},   {"-o", manifest}, {"--destination", manifest},
        {"--ext", "pdf"}, {"--min-age", "1"}, {"--log", "l"},   {"--final-action", "delete"}};
    for (const char* const flag : {"--dry-run", "--no-subfolders", "--skip-unavailable", "--allow-no-output",
                                   "--allow-in-place", "--accept-damaged", "--force"})
        refused.push_back({flag});
    for (std::vector<std::string> words : refused) {
        words.insert(words.begin(), {"--journal", folder / "j"});
        EXPECT_THROW(read(words), cli::CCommandError) << words.back();
    }
}
