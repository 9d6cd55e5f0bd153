#include "base/PathNames.h"
#include "batchrun/FinalAction.h"

#include "platform/Files.h"
#include "support/MemoryLog.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <chrono>
#include <filesystem>
#include <thread>

namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

/// in/report.pdf holds "new"; out/ is empty unless a test fills it.
struct Place {
    CTemporaryFolder folder;
    std::string input, out;
    CMemoryLog log;

    Place()
    {
        folder.MakeFolder("in");
        out = folder.MakeFolder("out");
        input = folder.Write("in/report.pdf", "new");
    }
    FinalActionResult Apply(int code, const std::string& destination)
    {
        return ApplyFinalAction(input, {.action = static_cast<FinalAction>(code), .destination = destination}, log).result;
    }
    std::string Out(const std::string& name) const { return FileBytes(out + kSeparator + name); }
    std::string In() const { return FileBytes(input); }
};

constexpr char kGone[] = "<missing>";

TEST(FinalAction, CopiesMovesAndDeletesIntoAnEmptyFolder)
{
    const struct {
        int code;
        const char *in, *out, *logged;
    } rows[] = {{0, "new", kGone, ""},
                {1, "new", "new", "\tFile is copied to : "},
                {2, kGone, "new", "\tFile is moved to : "},
                {3, kGone, kGone, "\tFile is deleted : "},
                {6, kGone, "new", "\tFile is moved to : "},
                {7, kGone, "new", "\tFile is moved to : "},
                {8, "new", "new", "\tFile is copied to : "}};
    for (const auto& row : rows) {
        Place place;
        EXPECT_EQ(place.Apply(row.code, place.out), FinalActionResult::Done) << row.code;
        EXPECT_EQ(place.In(), row.in) << row.code;
        EXPECT_EQ(place.Out("report.pdf"), row.out) << row.code;
        const std::string value = row.code == 3 ? place.input : place.out + kSeparator + "report.pdf";
        EXPECT_EQ(place.log.lines, *row.logged ? Lines{row.logged + value} : Lines{}) << row.code;
    }
}

TEST(FinalAction, ANameThatIsTakenIsReplacedKeptOrNumbered)
{
    const struct {
        int code;
        FinalActionResult result;
        const char *in, *taken, *third;
    } rows[] = {{1, FinalActionResult::Done, "new", "new", kGone},
                {2, FinalActionResult::Failed, "new", "old", kGone},
                {6, FinalActionResult::Done, kGone, "new", kGone},
                {7, FinalActionResult::Done, kGone, "old", "new"},
                {8, FinalActionResult::Done, "new", "old", "new"}};
    for (const auto& row : rows) {
        Place place;
        place.folder.Write("out/report.pdf", "old");
        place.folder.Write("out/report (1).pdf", "older");
        EXPECT_EQ(place.Apply(row.code, place.out), row.result) << row.code;
        EXPECT_EQ(place.In(), row.in) << row.code;
        EXPECT_EQ(place.Out("report.pdf"), row.taken) << row.code;
        EXPECT_EQ(place.Out("report (1).pdf"), "older") << row.code;
        EXPECT_EQ(place.Out("report (2).pdf"), row.third) << row.code;
    }
    Place place;
    place.folder.Write("out/report.pdf", "old");
    const FinalActionRequest careful{.action = FinalAction::Copy, .destination = place.out, .failIfExists = true};
    EXPECT_EQ(ApplyFinalAction(place.input, careful, place.log).result, FinalActionResult::Failed);
    EXPECT_EQ(place.Out("report.pdf"), "old");
}

TEST(FinalAction, AMissingFolderLeavesTheInputAndIsNamed)
{
    const std::string missingNumber =
        std::to_string(platform::CheckReadable("no such folder/report.pdf").errorNumber);
    for (const int code : {1, 2, 6, 7, 8}) {
        Place place;
        const std::string nowhere = place.folder / "nowhere";
        const std::string target = nowhere + kSeparator + "report.pdf";
        EXPECT_EQ(place.Apply(code, nowhere), FinalActionResult::Failed) << code;
        EXPECT_EQ(place.In(), "new") << code;
        Lines expected{(code == 1 || code == 8 ? "\tCan't copy file to : " : "\tCan't move file to : ") + target};
        if (code == 6 || code == 7) expected.push_back("\tMissing output folder : " + nowhere);
        if (code == 7) expected.push_back("\tInput file location : " + place.input);
        if (code == 6 || code == 7) expected.push_back("\tError code : " + missingNumber);
        EXPECT_EQ(place.log.lines, expected) << code;
    }
}

