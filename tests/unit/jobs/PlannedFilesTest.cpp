// The files of a run: which are planned, what names they touch, and which of them must not meet.
#include <algorithm>
#include <chrono>
#include <filesystem>

#include <gtest/gtest.h>

#include "base/Names.h"
#include "engine/SequencePlanning.h"
#include "jobs/PlannedFiles.h"
#include "support/TemporaryFolder.h"

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
    names.AppendKeys(FolderOf(one), FileName(one), platform::NameIsLink(one), ofOne);
    names.AppendKeys(FolderOf(other), FileName(other), platform::NameIsLink(other), ofOther);
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
    const auto ending = [](FinalAction action, const std::string& destination) {
        Setting setting = Saving();
        setting.request.wanted.finalAction = action;
        setting.request.wanted.destination = destination;
        return setting;
    };
    const Setting rename = ending(FinalAction::Rename, "Same.pdf");
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
        {"moved into one folder", ending(FinalAction::MoveVersions, In("done")), "a/x.pdf", "b/x.pdf", true},
        {"moved onto another input", ending(FinalAction::MoveReplace, In("b")), "a/x.pdf", "b/x.pdf", true},
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

TEST(CollisionGroups, JoinsFilesThatShareAKeyAlsoThroughOthers)
{
    using Groups = std::vector<std::uint32_t>;
    using Keys = std::vector<std::vector<std::uint64_t>>;  // of each file
    const struct {
        const char* what;
        Keys keys;
        Groups groups;
    } rows[] = {
        {"no files", {}, {}},
        {"all apart", {{1}, {2}, {3}}, {0, 0, 0}},
        {"a file's own keys may be equal", {{1, 1}, {2}}, {0, 0}},
        {"one pair", {{1}, {2}, {1}}, {1, 0, 1}},
        {"groups are numbered by their first files", {{5}, {9}, {9}, {5}}, {1, 2, 2, 1}},
        {"a chain is one group", {{1, 2}, {2, 3}, {3, 4}, {7}}, {1, 1, 1, 0}},
        {"joined by a later file", {{1}, {2}, {3}, {2, 1}}, {1, 1, 0, 1}},
        {"two groups joined at the end", {{1}, {1}, {2}, {2}, {1, 2}}, {1, 1, 1, 1, 1}},
        {"files without keys", {{}, {1}, {}, {1}}, {0, 1, 0, 1}},
    };
    for (const auto& row : rows) {
        CCollisionGroups groups;
        for (std::uint32_t file = 0; file < row.keys.size(); ++file)
            for (const std::uint64_t key : row.keys[file]) groups.Add(key, file);
        EXPECT_EQ(groups.Groups(row.keys.size()), row.groups) << row.what;
    }
}

TEST(PlannedFiles, TellsSizesAndGroupsAndLeavesOutWhatIsStillBeingWritten)
{
    const CTemporaryFolder folder;
    folder.Write("fresh.pdf", "x");
    const std::string old = folder.Write("old.pdf", "four");
    std::filesystem::last_write_time(old, std::filesystem::last_write_time(old) - std::chrono::hours(1));

    CInputCollector inputs({{"pdf"}, true});
    inputs.AddPath(folder.Path());
    inputs.AddPath(folder / "missing.pdf");
    inputs.AddPath(folder.MakeFolder("other") + kSeparator + "old.pdf");
    const CPlannedFiles files(std::move(inputs), 60);
    EXPECT_EQ(files.TooYoung(), 1u);
    ASSERT_EQ(files.Count(), 3u);
    CTouchedNames names({.results = {{.folder = folder.Path(), .after = "_o"}}}, {});
    std::vector<PlannedFile> planned;
    files.ForEach(names, [&](const PlannedFile& file) { planned.push_back(file); });
    EXPECT_EQ(planned[0].path, old);
    EXPECT_EQ(planned[0].number, 1u);
    EXPECT_EQ(planned[0].size, 4u);
    EXPECT_GT(planned[0].modifiedNanoseconds, 1'700'000'000'000'000'000);
    EXPECT_EQ(planned[1].path, folder / "missing.pdf");
    EXPECT_EQ(planned[1].number, 2u);
    EXPECT_EQ(planned[1].size, 0u);
    std::vector<std::uint32_t> groups;
    for (const PlannedFile& file : planned) groups.push_back(file.group);
    EXPECT_EQ(groups, (std::vector<std::uint32_t>{1, 0, 1})) << "two inputs want the result old_o.pdf";
}

}  // namespace
