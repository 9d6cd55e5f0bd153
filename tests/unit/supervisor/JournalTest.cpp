#include <filesystem>

#include <gtest/gtest.h>

#include "supervisor/journal/Journal.h"
#include "supervisor/journal/JournalIndex.h"
#include "supervisor/journal/Manifest.h"
#include "support/TemporaryFolder.h"

namespace {

constexpr int kTotal = 3;

DoneFile Done(int number, FileOutcome outcome = FileOutcome::Saved)
{
    DoneFile done;
    done.record.number = number;
    done.record.path = "/in/\xFF" + std::to_string(number);
    done.record.outcome = outcome;
    done.record.outputs = {{"/out/\xFE", "abc"}};
    done.log = {"begins", "pre\xFFlight", "ends"};
    done.preflightBegin = 1;
    done.preflightEnd = 2;
    return done;
}

struct Journal {
    CTemporaryFolder folder;
    std::string path = folder / "journal";
    std::vector<std::uint64_t> ends;  // lengths after each line, header first

    Journal()
    {
        CJournalWriter writer;
        std::uint64_t offset = 0;
        const auto added = [&](const platform::FileResult& result) {
            EXPECT_TRUE(result);
            ends.push_back(std::filesystem::file_size(path));
        };
        added(writer.Open(path, {"run1", "1/1"}, 0));
        added(writer.AddIntent({.number = 1, .act = Act::Put, .file = "t", .target = "/out/\xFE", .sha256 = "abc"}));
        added(writer.AddDone(Done(1), &offset));
        added(writer.AddIntent(
            {.number = 2, .finalAction = true, .act = Act::Move, .file = "f", .target = "/g/h", .replaces = true}));
        added(writer.AddDone(Done(3, FileOutcome::Failed), &offset));
    }
};

TEST(Journal, CutAtAnyByteCountsUpToItsLastCompleteLineAndGoesOnThere)
{
    const Journal journal;
    const std::string bytes = FileBytes(journal.path);
    for (std::size_t length = 0; length <= bytes.size(); ++length) {
        const std::string path = journal.folder.Write("cut", bytes.substr(0, length));
        std::size_t lines = 0;
        while (lines < journal.ends.size() && journal.ends[lines] <= length) ++lines;
        CDoneIndex done(kTotal);
        CJournalIndex index(done);
        const auto content = ReadJournal(path, "run1", index);
        ASSERT_TRUE(content) << length << ": " << content.Error();
        EXPECT_EQ(content->length, lines == 0 ? 0 : journal.ends[lines - 1]) << length;
        EXPECT_EQ(content->name.has_value(), lines > 0) << length;
        EXPECT_EQ(done.IsDone(1), lines >= 3) << length;
        EXPECT_EQ(done.IsDone(3), lines >= 5) << length;
        EXPECT_EQ(index.Open().count(1), lines == 2 ? 1u : 0u) << length;
        EXPECT_EQ(index.Open().count(2), lines >= 4 ? 1u : 0u) << length;

        CJournalWriter writer;
        std::uint64_t offset = 0;
        ASSERT_TRUE(writer.Open(path, {"run1", "1/1"}, content->length));
        ASSERT_TRUE(writer.AddDone(Done(2), &offset));
        CDoneIndex again(kTotal);
        CJournalIndex indexAgain(again);
        ASSERT_TRUE(ReadJournal(path, "run1", indexAgain)) << length;
        EXPECT_TRUE(again.IsDone(2)) << length;
        EXPECT_EQ(again.IsDone(1), lines >= 3) << length;
    }
}

TEST(Journal, GivesOutcomesBackByteForByte)
{
    const Journal journal;
    CDoneIndex done(kTotal);
    CJournalIndex index(done);
    ASSERT_TRUE(ReadJournal(journal.path, "run1", index));
    CJournalReader reader;
    ASSERT_TRUE(reader.Open(journal.path));
    const auto read = reader.DoneAt(done.At(3).offset);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->log, Done(3).log);
    EXPECT_EQ(read->record.path,
              "/in/\xFF"
              "3");
    EXPECT_EQ(read->record.outputs.at(0).path, "/out/\xFE");
    EXPECT_EQ(read->preflightEnd, 2u);
    EXPECT_EQ(index.Open().at(2).intents.at(0).target, "/g/h");
    EXPECT_TRUE(index.Open().at(2).intents.at(0).replaces);
    EXPECT_FALSE(reader.DoneAt(1));
}

TEST(Journal, NamesTheLineThatIsNoGood)
{
    const std::string header = R"({"ferrule":"journal","version":2,"run":"run1","shard":"1/1"})";
    const std::string one = R"({"done":{"record":{"number":1,"path":"/p","outcome":"saved"},"log":[]}})";
    const std::string four = R"({"done":{"record":{"number":4,"path":"/p","outcome":"saved"},"log":[]}})";
    const struct {
        std::string text;
        const char* problem;
    } rows[] = {{"nonsense\n", "is no journal"},
                {R"({"ferrule":"journal","version":2,"run":"run2","shard":"1/1"})"
                 "\n",
                 "another run"},
                {R"({"ferrule":"journal","version":1,"run":"run1","shard":"1/1"})"
                 "\n",
                 "older version"},
                {R"({"ferrule":"journal","version":3,"run":"run1","shard":"1/1"})"
                 "\n",
                 "newer version"},
                {header + "\n" + one + "\n{]\n" + one + "\n", "Line 3"},
                {header + "\n" + one + "\n" + one + "\n", "file 1 (/p) has an outcome already"},
                {header + "\n" + four + "\n", "Line 2"},
                {header + "\n{\"intent\":{\"number\":9,\"act\":\"put\"}}\n", "no file 9"},
                {header + "\n{\"something\":1}\n", "Line 2"},
                {header + "\n" + R"({"again":{"number":0}})" + "\n", "no file 0"}};
    for (const auto& row : rows) {
        const CTemporaryFolder folder;
        CDoneIndex done(kTotal);
        CJournalIndex index(done);
        const auto content = ReadJournal(folder.Write("journal", row.text), "run1", index);
        ASSERT_FALSE(content) << row.text;
        EXPECT_NE(content.Error().find(row.problem), std::string::npos) << content.Error();
    }
}