TEST(FinalAction, TheInputsOwnFolderNeverLosesTheInput)
{
    for (const int code : {1, 2, 6, 7, 8}) {
        Place place;
        const auto result = place.Apply(code, fs::path(place.input).parent_path().string());
        const std::string numbered = FileBytes(place.folder / "in/report (1).pdf");
        EXPECT_TRUE(place.In() == "new" || (code == 7 && numbered == "new")) << code;
        EXPECT_EQ(numbered, code == 7 || code == 8 ? "new" : kGone) << code;
        if (code == 1 || code == 2) {
            EXPECT_EQ(result, FinalActionResult::Failed) << code;
        }
    }
}

TEST(FinalAction, RenamesWithinTheFolderAndNeverOverAnything)
{
    const struct {
        const char* newName;
        FinalActionResult result;
        const char* in;
    } rows[] = {{"done.pdf", FinalActionResult::Done, kGone},
                {"taken.pdf", FinalActionResult::Failed, "new"},
                {"", FinalActionResult::Failed, "new"},
                {"report.pdf", FinalActionResult::Failed, "new"},
                {"no/such/folder.pdf", FinalActionResult::Failed, "new"}};
    for (const auto& row : rows) {
        Place place;
        const std::string taken = place.folder.Write("in/taken.pdf", "other");
        EXPECT_EQ(place.Apply(4, row.newName), row.result) << row.newName;
        EXPECT_EQ(place.In(), row.in) << row.newName;
        EXPECT_EQ(FileBytes(taken), "other") << row.newName;
        const bool done = row.result == FinalActionResult::Done;
        EXPECT_EQ(place.log.lines, Lines{(done ? "\tFile is renamed to : " : "\tCan't rename file to : ") +
                                         (place.folder / "in/") + row.newName});
    }
}

#ifndef _WIN32  // tests/windows starts programs there
TEST(FinalAction, StartsAProgramWithTheFileAsOneArgument)
{
    Place place;
    const std::string odd = place.folder.Write("in/a \"b\" $(c).pdf", "x");
    const std::string seen = place.folder / "seen";
    const std::string program = place.folder.Write("pro gram", "#!/bin/sh\nprintf '%s|%s' \"$#\" \"$1\" > '" + seen +
                                                                   ".part'\nmv '" + seen + ".part' '" + seen + "'\n");
    fs::permissions(program, fs::perms::owner_all);
    EXPECT_EQ(ApplyFinalAction(odd, {.action = FinalAction::Execute, .destination = program}, place.log).result, FinalActionResult::Done);
    EXPECT_EQ(place.log.lines, Lines{"\tFile is executed : " + program});
    for (int wait = 0; wait < 500 && FileBytes(seen) == kGone; ++wait)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));  // the program is not waited for
    EXPECT_EQ(FileBytes(seen), "1|" + odd);
}
#endif

TEST(FinalAction, AProgramThatCannotStartIsAFailure)
{
    Place place;
    EXPECT_EQ(place.Apply(5, place.folder / "no-such-program"), FinalActionResult::Failed);
    EXPECT_EQ(place.log.lines,
              Lines{"\tAn error occured while trying to execute file : " + (place.folder / "no-such-program")});
    EXPECT_EQ(place.In(), "new");
}

TEST(FinalAction, AnInputThatVanishedFailsInEachWay)
{
    for (const int code : {1, 2, 3, 4, 6, 7, 8}) {
        Place place;
        fs::remove(place.input);
        EXPECT_EQ(place.Apply(code, code == 4 ? "new name.pdf" : place.out), FinalActionResult::Failed) << code;
        EXPECT_EQ(place.Out("report.pdf"), kGone) << code;
        ASSERT_FALSE(place.log.lines.empty());
        EXPECT_TRUE(place.log.lines[0].starts_with("\tCan't ")) << place.log.lines[0];
    }
}

TEST(FinalAction, AnInputThatCannotBeReadIsNotHalfCopied)
{
    for (const int code : {1, 8}) {
        Place place;
        fs::permissions(place.input, fs::perms::none);
        if (platform::CheckReadable(place.input)) GTEST_SKIP() << "this user reads everything";
        EXPECT_EQ(place.Apply(code, place.out), FinalActionResult::Failed) << code;
        EXPECT_TRUE(fs::is_empty(place.out)) << code;
    }
}

TEST(FinalAction, ADestinationWithASeparatorGetsASecondOne)
{
    Place place;
    EXPECT_EQ(place.Apply(1, place.out + kSeparator), FinalActionResult::Done);
    EXPECT_EQ(place.log.lines, Lines{"\tFile is copied to : " + place.out + kSeparator + kSeparator + "report.pdf"});
}

TEST(FinalAction, UnknownCodesDoNothing)
{
    for (const int code : {9, -1, 255}) {
        Place place;
        EXPECT_EQ(place.Apply(code, place.out), FinalActionResult::UnknownCode) << code;
        EXPECT_EQ(place.log.lines, Lines{"\tERROR: Unknown final action : " + std::to_string(code)});
        EXPECT_EQ(place.In(), "new");
        EXPECT_TRUE(fs::is_empty(place.out));
    }
}

}  // namespace
