#include <filesystem>

#include <gtest/gtest.h>

#include "FileActs.h"
#include "ScriptedOverseer.h"
#include "base/Overseer.h"
#include "platform/Files.h"
#include "support/TemporaryFolder.h"
#include "support/TestProcess.h"

using platform::Existing;
using platform::FileProblem;
using platform::ProblemOf;
namespace fs = std::filesystem;

namespace {

// From "a", which holds "new", to a target: "b" holds "old", "c" is free.
struct Service {
    const char* name;
    FileAct act;
    const char *target, *asked, *askedInTrial;
    const char *a, *b, *c;  // afterwards
};

constexpr char kNone[] = "<missing>";

const Service kServices[] = {
    {"copy", Copying(Existing::Fail), "c", "put new>c;", "put new>c;", "new", "old", "new"},
    {"copy over", Copying(Existing::Replace), "b", "put new>b;", "put new>b;", "new", "new", kNone},
    {"move", Moving(Existing::Fail), "c", "move new>c;", "move new>c;", kNone, "old", "new"},
    {"move over", Moving(Existing::Replace), "b", "move new>b;", "move new>b;", kNone, "new", kNone},
    {"delete", Deleting(), "", "delete new>;", "delete new>;", kNone, "old", kNone},
    {"write", Writing(Existing::Fail, "fresh"), "c", "put fresh>c;", "put >c;", "new", "old", "fresh"},
    {"write over", Writing(Existing::Replace, "fresh"), "b", "put fresh>b;", "put >b;", "new", "fresh", kNone},
    {"settings", WritingSettings(), "c", "", "", "new", "old", "new"},
    {"move onto itself", Moving(Existing::Replace), "./a", "", "", "new", "old", kNone},
};

void ExpectFiles(const CTemporaryFolder& folder, const char* a, const char* b, const char* c)
{
    EXPECT_EQ(FileBytes(folder / "a"), a);
    EXPECT_EQ(FileBytes(folder / "b"), b);
    EXPECT_EQ(FileBytes(folder / "c"), c);
    std::size_t expected = 0;
    for (const char* name : {"a", "b", "c"}) expected += platform::NameExists(folder / name) ? 1u : 0u;
    EXPECT_EQ(folder.EntryCount(), expected) << "leftovers";
}

}  // namespace

TEST(Overseer, IsAskedOnceWithTheCompleteContentAndObeyed)
{
    for (const auto& service : kServices) {
        SCOPED_TRACE(service.name);
        const bool asks = *service.asked != '\0';
        const struct {
            COverseer::Answer answer;
            bool trial;
            FileProblem problem;
            bool done;
        } rows[] = {{COverseer::Answer::Go, false, FileProblem::None, true},
                    {COverseer::Answer::Refuse, false, asks ? FileProblem::Cancelled : FileProblem::None, !asks},
                    {COverseer::Answer::Pretend, false, FileProblem::None, !asks},
                    {COverseer::Answer::Pretend, true, FileProblem::None, !asks},
                    {COverseer::Answer::Refuse, true, asks ? FileProblem::Cancelled : FileProblem::None, !asks}};
        for (const auto& row : rows) {
            const CTemporaryFolder folder;
            folder.Write("a", "new");
            folder.Write("b", "old");
            CScriptedOverseer overseer(row.answer, row.trial);
            InstallOverseer(&overseer);
            EXPECT_EQ(ProblemOf(service.act(folder / "a", folder.Path() + "/" + service.target)), row.problem);
            EXPECT_EQ(overseer.asked, row.trial ? service.askedInTrial : service.asked);
            InstallOverseer(nullptr);
            if (row.done)
                ExpectFiles(folder, service.a, service.b, service.c);
            else
                ExpectFiles(folder, "new", "old", kNone);
        }
    }
}

