#include "base/Overseer.h"
#include "platform/AtomicFile.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

#include "ScriptedOverseer.h"
#include "platform/FileProblem.h"
#include "support/TemporaryFolder.h"
#include "support/TestProcess.h"

using platform::Existing;
using platform::FileProblem;
using platform::FileResult;
using platform::ProblemOf;
using platform::Readers;
namespace fs = std::filesystem;

namespace {

FileResult WriteWatched(const std::string& path, Existing existing)
{
    platform::CAtomicFile file(path, existing);
    file.Write("fresh", 5);
    return file.Commit();
}

// "a" holds "new", "b" holds "old", "c" is free.
struct Service {
    const char* name;
    std::function<FileResult(const CTemporaryFolder&)> act;
    const char *asked, *askedInTrial;
    const char *a, *b, *c;  // afterwards
};

const Service kServices[] = {
    {"copy", [](const auto& f) { return platform::CopyFile(f / "a", f / "c", Existing::Fail); }, "put new>c;",
     "put new>c;", "new", "old", "new"},
    {"copy over", [](const auto& f) { return platform::CopyFile(f / "a", f / "b", Existing::Replace); }, "put new>b;",
     "put new>b;", "new", "new", "<missing>"},
    {"move", [](const auto& f) { return platform::MoveFile(f / "a", f / "c", Existing::Fail); }, "move new>c;",
     "move new>c;", "<missing>", "old", "new"},
    {"move over", [](const auto& f) { return platform::MoveFile(f / "a", f / "b", Existing::Replace); },
     "move new>b;", "move new>b;", "<missing>", "new", "<missing>"},
    {"delete", [](const auto& f) { return platform::DeleteFile(f / "a"); }, "delete new>;", "delete new>;",
     "<missing>", "old", "<missing>"},
    {"write", [](const auto& f) { return WriteWatched(f / "c", Existing::Fail); }, "put fresh>c;", "put >c;", "new",
     "old", "fresh"},
    {"write over", [](const auto& f) { return WriteWatched(f / "b", Existing::Replace); }, "put fresh>b;", "put >b;",
     "new", "fresh", "<missing>"},
    {"settings", [](const auto& f) { return platform::WriteFileAtomically(f / "c", "own", Readers::Owner); }, "", "",
     "new", "old", "own"},
    {"move onto itself",
     [](const auto& f) { return platform::MoveFile(f / "a", f.Path() + "/./a", Existing::Replace); }, "", "", "new",
     "old", "<missing>"},
};

void ExpectFiles(const CTemporaryFolder& folder, const char* a, const char* b, const char* c)
{
    EXPECT_EQ(FileBytes(folder / "a"), a);
    EXPECT_EQ(FileBytes(folder / "b"), b);
    EXPECT_EQ(FileBytes(folder / "c"), c);
    std::size_t expected = 0;
    for (const char* name : {"a", "b", "c"}) expected += platform::NameExists(folder / name) ? 1 : 0;
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
                    {COverseer::Answer::Refuse, false, asks ? FileProblem::Canceled : FileProblem::None, !asks},
                    {COverseer::Answer::Pretend, false, FileProblem::None, !asks},
                    {COverseer::Answer::Pretend, true, FileProblem::None, !asks},
                    {COverseer::Answer::Refuse, true, asks ? FileProblem::Canceled : FileProblem::None, !asks}};
        for (const auto& row : rows) {
            const CTemporaryFolder folder;
            folder.Write("a", "new");
            folder.Write("b", "old");
            CScriptedOverseer overseer(row.answer, row.trial);
            InstallOverseer(&overseer);
            EXPECT_EQ(ProblemOf(service.act(folder)), row.problem);
            EXPECT_EQ(overseer.asked, row.trial ? service.askedInTrial : service.asked);
            InstallOverseer(nullptr);
            if (row.done)
                ExpectFiles(folder, service.a, service.b, service.c);
            else
                ExpectFiles(folder, "new", "old", "<missing>");
        }
    }
}

TEST(Overseer, NothingIsAskedForWhatCannotBeDone)
{
    const CTemporaryFolder folder;
    const auto a = folder.Write("a", "new"), b = folder.Write("b", "old"), sub = folder.MakeFolder("sub");
    const auto missing = folder / "missing", below = folder / "missing/c";
    for (const bool trial : {false, true}) {
        SCOPED_TRACE(trial);
        CScriptedOverseer overseer(COverseer::Answer::Pretend, trial);
        InstallOverseer(&overseer);
        EXPECT_EQ(ProblemOf(platform::CopyFile(a, b, Existing::Fail)), FileProblem::Exists);
        EXPECT_EQ(ProblemOf(platform::CopyFile(a, sub, Existing::Replace)), FileProblem::IsAFolder);
        EXPECT_EQ(ProblemOf(platform::CopyFile(missing, folder / "c", Existing::Fail)), FileProblem::Missing);
        EXPECT_EQ(ProblemOf(platform::CopyFile(a, below, Existing::Replace)), FileProblem::Missing);
        EXPECT_EQ(ProblemOf(platform::MoveFile(a, b, Existing::Fail)), FileProblem::Exists);
        EXPECT_EQ(ProblemOf(platform::MoveFile(missing, b, Existing::Replace)), FileProblem::Missing);
        EXPECT_EQ(ProblemOf(platform::MoveFile(sub, folder / "c", Existing::Fail)), FileProblem::IsAFolder);
        EXPECT_EQ(ProblemOf(platform::DeleteFile(missing)), FileProblem::Missing);
        EXPECT_EQ(ProblemOf(platform::DeleteFile(sub)), FileProblem::IsAFolder);
        EXPECT_EQ(ProblemOf(WriteWatched(b, Existing::Fail)), FileProblem::Exists);
        EXPECT_EQ(ProblemOf(WriteWatched(below, Existing::Replace)), FileProblem::Missing);
        EXPECT_EQ(ProblemOf(WriteWatched(sub, Existing::Replace)), FileProblem::IsAFolder);
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
    EXPECT_EQ(ProblemOf(WriteWatched(made, Existing::Fail)), FileProblem::Exists);
    EXPECT_TRUE(WriteWatched(gone, Existing::Fail));
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
