#include "supervisor/resume/ResumePoint.h"

#include "base/Sha256.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

const char* NameOf(Left left)
{
    switch (left) {
        case Left::Everything:
            return "everything";
        case Left::FinalAction:
            return "final action";
        case Left::Nothing:
            return "nothing";
        case Left::Unknowable:
            return "unknowable";
    }
    return "";
}

/// The hash of a file with this text.
std::string Hash(const std::string& text)
{
    CSha256 digest;
    digest.Add(text.data(), text.size());
    return digest.Digest();
}

using State = FinalActionRecord::State;

class ResumePointTest : public testing::Test {
protected:
    ResumePointTest() { file = {.number = 1, .path = Write("in", "input"), .size = 5}; }
    std::string Write(const std::string& name, const std::string& text) const { return folder.Write(name, text); }
    std::string At(const std::string& name) const { return folder / name; }
    bool IsThere(const std::string& name) const { return std::filesystem::exists(folder / name); }
    void Remove(const std::string& name) const { std::filesystem::remove(folder / name); }

    Intent Put(const std::string& name, const std::string& text) const
    {
        return {.number = 1, .act = Act::Put, .file = At("temporary"), .target = At(name), .sha256 = Hash(text)};
    }
    Intent Final(Act act, const std::string& name, const std::string& text = "input") const
    {
        return {.number = 1,
                .finalAction = true,
                .act = act,
                .file = file.path,
                .target = name.empty() ? "" : At(name),
                .sha256 = Hash(text)};
    }
    ResumePoint Decide(const std::vector<Intent>& intents, bool hasFinalAction = true, int outputs = 1) const
    {
        return FindResumePoint(file, intents, std::nullopt, {hasFinalAction, outputs, false});
    }
    std::string Left(const std::vector<Intent>& intents, bool hasFinalAction = true, int outputs = 1) const
    {
        return NameOf(Decide(intents, hasFinalAction, outputs).left);
    }

    CTemporaryFolder folder;
    PlannedFile file;
};

TEST_F(ResumePointTest, AResultIsThereOrIsMadeAgain)
{
    EXPECT_EQ(Left({}), "everything");
    EXPECT_EQ(Left({Put("out", "result")}), "everything");
    Write("out", "something else");
    EXPECT_EQ(Left({Put("out", "result")}), "everything");
    Write("out", "result");
    EXPECT_EQ(Left({Put("out", "result")}), "final action");
    EXPECT_EQ(Left({Put("out", "result")}, false), "nothing");
    EXPECT_EQ(Decide({Put("out", "result")}).record.outputs.at(0).path, At("out"));
    EXPECT_EQ(Decide({Put("out", "result")}).record.sha256, Hash("input"));
    // The first name was taken by another.
    Write("out", "another's");
    Write("out (1)", "result");
    EXPECT_EQ(Left({Put("out", "result"), Put("out (1)", "result")}), "final action");
}

TEST_F(ResumePointTest, OnResumeResultsAreMadeAgainWhereThatLeavesNoTrace)
{
    const ResumeRules rules{.hasFinalAction = true, .redoResults = true};
    Write("out", "result");
    const ResumePoint again = FindResumePoint(file, {Put("out", "result")}, std::nullopt, rules);
    EXPECT_STREQ(NameOf(again.left), "everything");
    EXPECT_EQ(again.takeBack, std::vector<std::string>{At("out")});
    Write("in", "result");
    EXPECT_STREQ(NameOf(FindResumePoint(file, {Put("in", "result")}, std::nullopt, rules).left), "final action");
    Intent start = Final(Act::Start, "program");
    start.finalAction = false;
    EXPECT_STREQ(NameOf(FindResumePoint(file, {start, Put("out", "result")}, std::nullopt, rules).left),
                 "final action");
}

TEST_F(ResumePointTest, AnUnchangedCopyIsNoResultThatCountsAsSaved)
{
    Write("out", "input");
    EXPECT_EQ(Decide({Put("out", "input")}).record.outcome, FileOutcome::CopiedUnchanged);
}

TEST_F(ResumePointTest, SavingInPlaceIsDoneWhenTheInputHoldsTheResult)
{
    EXPECT_EQ(Left({Put("in", "result")}), "everything");
    Write("in", "result");
    EXPECT_EQ(Left({Put("in", "result")}), "final action");
    EXPECT_EQ(Decide({Put("in", "result")}).record.outcome, FileOutcome::Saved);
    // What has been saved in place is not processed once more.
    EXPECT_EQ(Left({Put("in", "result"), Put("out", "second")}, true, 2), "unknowable");
}

