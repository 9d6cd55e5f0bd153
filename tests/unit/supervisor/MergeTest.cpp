#include "base/Text.h"
#include "supervisor/Manifest.h"
#include "unit/supervisor/RunPlace.h"

#include <gtest/gtest.h>

#include <fstream>
#include <regex>

namespace {

class MergeTest : public testing::Test {
protected:
    void Plan(const std::vector<const char*>& names)
    {
        for (const char* name : names) place.Input(name);
        const PlanOptions plan{
            .engine = place.options.engine, .request = place.options.request, .manifestPath = manifest};
        ASSERT_EQ(PlanRun(plan, place.notes).exit, ExitClass::Fine);
    }
    RunResult Shard(int shard, int shards)
    {
        CNotes notes;
        return RunShard({.engine = place.options.engine,
                         .manifestPath = manifest,
                         .shard = shard,
                         .shards = shards,
                         .journalPath = Journal(shard)},
                        notes);
    }
    std::string Journal(int shard) const { return place.folder / ("journal" + std::to_string(shard)); }
    RunResult Merge(std::vector<std::string> journals)
    {
        return MergeShards({.manifestPath = manifest,
                            .journalPaths = std::move(journals),
                            .recordPath = place.options.recordPath,
                            .logPath = place.options.logPath},
                           place.notes);
    }

    CRunPlace place;
    std::string manifest = place.folder / "manifest";
};

/// What differs between two runs of the same thing.
std::string Normalised(const std::string& text, const std::string& folder)
{
    std::string result = ReplaceAll(text, folder, "");
    result = ReplaceAll(result, ReplaceAll(folder, "\\", "\\\\"), "");  // as it stands in JSON
    result = std::regex_replace(result, std::regex("LOG STOPPED: at [0-9]+"), "LOG STOPPED");
    return std::regex_replace(result, std::regex("\"milliseconds\":[0-9]+"), "");
}

TEST_F(MergeTest, ShardsGiveTheLogAndRecordOfOneRun)
{
    const std::vector<const char*> names = {"a", "b group1", "c", "crash", "d group1", "e", "f", "g group2"};
    Plan(names);
    std::vector<std::string> journals;
    for (int shard = 3; shard >= 1; --shard) {
        EXPECT_NE(Shard(shard, 3).exit, ExitClass::Broken);
        journals.push_back(Journal(shard));
    }
    const RunResult merged = Merge(journals);
    EXPECT_EQ(merged.exit, ExitClass::SomeNotSaved) << merged.message;
    EXPECT_EQ(merged.Count(FileOutcomeClass::Failed), 1);
    CRunPlace whole;
    for (const char* name : names) whole.Input(name);
    EXPECT_EQ(whole.Run().exit, ExitClass::SomeNotSaved);
    EXPECT_EQ(Normalised(place.Text("log.txt"), place.folder.Path()),
              Normalised(whole.Text("log.txt"), whole.folder.Path()));
    EXPECT_EQ(Normalised(place.Text("record.jsonl"), place.folder.Path()),
              Normalised(whole.Text("record.jsonl"), whole.folder.Path()));
    EXPECT_EQ(place.Files("out"), whole.Files("out"));
}

TEST_F(MergeTest, DoingAShardAgainRepeatsNothing)
{
    Plan({"a", "b", "c"});
    EXPECT_EQ(Shard(1, 1).exit, ExitClass::Fine);
    const auto out = place.Files("out");
    EXPECT_EQ(Shard(1, 1).exit, ExitClass::Fine);
    EXPECT_EQ(place.Files("out"), out);
    EXPECT_EQ(Merge({Journal(1)}).exit, ExitClass::Fine);
}

TEST_F(MergeTest, NamesFilesWithoutOutcomeOrWithTwo)
{
    Plan({"a", "b", "c", "d"});
    EXPECT_EQ(Shard(1, 2).exit, ExitClass::Fine);
    EXPECT_EQ(Shard(2, 2).exit, ExitClass::Fine);
    const std::string second = FileBytes(Journal(2));

    const RunResult missing = Merge({Journal(2)});
    EXPECT_EQ(missing.exit, ExitClass::Broken);
    EXPECT_NE(missing.message.find("2 of 4 files have no outcome"), std::string::npos) << missing.message;
    EXPECT_NE(missing.message.find("2: " + place.folder / "in/b"), std::string::npos) << missing.message;
    EXPECT_EQ(place.Text("record.jsonl"), "<missing>");
    EXPECT_EQ(place.Text("log.txt"), "<missing>");

    EXPECT_NE(Merge({Journal(1), Journal(2), Journal(1)}).message.find("outcome already"), std::string::npos);
    place.folder.Write("empty", second.substr(0, second.find('\n') + 1));
    EXPECT_NE(Merge({Journal(2), place.folder / "empty"}).message.find("two journals of shard 2/2"),
              std::string::npos);
    EXPECT_NE(Merge({place.folder / "none"}).message.find("missing or empty"), std::string::npos);
    EXPECT_NE(Merge({place.folder / "in/a"}).message.find("missing or empty"), std::string::npos);
    EXPECT_EQ(Merge({Journal(1), Journal(2)}).exit, ExitClass::Fine);
}

TEST_F(MergeTest, ShardsKeepToTheirOwnJournal)
{
    Plan({"a", "b"});
    EXPECT_EQ(Shard(1, 2).exit, ExitClass::Fine);
    std::filesystem::copy_file(Journal(1), Journal(2));
    EXPECT_NE(Shard(2, 2).message.find("belongs to shard 1/2"), std::string::npos);
    EXPECT_EQ(Shard(3, 2).exit, ExitClass::Broken);
    std::filesystem::remove(Journal(2));
    place.Set("FERRULESEQU", "one worker");
    Plan({});
    EXPECT_NE(Shard(2, 2).message.find("cannot be divided"), std::string::npos);
    EXPECT_NE(Shard(1, 1).message.find("another run"), std::string::npos);
}

}  // namespace