TEST(Journal, KnowsWhatIsLoggedAndWhatIsBegunAgain)
{
    const CTemporaryFolder folder;
    const std::string path = folder / "journal";
    CJournalWriter writer;
    std::uint64_t offset = 0;
    ASSERT_TRUE(writer.Open(path, {"run1", "1/1"}, 0));
    ASSERT_TRUE(writer.AddIntent({.number = 3, .act = Act::Put, .target = "/o/p"}));
    ASSERT_TRUE(writer.AddDone(Done(3, FileOutcome::Stopped), &offset));
    ASSERT_TRUE(writer.AddEnd("stopped", {"the end"}));
    ASSERT_TRUE(writer.AddDone(Done(1, FileOutcome::Failed), &offset));
    {
        CDoneIndex done(kTotal);
        CJournalIndex index(done);
        ASSERT_TRUE(ReadJournal(path, "run1", index));
        index.Complete();
        EXPECT_TRUE(done.At(3).logged);
        EXPECT_TRUE(done.At(1).logged) << "nothing before it is missing";
        EXPECT_EQ(index.Open().count(3), 1u) << "what was begun with a stopped file still counts";
        EXPECT_TRUE(index.HasTarget("/o/p"));
        EXPECT_EQ(index.Ending(), "");
    }
    ASSERT_TRUE(writer.AddAgain(1, ToDo::FinalAction));
    std::uint64_t again = 0;
    ASSERT_TRUE(writer.AddDone(Done(3), &again));
    CDoneIndex done(kTotal);
    CJournalIndex index(done);
    ASSERT_TRUE(ReadJournal(path, "run1", index));
    index.Complete();
    EXPECT_FALSE(done.IsDone(1));
    EXPECT_FALSE(done.At(3).logged) << "what was logged of it is the earlier time";
    EXPECT_EQ(done.At(3).offset, again);
    EXPECT_EQ(index.Open().at(1).resultsOffset, offset);
}

const RunDescription kEverything = {.work = SequenceWork("/s"),
                                    .inputs = {"/i", "/j"},
                                    .outputFolder = "/o",
                                    .finalAction = FinalAction::MoveVersions,
                                    .destination = "/d",
                                    .extensions = "pdf",
                                    .noSubfolders = true,
                                    .minAgeSeconds = 7,
                                    .skipUnavailable = true,
                                    .allowNoOutput = true,
                                    .allowInPlace = true,
                                    .acceptDamaged = true,
                                    .sparesRepaired = true,
                                    .force = true};

TEST(Manifest, RefusesWhatIsIncompleteOrOutOfOrder)
{
    const CTemporaryFolder folder;
    const std::string path = folder / "manifest";
    {
        CManifestWriter writer(path);
        for (int number = 1; number <= kTotal; ++number)
            writer.Add({.number = number,
                        .path = "/in/\xFF" + std::to_string(number),
                        .size = 5,
                        .modifiedNanoseconds = 17});
        EXPECT_FALSE(std::filesystem::exists(path)) << "it appears complete or not at all";
        ASSERT_TRUE(writer.Finish({.order = {.run = "run1", .dryRun = false, .description = kEverything},
                                   .total = kTotal,
                                   .preamble = {"\xFE"}}));
    }
    EXPECT_EQ(folder.EntryCount(), 1u);
    CManifestReader reader;
    const auto header = reader.Open(path);
    ASSERT_TRUE(header);
    EXPECT_EQ(header->preamble, std::vector<std::string>{"\xFE"});
    EXPECT_EQ(LineOf(RunOrderJson(header->order)),
              R"({"kind":"run","version":3,"run":"run1","dryRun":false,"description":{)"
              R"("work":{"kind":"sequence","files":{"sequence":"/s"}},"output":"/o",)"
              R"("destination":"/d","extensions":"pdf","inputs":["/i","/j"],"finalAction":"move-versions",)"
              R"("noSubfolders":true,"skipUnavailable":true,"allowNoOutput":true,"allowInPlace":true,)"
              R"("acceptDamaged":true,"sparesRepaired":true,"force":true,"minAge":7}})");
    EXPECT_EQ(reader.Next()->path,
              "/in/\xFF"
              "1");
    std::string bytes = FileBytes(path);
    const std::size_t second = bytes.find("{\"number\":2");
    const struct {
        std::string text;
        const char* problem;
    } rows[] = {{bytes.substr(0, bytes.size() - 1), "ends before file 3"},
                {bytes.substr(0, second), "ends before file 2"},
                {bytes.substr(0, second) + bytes.substr(second), ""},
                {bytes.substr(0, second) + "{}\n" + bytes.substr(second), "Line 3"},
                {bytes.substr(0, second) + bytes.substr(bytes.find("{\"number\":3")), "Line 3"}};
    for (const auto& row : rows) {
        ASSERT_TRUE(reader.Open(folder.Write("other", row.text)));
        CManifestReader other;
        ASSERT_TRUE(other.Open(folder / "other"));
        while (other.Next()) {
        }
        EXPECT_NE(other.Problem().find(row.problem), std::string::npos) << other.Problem();
        EXPECT_EQ(other.Problem().empty(), row.problem[0] == 0);
    }
}

}  // namespace
