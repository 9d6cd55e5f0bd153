#include "openhost/jobs/Ledger.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "support/TemporaryFolder.h"

using namespace openhost;

namespace {

using Act = COverseer::Act;
using Answer = COverseer::Answer;
namespace fs = std::filesystem;

// SHA-256 of "one" and "two".
constexpr char kOne[] = "7692c3ad3540bb803c020b3aee66cd8887123234ea0c6e7143c0add73ff431ed";
constexpr char kTwo[] = "3fc4ccfe745870e2c0d99f71f30ff0656c8dedd41cc1d7d3d376b0dbe685e2f3";

class CFakeSource final : public CJobSource {
public:
    bool WantsRecords() const override { return records; }
    Answer MayAct(const IntendedAct& intended) override
    {
        asked.push_back(intended);
        return answer;
    }
    bool Pretends() override { return pretends; }
    std::optional<bool> Exists(const std::string&) override { return true; }

    bool records = true;
    bool pretends = false;
    Answer answer = Answer::Go;
    std::vector<IntendedAct> asked;
};

class Ledger : public testing::Test {
protected:
    void Begin(const std::string& path) { ledger.InputBegins({7, 9, false, path}); }
    /// Puts the file in place as savers do.
    void Put(const std::string& file, const std::string& target)
    {
        if (ledger.Ask(Act::Put, file, target) == Answer::Go) fs::rename(file, target);
    }
    FileRecord Done(int outcome = kJobFileSaved) { return ledger.FileDone(m_any, outcome, "told"); }

    const CTemporaryFolder folder;
    CFakeSource source;
    std::uint64_t now = 100;
    CLedger ledger{source, [this] { return now; }};

private:
    std::string m_any = "/another/name";
};

}  // namespace

TEST_F(Ledger, RecordsInputOutputsAndFinalAction)
{
    const std::string input = folder.Write("in.pdf", "one"), moved = folder / "moved.pdf", out = folder / "out.pdf";
    Begin(input);
    now += 25;
    Put(folder.Write(".t", "two"), out);
    ledger.FinalActionBegins();
    EXPECT_EQ(ledger.Ask(Act::Move, input, moved), Answer::Go);
    fs::rename(input, moved);
    const FileRecord record = Done();

    ASSERT_EQ(source.asked.size(), 2u);
    EXPECT_EQ(source.asked[0].number, 7);
    EXPECT_FALSE(source.asked[0].finalAction);
    EXPECT_EQ(source.asked[0].sha256, kTwo);
    EXPECT_TRUE(source.asked[1].finalAction);
    EXPECT_EQ(source.asked[1].sha256, kOne);
    EXPECT_EQ(record.number, 7);
    EXPECT_EQ(record.path, input);
    EXPECT_EQ(record.size, 3u);
    EXPECT_EQ(record.sha256, kOne);
    EXPECT_EQ(record.message, "told");
    EXPECT_EQ(record.milliseconds, 25u);
    ASSERT_EQ(record.outputs.size(), 1u);
    EXPECT_EQ(record.outputs[0].path, out);
    EXPECT_EQ(record.outputs[0].sha256, kTwo);
    ASSERT_TRUE(record.finalAction);
    EXPECT_EQ(record.finalAction->act, "move");
    EXPECT_EQ(record.finalAction->target, moved);
    EXPECT_TRUE(record.finalAction->done);
    EXPECT_FALSE(record.signaturesBroken);
}

TEST_F(Ledger, TellsWhetherAnActHappenedByTheDisk)
{
    const std::string in = folder / "in", to = folder / "to";
    const struct {
        const char* what;
        Act act;
        std::function<void()> does;
        int outcome;
        bool done;
    } rows[] = {
        {"moved", Act::Move, [&] { fs::rename(in, to); }, kJobFileSaved, true},
        {"not moved", Act::Move, [] {}, kJobFileIncomplete, false},
        {"copied, but the source stays", Act::Move, [&] { fs::copy_file(in, to); }, kJobFileIncomplete, false},
        {"deleted", Act::Delete, [&] { fs::remove(in); }, kJobFileSaved, true},
        {"deleted after a step failed", Act::Delete, [&] { fs::remove(in); }, kJobFileIncomplete, true},
        {"not deleted", Act::Delete, [] {}, kJobFileIncomplete, false},
        {"put", Act::Put, [&] { fs::rename(in, to); }, kJobFileSaved, true},
        {"put by copying", Act::Put, [&] { fs::copy_file(in, to); }, kJobFileSaved, true},
        {"not put", Act::Put, [] {}, kJobFileIncomplete, false},
        {"something else is there", Act::Put, [&] { folder.Write("to", "two"); }, kJobFileIncomplete, false},
        {"started", Act::Start, [] {}, kJobFileSaved, true},
        {"not started", Act::Start, [] {}, kJobFileIncomplete, false},
    };
    for (const auto& row : rows) {
        fs::remove(to);
        Begin(folder.Write("in", "one"));
        ledger.FinalActionBegins();
        ledger.Ask(row.act, in, row.act == Act::Delete ? "" : to);
        row.does();
        const auto record = Done(row.outcome);
        ASSERT_TRUE(record.finalAction) << row.what;
        EXPECT_EQ(record.finalAction->done, row.done) << row.what;
    }
}

