#include <filesystem>

#include <gtest/gtest.h>

#include "openhost/jobs/Jobs.h"
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
    void Begin(const std::string& path) { ledger.InputBegins({7, 9, ToDo::Whole, path}); }
    /// Puts the file in place as savers do.
    void Put(const std::string& file, const std::string& target)
    {
        if (ledger.Ask(Act::Put, file, target) == Answer::Go) fs::rename(file, target);
    }
    void Delete(const std::string& file)
    {
        if (ledger.Ask(Act::Delete, file, "") == Answer::Go) fs::remove(file);
    }
    FileRecord Done(FileOutcome outcome = FileOutcome::Saved)
    {
        return ledger.FileDone("/another/name", outcome, "told");
    }

    std::string Name(const std::string& path) const
    {
        return path.starts_with(folder.Path()) ? path.substr(folder.Path().size() + 1) : path;
    }
    static std::string Word(const std::string& hash) { return hash == kOne ? "one" : hash == kTwo ? "two" : hash; }
    /// Input with its content and size > outputs with their contents ! final action and what became of it.
    std::string Shown(const FileRecord& record) const
    {
        std::string text = Name(record.path) + ' ' + Word(record.sha256) + ' ' + std::to_string(record.size);
        for (const auto& output : record.outputs) text += " > " + Name(output.path) + ' ' + Word(output.sha256);
        if (const auto& action = record.finalAction)
            text += " ! " + std::string(action->act ? ActWord(*action->act) : "") + ' ' + Name(action->target) + ' ' +
                    std::string(FinalStateWord(action->state));
        return text + (record.signaturesBroken ? ", signatures broken" : "");
    }

    const CTemporaryFolder folder;
    CFakeSource source;
    std::uint64_t now = 100;
    CLedger ledger{source, [this] { return now; }};
};

}  // namespace

TEST_F(Ledger, RecordsInputOutputsAndFinalAction)
{
    const std::string input = folder.Write("in.pdf", "one"), moved = folder / "moved.pdf";
    Begin(input);
    now += 25;
    Put(folder.Write(".t", "two"), folder / "out.pdf");
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
    EXPECT_EQ(Shown(record), "in.pdf one 3 > out.pdf two ! move moved.pdf done");
    EXPECT_EQ(record.number, 7);
    EXPECT_EQ(record.message, "told");
    EXPECT_EQ(record.milliseconds, 25u);
}

TEST_F(Ledger, TellsCopiesFromResults)
{
    Begin(folder.Write("in.pdf", "one"));
    Put(folder.Write(".t", "two"), folder / "out.pdf");
    ledger.Copying(true);
    Put(folder.Write(".t", "one"), folder / "copy.pdf");
    ledger.Copying(false);
    const FileRecord record = Done();
    ASSERT_EQ(source.asked.size(), 2u);
    EXPECT_FALSE(source.asked[0].copy);
    EXPECT_TRUE(source.asked[1].copy);
    const auto read = FileRecordFrom(FileRecordJson(record));
    ASSERT_EQ(read->outputs.size(), 2u);
    EXPECT_FALSE(read->outputs[0].copy);
    EXPECT_TRUE(read->outputs[1].copy);
    EXPECT_TRUE(IntendedActFrom(IntendedActJson(source.asked[1]))->copy);
}

TEST_F(Ledger, TellsWhetherAnActHappenedByTheDisk)
{
    const std::string in = folder / "in", to = folder / "to";
    const struct {
        const char* what;
        Act act;
        std::function<void()> does;
        FileOutcome outcome;
        bool done;
    } rows[] = {
        {"moved", Act::Move, [&] { fs::rename(in, to); }, FileOutcome::Saved, true},
        {"not moved", Act::Move, [] {}, FileOutcome::Incomplete, false},
        {"copied, but the source stays", Act::Move, [&] { fs::copy_file(in, to); }, FileOutcome::Incomplete, false},
        {"deleted", Act::Delete, [&] { fs::remove(in); }, FileOutcome::Saved, true},
        {"deleted after a step failed", Act::Delete, [&] { fs::remove(in); }, FileOutcome::Incomplete, true},
        {"not deleted", Act::Delete, [] {}, FileOutcome::Incomplete, false},
        {"put", Act::Put, [&] { fs::rename(in, to); }, FileOutcome::Saved, true},
        {"put by copying", Act::Put, [&] { fs::copy_file(in, to); }, FileOutcome::Saved, true},
        {"not put", Act::Put, [] {}, FileOutcome::Incomplete, false},
        {"something else is there", Act::Put, [&] { folder.Write("to", "two"); }, FileOutcome::Incomplete, false},
        {"started", Act::Start, [] {}, FileOutcome::Saved, true},
        {"not started", Act::Start, [] {}, FileOutcome::Incomplete, false}};
    for (const auto& row : rows) {
        fs::remove(to);
        Begin(folder.Write("in", "one"));
        ledger.FinalActionBegins();
        ledger.Ask(row.act, in, row.act == Act::Delete ? "" : to);
        row.does();
        const auto record = Done(row.outcome);
        ASSERT_TRUE(record.finalAction) << row.what;
        EXPECT_EQ(record.finalAction->state == FinalActionRecord::State::Done, row.done) << row.what;
    }
}

