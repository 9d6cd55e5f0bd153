#include <chrono>
#include <filesystem>
#include <thread>

#include <gtest/gtest.h>

#include "base/Names.h"
#include "batchrun/FinalAction.h"
#include "platform/Files.h"
#include "support/MemoryLog.h"
#include "support/TemporaryFolder.h"

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
        return ApplyFinalAction(input, {.action = static_cast<FinalAction>(code), .destination = destination}, log)
            .result;
    }
    std::string Out(const std::string& name) const { return FileBytes(out + kSeparator + name); }
    std::string In() const { return FileBytes(input); }
};

constexpr char kGone[] = "<missing>";

TEST(FinalAction, DoesWhatItsCodeSaysAndReplacesKeepsOrNumbersANameThatIsTaken)
{
    constexpr auto kDone = FinalActionResult::Done, kFailed = FinalActionResult::Failed;
    const struct {
        int code;
        bool taken;  // the name and the first number behind it
        FinalActionResult result;
        const char *in, *out, *numbered, *logged;
    } rows[] = {{0, false, kDone, "new", kGone, kGone, nullptr},
                {1, false, kDone, "new", "new", kGone, "\tFile is copied to : "},
                {1, true, kDone, "new", "new", kGone, "\tFile is copied to : "},
                {2, false, kDone, kGone, "new", kGone, "\tFile is moved to : "},
                {2, true, kFailed, "new", "old", kGone, "\tCan't move file to : "},
                {3, true, kDone, kGone, "old", kGone, "\tFile is deleted : "},
                {6, false, kDone, kGone, "new", kGone, "\tFile is moved to : "},
                {6, true, kDone, kGone, "new", kGone, "\tFile is moved to : "},
                {7, false, kDone, kGone, "new", kGone, "\tFile is moved to : "},
                {7, true, kDone, kGone, "old", "new", "\tFile is moved to : "},
                {8, false, kDone, "new", "new", kGone, "\tFile is copied to : "},
                {8, true, kDone, "new", "old", "new", "\tFile is copied to : "},
                {9, false, FinalActionResult::UnknownCode, "new", kGone, kGone, "\tERROR: Unknown final action : "},
                {-1, false, FinalActionResult::UnknownCode, "new", kGone, kGone, "\tERROR: Unknown final action : "}};
    for (const auto& row : rows) {
        SCOPED_TRACE(std::to_string(row.code) + (row.taken ? " taken" : ""));
        Place place;
        if (row.taken) {
            place.folder.Write("out/report.pdf", "old");
            place.folder.Write("out/report (1).pdf", "older");
        }
        EXPECT_EQ(place.Apply(row.code, place.out), row.result);
        EXPECT_EQ(place.In(), row.in);
        EXPECT_EQ(place.Out("report.pdf"), row.out);
        EXPECT_EQ(place.Out("report (1).pdf"), row.taken ? "older" : kGone);
        EXPECT_EQ(place.Out("report (2).pdf"), row.numbered);
        std::string value = place.out + kSeparator + (row.numbered == kGone ? "report.pdf" : "report (2).pdf");
        if (row.code == 3) value = place.input;
        if (row.result == FinalActionResult::UnknownCode) value = std::to_string(row.code);
        EXPECT_EQ(place.log.lines, row.logged ? Lines{row.logged + value} : Lines{});
    }
    Place place;
    place.folder.Write("out/report.pdf", "old");
    const FinalActionRequest careful{.action = FinalAction::Copy, .destination = place.out, .failIfExists = true};
    EXPECT_EQ(ApplyFinalAction(place.input, careful, place.log).result, kFailed);
    EXPECT_EQ(place.Out("report.pdf"), "old");
    place.log.lines.clear();
    EXPECT_EQ(place.Apply(1, place.out + kSeparator), kDone);
    EXPECT_EQ(place.log.lines, Lines{"\tFile is copied to : " + place.out + kSeparator + kSeparator + "report.pdf"});
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
    EXPECT_EQ(ApplyFinalAction(odd, {.action = FinalAction::Execute, .destination = program}, place.log).result,
              FinalActionResult::Done);
    EXPECT_EQ(place.Apply(5, place.folder / "no-such-program"), FinalActionResult::Failed);
    EXPECT_EQ(place.log.lines,
              (Lines{"\tFile is executed : " + program,
                     "\tAn error occured while trying to execute file : " + (place.folder / "no-such-program")}));
    EXPECT_EQ(place.In(), "new");
    for (int wait = 0; wait < 500 && FileBytes(seen) == kGone; ++wait)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));  // the program is not waited for
    EXPECT_EQ(FileBytes(seen), "1|" + odd);
}
#endif

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

}  // namespace
