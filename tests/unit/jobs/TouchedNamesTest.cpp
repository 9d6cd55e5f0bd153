#include "jobs/TouchedNames.h"

#include "base/PathNames.h"
#include "engine/SequencePlanning.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <algorithm>
#include <filesystem>

namespace {

TEST(ComparableBase, IsWithoutCaseNumbersAndExtension)
{
    const struct {
        const char* name;
        const char* base;
    } rows[] = {{"report.pdf", "report"},
                {"Report (2).PDF", "report"},
                {"report (1) (12).tif", "report"},
                {"report(1).pdf", "report(1)"},
                {"report ().pdf", "report ()"},
                {"report (1a).pdf", "report (1a)"},
                {"report (1) .pdf", "report (1) "},
                {"a.b (3).pdf", "a.b"},
                {" (1).pdf", ""},
                {"\xC3\x84rger.pdf", "\xC3\xA4rger"},
                {"(1).pdf", "(1)"},
                {"noextension (4)", "noextension"}};
    for (const auto& row : rows) EXPECT_EQ(ComparableBase(row.name), row.base) << row.name;
}

struct Setting {
    SequenceFacts facts;
    PlanRequest request;
};

StepFacts SaveStep(const char* before, const char* after, bool namesDestination = true)
{
    StepFacts step;
    step.handler = "WorkflowPlaybackSaveFiles";
    step.maker = StepMaker::Host;
    step.save = SaveStepFacts{namesDestination, std::nullopt, before, after, ""};
    return step;
}

/// A sequence that saves through its save step.
Setting Saving(const char* before = "", const char* after = "")
{
    Setting setting;
    setting.facts.hostMajor = 21;
    setting.facts.output.kind = kOutputNone;
    setting.facts.steps = {SaveStep(before, after)};
    return setting;
}

bool Collide(const Setting& setting, const std::string& one, const std::string& other)
{
    CTouchedNames names(FactsOfSequence(setting.facts, setting.request), setting.request.wanted);
    std::vector<std::uint64_t> ofOne, ofOther;
    names.AppendKeys(FolderOf(one), FileName(one), ofOne);
    names.AppendKeys(FolderOf(other), FileName(other), ofOther);
    return std::any_of(ofOne.begin(), ofOne.end(),
                       [&](auto key) { return std::find(ofOther.begin(), ofOther.end(), key) != ofOther.end(); });
}

class TouchedNames : public testing::Test {
protected:
    void SetUp() override
    {
        for (const char* name : {"a", "b", "out", "done"}) m_folder.MakeFolder(name);
    }
    std::string In(const char* path) const { return m_folder / path; }
    Setting WithFolder(Setting setting) const
    {
        setting.request.settings.alternativeOutputPath = In("out");
        return setting;
    }

    CTemporaryFolder m_folder;
};

TEST_F(TouchedNames, CollideWhereResultsInputsOrTargetsMeet)
{
    Setting rename = Saving();
    rename.request.wanted.finalAction = FinalAction::Rename;
    rename.request.wanted.destination = "Same.pdf";
    Setting moved = Saving();
    moved.request.wanted.finalAction = FinalAction::MoveVersions;
    moved.request.wanted.destination = In("done");
    Setting movedIntoInput = Saving();
    movedIntoInput.request.wanted.finalAction = FinalAction::MoveReplace;
    movedIntoInput.request.wanted.destination = In("b");
    Setting engine = Saving();
    engine.facts.steps.clear();
    engine.facts.output.kind = kOutputFolder;
    engine.facts.output.selectedFolder = In("out");
    engine.facts.output.insertAfter = "_x";
    Setting foreign = Saving();
    foreign.facts.steps.emplace_back().handler = "Maker:Split";
    Setting unavailable = WithFolder(Saving());
    unavailable.facts.steps[0].available = false;
    Setting old = WithFolder(Saving());
    old.facts.hostMajor = 10;

    const struct {
        const char* what;
        Setting setting;
        const char *one, *other;
        bool collide;
    } rows[] = {
        {"different names", WithFolder(Saving()), "a/x.pdf", "a/y.pdf", false},
        {"one output folder", WithFolder(Saving()), "a/x.pdf", "b/x.pdf", true},
        {"saved beside the inputs", Saving(), "a/x.pdf", "b/x.pdf", false},
        {"two types, one result", Saving(), "a/x.pdf", "a/x.tif", true},
        {"small and capital letters", WithFolder(Saving()), "a/X.pdf", "b/x.pdf", true},
        {"numbers of unique names", WithFolder(Saving()), "a/x (1).pdf", "b/x.pdf", true},
        {"an affix makes another input's name", Saving("", "_o"), "a/x.pdf", "a/x_o.pdf", true},
        {"the same, but elsewhere", WithFolder(Saving("", "_o")), "a/x.pdf", "a/x_o.pdf", false},
        {"the affix is followed by a number", Saving("", " (2)"), "a/x.pdf", "a/x (2).pdf", true},
        {"the engine's own folder", engine, "a/x.pdf", "b/x.pdf", true},
        {"the engine's own affix", engine, "a/x.pdf", "out/x_x.pdf", true},
        {"moved into one folder", moved, "a/x.pdf", "b/x.pdf", true},
        {"moved onto another input", movedIntoInput, "a/x.pdf", "b/x.pdf", true},
        {"renamed to one name", rename, "a/x.pdf", "a/y.pdf", true},
        {"renamed in two folders", rename, "a/x.pdf", "b/y.pdf", false},
        {"nobody knows where another maker's step saves", foreign, "a/x.pdf", "b/x.pdf", true},
        {"a step that is not available saves nothing", unavailable, "a/x.pdf", "b/x.pdf", false},
        {"an old host is not sent to another folder", old, "a/x.pdf", "b/x.pdf", false},
    };
    for (const auto& row : rows) EXPECT_EQ(Collide(row.setting, In(row.one), In(row.other)), row.collide) << row.what;
}

TEST_F(TouchedNames, OneFolderUnderTwoNamesIsOneFolder)
{
    if (kHasLinks) {
        std::filesystem::create_directory_symlink(In("a"), In("link"));
        EXPECT_TRUE(Collide(Saving(), In("a/x.pdf"), In("link/x.pdf")));
    }
    EXPECT_TRUE(Collide(Saving(), In("a/x.pdf"), In("b/../a/x.pdf")));
}

}  // namespace