TEST_F(Ledger, ListsOutputsThatCameToBeOnce)
{
    Begin(folder.Write("in", "one"));
    Put(folder.Write(".1", "first"), folder / "a");
    Put(folder.Write(".2", "two"), folder / "a");
    ledger.Ask(Act::Put, folder.Write(".3", "lost"), folder / "b");  // and then renaming fails
    source.answer = Answer::Refuse;
    ledger.Ask(Act::Put, folder.Write(".4", "no"), folder / "c");
    EXPECT_EQ(Shown(Done()), "in one 3 > a two");
}

TEST_F(Ledger, KeepsTheHashOfTheInputThatIsReplacedByItsOutput)
{
    const std::string input = folder.Write("in", "one");
    Begin(input);
    Put(folder.Write(".t", "two"), input);
    ledger.FinalActionBegins();
    Delete(input);
    EXPECT_EQ(source.asked.back().sha256, kTwo) << "what is deleted is the output by now";
    EXPECT_EQ(Shown(Done()), "in one 3 > in two ! delete  done");
}

TEST_F(Ledger, KnowsInputsThatNobodyAnnounced)
{
    const std::string in = folder.Write("in", "one"), other = folder.Write("other", "two"), link = folder / "link";
    Put(folder.Write(".t", "two"), in);  // in place
    const auto done = [&](const std::string& path) {
        const FileRecord record = ledger.FileDone(path, FileOutcome::Saved, "");
        return std::to_string(record.number) + ": " + Shown(record);
    };
    EXPECT_EQ(done(in), "1: in one 3 > in two");
    Delete(other);
    EXPECT_EQ(done(other).substr(0, 14), "2: other two 3");
    EXPECT_EQ(done(folder / "missing"), "3: missing  0");
    if (!kHasLinks) return;
    fs::create_symlink(in, link);
    Put(folder.Write(".t", "longer"), in);
    EXPECT_EQ(ledger.FileDone(link, FileOutcome::Saved, "").size, 3u) << "of the file that the link led to";
}

TEST_F(Ledger, AFinalActionThatNeverCameToAnActOrOnlyHalfWayFailedWhenTheFileSaysSo)
{
    for (const FileOutcome outcome : {FileOutcome::Saved, FileOutcome::Incomplete}) {
        Begin(folder.Write("in", "one"));
        ledger.FinalActionBegins();
        EXPECT_EQ(Shown(Done(outcome)), outcome == FileOutcome::Saved ? "in one 3" : "in one 3 !   failed");
    }
    Begin(folder / "in");
    ledger.FinalActionBegins();
    Put(folder.Write(".t", "one"), folder / "to");
    ledger.Ask(Act::Delete, folder / "in", "");
    EXPECT_EQ(Shown(Done(FileOutcome::Incomplete)), "in one 3 ! move to failed") << "one move in two halves";
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
    Delete(folder / "in");
    EXPECT_EQ(Shown(Done()), "in one 3 > /out/a  ! delete  done");
    source.pretends = false;
    EXPECT_EQ(ledger.Exists("x"), std::nullopt) << "the disk tells";
}

TEST_F(Ledger, ForgetsEachFileWithItsRecord)
{
    Begin(folder.Write("in", "one"));
    Put(folder.Write(".t", "two"), folder / "out");
    ledger.FinalActionBegins();
    ledger.SignaturesBroken();
    EXPECT_EQ(Shown(Done()), "in one 3 > out two, signatures broken");
    Begin(folder.Write("next", "two"));
    EXPECT_EQ(Shown(Done()), "next two 3");
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
    const auto former = StampOfRegularFile(path);
    fs::rename(path, other);
    hashes.Renamed(*former, other);
    EXPECT_EQ(hashes.Of(other), kTwo);
    const auto time = fs::last_write_time(other);
    folder.Write("b", "grown");
    fs::last_write_time(other, time);
    hashes.Renamed(*former, other);
    EXPECT_NE(hashes.Of(other), kTwo) << "the same file and time, another size";
    EXPECT_EQ(hashes.Of(path), "") << "nothing is there any more";
    EXPECT_EQ(hashes.Of(folder.Path()), "") << "a folder has no content";
}
