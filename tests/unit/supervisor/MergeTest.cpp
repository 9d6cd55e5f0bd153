#include <gtest/gtest.h>

#include "supervisor/Merge.h"
#include "supervisor/journal/Manifest.h"
#include "unit/supervisor/RunPlace.h"

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

TEST_F(MergeTest, FoldersThatThePlanCouldNotReadAreNotForgotten)
{
    SetVariable("FAKE_BLIND", "1");
    Plan({"a"});
    EXPECT_EQ(Shard(1, 1).exit, ExitClass::SomeNotSaved);
    EXPECT_EQ(Merge({Journal(1)}).exit, ExitClass::SomeNotSaved);
}

TEST_F(MergeTest, ShardsKeepToTheirOwnJournal)
{
    Plan({"a", "b"});
    EXPECT_EQ(Shard(1, 2).exit, ExitClass::Fine);
    std::filesystem::copy_file(Journal(1), Journal(2));
    EXPECT_NE(Shard(2, 2).message.find("belongs to shard 1/2"), std::string::npos);
    EXPECT_EQ(Shard(3, 2).exit, ExitClass::Broken);
    std::filesystem::remove(Journal(2));
    place.options.request.work = SequenceWork("one worker");
    Plan({});
    EXPECT_NE(Shard(2, 2).message.find("cannot be divided"), std::string::npos);
    EXPECT_NE(Shard(1, 1).message.find("another run"), std::string::npos);
}

}  // namespace