TEST_F(Ledger, ListsOutputsThatCameToBeOnce)
{
    const std::string a = folder / "a", b = folder / "b";
    Begin(folder.Write("in", "one"));
    Put(folder.Write(".1", "first"), a);
    Put(folder.Write(".2", "two"), a);
    ledger.Ask(Act::Put, folder.Write(".3", "lost"), b);  // and then renaming fails
    source.answer = Answer::Refuse;
    ledger.Ask(Act::Put, folder.Write(".4", "no"), folder / "c");
    const auto record = Done();
    ASSERT_EQ(record.outputs.size(), 1u);
    EXPECT_EQ(record.outputs[0].path, a);
    EXPECT_EQ(record.outputs[0].sha256, kTwo);
    EXPECT_FALSE(record.finalAction);
}

TEST_F(Ledger, KeepsTheHashOfTheInputThatIsReplacedByItsOutput)
{
    const std::string input = folder.Write("in", "one");
    Begin(input);
    Put(folder.Write(".t", "two"), input);
    ledger.FinalActionBegins();
    ledger.Ask(Act::Delete, input, "");
    fs::remove(input);
    const auto record = Done();
    EXPECT_EQ(record.sha256, kOne);
    EXPECT_EQ(source.asked.back().sha256, kTwo) << "what is deleted is the output by now";
    ASSERT_EQ(record.outputs.size(), 1u);
    EXPECT_EQ(record.outputs[0].path, input);
}

TEST_F(Ledger, KnowsInputsThatNobodyAnnounced)
{
    const std::string in = folder.Write("in", "one"), other = folder.Write("other", "two");
    Put(folder.Write(".t", "new content"), in);  // in place
    auto record = ledger.FileDone(in, kJobFileSaved, "");
    EXPECT_EQ(record.number, 1);
    EXPECT_EQ(record.path, in);
    EXPECT_EQ(record.sha256, kOne);
    EXPECT_EQ(record.size, 3u);

    ledger.Ask(Act::Delete, other, "");
    fs::remove(other);
    record = ledger.FileDone(other, kJobFileSaved, "");
    EXPECT_EQ(record.number, 2);
    EXPECT_EQ(record.sha256, kTwo);

    record = ledger.FileDone(folder / "missing", kJobFileFailed, "");
    EXPECT_EQ(record.sha256, "");
    EXPECT_EQ(record.size, 0u);
}

TEST_F(Ledger, AFinalActionThatNeverCameToAnActFailedOnlyWhenTheFileSaysSo)
{
    Begin(folder.Write("in", "one"));
    ledger.FinalActionBegins();
    EXPECT_FALSE(Done(kJobFileSaved).finalAction) << "there was none to do";
    Begin(folder / "in");
    ledger.FinalActionBegins();
    const auto record = Done(kJobFileIncomplete);
    ASSERT_TRUE(record.finalAction);
    EXPECT_FALSE(record.finalAction->done);
}

TEST_F(Ledger, AMoveInTwoHalvesIsOneMove)
{
    const std::string in = folder.Write("in", "one"), to = folder / "to";
    Begin(in);
    ledger.FinalActionBegins();
    Put(folder.Write(".t", "one"), to);
    ledger.Ask(Act::Delete, in, "");
    auto record = Done(kJobFileIncomplete);  // the second half failed
    ASSERT_TRUE(record.finalAction);
    EXPECT_EQ(record.finalAction->act, "move");
    EXPECT_EQ(record.finalAction->target, to);
    EXPECT_FALSE(record.finalAction->done);
}

TEST_F(Ledger, TrialsAreRecordedAsIfTheyHadHappened)
{
    source.pretends = true;
    source.answer = Answer::Pretend;
    Begin(folder.Write("in", "one"));
    EXPECT_TRUE(ledger.Pretends());
    EXPECT_EQ(ledger.Exists("x"), true);
    ledger.Ask(Act::Put, "", "/out/a");
    ledger.FinalActionBegins();
    ledger.Ask(Act::Delete, folder / "in", "");
    const auto record = Done();
    ASSERT_EQ(record.outputs.size(), 1u);
    EXPECT_EQ(record.outputs[0].sha256, "");
    ASSERT_TRUE(record.finalAction);
    EXPECT_TRUE(record.finalAction->done);
    source.pretends = false;
    EXPECT_EQ(ledger.Exists("x"), std::nullopt) << "the disk tells";
}

TEST_F(Ledger, ForgetsEachFileWithItsRecord)
{
    Begin(folder.Write("in", "one"));
    Put(folder.Write(".t", "two"), folder / "out");
    ledger.FinalActionBegins();
    ledger.SignaturesBroken();
    EXPECT_TRUE(Done().signaturesBroken);
    Begin(folder.Write("next", "two"));
    const auto record = Done();
    EXPECT_TRUE(record.outputs.empty());
    EXPECT_FALSE(record.finalAction);
    EXPECT_FALSE(record.signaturesBroken);
    EXPECT_EQ(record.sha256, kTwo);
}

TEST(ContentHashes, NoticeEveryChange)
{
    const CTemporaryFolder folder;
    CContentHashes hashes;
    const std::string path = folder.Write("a", "one"), other = folder / "b";
    EXPECT_EQ(hashes.Of(path), kOne);
    folder.Write("new", "two");
    fs::rename(folder / "new", path);  // same name and size, another file
    EXPECT_EQ(hashes.Of(path), kTwo);
    const auto former = IdentityOf(path);
    fs::rename(path, other);
    hashes.Renamed(*former, other);
    EXPECT_EQ(hashes.Of(other), kTwo);
    EXPECT_EQ(hashes.Of(path), "") << "nothing is there any more";
    EXPECT_EQ(hashes.Of(folder.Path()), "") << "a folder has no content";
}