TEST(Overseer, NothingIsAskedForWhatCannotBeDone)
{
    const CTemporaryFolder folder;
    const auto a = folder.Write("a", "new"), b = folder.Write("b", "old"), sub = folder.MakeFolder("sub");
    const auto missing = folder / "missing", below = folder / "missing/c", c = folder / "c";
    const struct {
        FileAct act;
        std::string from, to;
        FileProblem problem;
    } rows[] = {{Copying(Existing::Fail), a, b, FileProblem::Exists},
                {Copying(Existing::Replace), a, sub, FileProblem::IsAFolder},
                {Copying(Existing::Fail), missing, c, FileProblem::Missing},
                {Copying(Existing::Replace), a, below, FileProblem::Missing},
                {Moving(Existing::Fail), a, b, FileProblem::Exists},
                {Moving(Existing::Replace), missing, b, FileProblem::Missing},
                {Moving(Existing::Fail), sub, c, FileProblem::IsAFolder},
                {Deleting(), missing, "", FileProblem::Missing},
                {Deleting(), sub, "", FileProblem::IsAFolder},
                {Writing(Existing::Fail), "", b, FileProblem::Exists},
                {Writing(Existing::Replace), "", below, FileProblem::Missing},
                {Writing(Existing::Replace), "", sub, FileProblem::IsAFolder}};
    for (const bool trial : {false, true}) {
        SCOPED_TRACE(trial);
        CScriptedOverseer overseer(COverseer::Answer::Pretend, trial);
        InstallOverseer(&overseer);
        for (const auto& row : rows) EXPECT_EQ(ProblemOf(row.act(row.from, row.to)), row.problem) << &row - rows;
        EXPECT_EQ(overseer.asked, "");
        {
            const CUnwatched ownFile;
            EXPECT_TRUE(platform::DeleteFile(folder.Write("own", "")));
        }
        EXPECT_EQ(Overseer(), &overseer);
        EXPECT_EQ(overseer.asked, "");
    }
}

TEST(Overseer, WhatIsPretendedHidesTheDisk)
{
    const CTemporaryFolder folder;
    const auto gone = folder.Write("gone", "x"), made = folder / "made", real = folder.Write("real", "x");
    CScriptedOverseer overseer(COverseer::Answer::Pretend, true);
    overseer.exists = {{gone, false}, {made, true}};
    InstallOverseer(&overseer);
    for (const auto test : {platform::FileExists, platform::NameExists}) {
        EXPECT_FALSE(test(gone));
        EXPECT_TRUE(test(made));
        EXPECT_TRUE(test(real));
    }
    EXPECT_EQ(ProblemOf(platform::CheckReadable(gone)), FileProblem::Missing);
    EXPECT_EQ(ProblemOf(platform::DeleteFile(gone)), FileProblem::Missing);
    EXPECT_EQ(ProblemOf(platform::MoveFile(gone, folder / "c", Existing::Fail)), FileProblem::Missing);
    EXPECT_EQ(ProblemOf(platform::CopyFile(real, made, Existing::Fail)), FileProblem::Exists);
    EXPECT_TRUE(platform::CopyFile(real, gone, Existing::Fail));
    EXPECT_TRUE(platform::MoveFile(made, gone, Existing::Replace));
    EXPECT_EQ(ProblemOf(Writing(Existing::Fail)("", made)), FileProblem::Exists);
    EXPECT_TRUE(Writing(Existing::Fail)("", gone));
    CScriptedOverseer real2(COverseer::Answer::Go);
    real2.exists = overseer.exists;
    InstallOverseer(&real2);
    EXPECT_TRUE(platform::FileExists(gone)) << "outside of a trial only the disk counts";
}

TEST(Overseer, TemporaryNamesCarryTheTag)
{
    const CTemporaryFolder folder;
    const auto nameOf = [&] {
        const platform::CAtomicFile file(folder / "target", Existing::Fail);
        return fs::directory_iterator(folder.Path())->path().filename().string();
    };
    platform::SetTemporaryTag("k3v9");
    EXPECT_TRUE(nameOf().starts_with(".ferrule-k3v9-"));
    EXPECT_EQ(platform::TemporaryPrefix("k3v9"), ".ferrule-k3v9-");
    platform::SetTemporaryTag("");
    EXPECT_TRUE(nameOf().starts_with(".ferrule-" + std::to_string(ProcessId())));
    EXPECT_EQ(folder.EntryCount(), 0u);
}