TEST_F(ResumePointTest, ResultsOfAnUnfinishedFileAreTakenBackWhereTheNameWasFree)
{
    Write("out", "result");
    Write("other", "other result");
    Intent replaced = Put("other", "other result");
    replaced.replaces = true;
    const ResumePoint point = Decide({Put("out", "result"), replaced, Put("third", "x")}, true, 3);
    EXPECT_STREQ(NameOf(point.left), "everything");
    EXPECT_EQ(point.takeBack, std::vector<std::string>{At("out")});
    // Not even the last of them was the last one.
    EXPECT_EQ(Left({Put("out", "result")}, true, 2), "everything");
    EXPECT_EQ(Left({Put("out", "result"), Put("other", "other result")}, true, 2), "final action");
}

TEST_F(ResumePointTest, MovesAreCompletedOnlyWhenNothingCanGetLost)
{
    const Intent move = Final(Act::Move, "done");
    EXPECT_EQ(Left({move}), "final action");

    Write("done", "input");
    EXPECT_EQ(Left({move}), "nothing") << "the rest of a move across file systems";
    EXPECT_FALSE(IsThere("in"));
    EXPECT_EQ(Left({move}), "nothing");
    EXPECT_EQ(Decide({move}).record.finalAction->state, State::Done);

    Remove("done");
    EXPECT_EQ(Left({move}), "unknowable");
    EXPECT_EQ(Decide({move}).record.finalAction->state, State::Failed);

    Write("in", "input");
    Write("done", "somebody else's");
    EXPECT_EQ(Left({move}), "final action");
    EXPECT_TRUE(IsThere("in"));

    Write("done", "input");
    Write("in", "a new one");
    EXPECT_EQ(Left({move}), "unknowable");
    EXPECT_EQ(FileBytes(At("in")), "a new one");
}

TEST_F(ResumePointTest, AnEqualFileThatStoodThereBeforeIsNotTakenForTheMovedOne)
{
    Intent move = Final(Act::Move, "done");
    move.replaces = true;
    Write("done", "input");
    EXPECT_EQ(Left({move}), "final action");
    EXPECT_TRUE(IsThere("in"));
}

TEST_F(ResumePointTest, TheOnlyNameOfAFileIsNeverRemoved)
{
    std::error_code noLinks;  // not every system lets everybody make them
    std::filesystem::create_symlink(At("in"), At("link"), noLinks);
    if (!noLinks) {
        EXPECT_EQ(Left({Final(Act::Move, "link")}), "nothing");
        EXPECT_TRUE(IsThere("in"));
    }
    std::filesystem::create_hard_link(At("in"), At("second name"));
    EXPECT_EQ(Left({Final(Act::Move, "second name")}), "nothing");
    EXPECT_FALSE(IsThere("in"));
    EXPECT_EQ(FileBytes(At("second name")), "input");
}

TEST_F(ResumePointTest, OtherFinalActionsAreDoneOrLeft)
{
    EXPECT_EQ(Left({Final(Act::Delete, "")}), "final action");
    EXPECT_EQ(Left({Final(Act::Put, "copy")}), "final action");
    Write("copy", "input");
    EXPECT_EQ(Left({Final(Act::Put, "copy")}), "nothing");
    Remove("in");
    EXPECT_EQ(Left({Final(Act::Delete, "")}), "nothing");
    const ResumePoint started = Decide({Final(Act::Start, "program")});
    EXPECT_STREQ(NameOf(started.left), "unknowable");
    EXPECT_EQ(started.record.finalAction->state, State::Unknown);
    EXPECT_NE(started.record.outcome, FileOutcome::Saved);
}

TEST_F(ResumePointTest, TheFinalActionKeepsWhatWasWrittenBefore)
{
    Write("out", "result");
    const ResumePoint point = Decide({Put("out", "result"), Final(Act::Move, "done")});
    EXPECT_STREQ(NameOf(point.left), "final action");
    EXPECT_EQ(point.record.outputs.size(), 1u);
    // Saved in place, then moved away.
    Write("done", "result");
    Remove("in");
    const ResumePoint moved = Decide({Put("in", "result"), Final(Act::Move, "done", "result")});
    EXPECT_STREQ(NameOf(moved.left), "nothing");
    EXPECT_EQ(moved.record.outputs.size(), 1u);
}

TEST_F(ResumePointTest, AProgramThatAStepMayHaveStartedIsNotStartedAgain)
{
    Intent start = Final(Act::Start, "program");
    start.finalAction = false;
    EXPECT_EQ(Left({start}), "unknowable");
    EXPECT_EQ(Left({start, Put("out", "result")}), "unknowable");
    Write("out", "result");
    EXPECT_EQ(Left({start, Put("out", "result")}), "final action");
}

}  // namespace
