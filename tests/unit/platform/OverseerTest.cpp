#include "platform/Overseer.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <map>

#include "platform/AtomicFile.h"
#include "platform/Programs.h"
#include "support/TemporaryFolder.h"

using platform::COverseer;
using platform::Existing;
using platform::FileResult;
namespace fs = std::filesystem;

namespace {

/// Notes what it is asked, with the content that the act is about, and answers as it was told.
class CScriptedOverseer final : public COverseer {
public:
    explicit CScriptedOverseer(Answer answer, bool pretends = false) : m_answer(answer), m_pretends(pretends) {}
    ~CScriptedOverseer() override { platform::InstallOverseer(nullptr); }

    Answer Ask(Act act, const std::string& file, const std::string& target) override
    {
        static constexpr const char* kNames[] = {"put", "move", "delete", "start"};
        asked += std::string(kNames[static_cast<int>(act)]) + ' ' + (file.empty() ? "" : FileBytes(file)) + '>' +
                 fs::path(target).filename().string() + ';';
        return m_answer;
    }
    bool Pretends() const override { return m_pretends; }
    std::optional<bool> Exists(const std::string& path) const override
    {
        const auto found = exists.find(path);
        return found == exists.end() ? std::nullopt : std::optional(found->second);
    }

    std::string asked;
    std::map<std::string, bool> exists;

private:
    Answer m_answer;
    bool m_pretends;
};

FileResult WriteAtomic(const std::string& path, Existing existing)
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
    {"write", [](const auto& f) { return WriteAtomic(f / "c", Existing::Fail); }, "put fresh>c;", "put >c;", "new",
     "old", "fresh"},
    {"write over", [](const auto& f) { return WriteAtomic(f / "b", Existing::Replace); }, "put fresh>b;", "put >b;",
     "new", "fresh", "<missing>"},
    {"settings", [](const auto& f) { return platform::WriteFileAtomically(f / "c", "own", 0600); }, "", "", "new",
     "old", "own"},
    {"move onto itself", [](const auto& f) { return platform::MoveFile(f / "a", f / "./a", Existing::Replace); }, "",
     "", "new", "old", "<missing>"},
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
            int error;
            bool done;
        } rows[] = {{COverseer::Answer::Go, false, 0, true},
                    {COverseer::Answer::Refuse, false, asks ? ECANCELED : 0, !asks},
                    {COverseer::Answer::Pretend, false, 0, !asks},
                    {COverseer::Answer::Pretend, true, 0, !asks},
                    {COverseer::Answer::Refuse, true, asks ? ECANCELED : 0, !asks}};
        for (const auto& row : rows) {
            const CTemporaryFolder folder;
            folder.Write("a", "new");
            folder.Write("b", "old");
            CScriptedOverseer overseer(row.answer, row.trial);
            platform::InstallOverseer(&overseer);
            EXPECT_EQ(service.act(folder).errorNumber, row.error);
            EXPECT_EQ(overseer.asked, row.trial ? service.askedInTrial : service.asked);
            platform::InstallOverseer(nullptr);
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
        platform::InstallOverseer(&overseer);
        EXPECT_EQ(platform::CopyFile(a, b, Existing::Fail).errorNumber, EEXIST);
        EXPECT_EQ(platform::CopyFile(a, sub, Existing::Replace).errorNumber, EISDIR);
        EXPECT_EQ(platform::CopyFile(missing, folder / "c", Existing::Fail).errorNumber, ENOENT);
        EXPECT_EQ(platform::CopyFile(a, below, Existing::Replace).errorNumber, ENOENT);
        EXPECT_EQ(platform::MoveFile(a, b, Existing::Fail).errorNumber, EEXIST);
        EXPECT_EQ(platform::MoveFile(missing, b, Existing::Replace).errorNumber, ENOENT);
        EXPECT_EQ(platform::MoveFile(sub, folder / "c", Existing::Fail).errorNumber, EISDIR);
        EXPECT_EQ(platform::DeleteFile(missing).errorNumber, ENOENT);
        EXPECT_EQ(platform::DeleteFile(sub).errorNumber, EISDIR);
        EXPECT_EQ(WriteAtomic(b, Existing::Fail).errorNumber, EEXIST);
        EXPECT_EQ(WriteAtomic(below, Existing::Replace).errorNumber, ENOENT);
        EXPECT_EQ(WriteAtomic(sub, Existing::Replace).errorNumber, EISDIR);
        EXPECT_FALSE(platform::OpenWithShell(missing, a));
        EXPECT_FALSE(platform::OpenWithShell(b, a)) << "not executable";
        EXPECT_EQ(overseer.asked, "");
        {
            const platform::CUnwatched ownFile;
            EXPECT_TRUE(platform::DeleteFile(folder.Write("own", "")));
        }
        EXPECT_EQ(platform::Overseer(), &overseer);
        EXPECT_EQ(overseer.asked, "");
    }
}

TEST(Overseer, ProgramsStartOnlyWhenAllowed)
{
    const CTemporaryFolder folder;
    const auto program = folder.Write("program", "#!/bin/sh\necho \"$1\" > \"${0%/*}/pipe\"\n");
    fs::permissions(program, fs::perms(0755));
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    const int reader = open((folder / "pipe").c_str(), O_RDONLY | O_NONBLOCK);
    const struct {
        COverseer::Answer answer;
        bool started;
    } rows[] = {
        {COverseer::Answer::Refuse, false}, {COverseer::Answer::Pretend, true}, {COverseer::Answer::Go, true}};
    for (const auto& row : rows) {
        CScriptedOverseer overseer(row.answer);
        platform::InstallOverseer(&overseer);
        const auto argument = folder.Write(std::to_string(static_cast<int>(row.answer)), "content");
        EXPECT_EQ(platform::OpenWithShell('"' + program + '"', argument), row.started);
        EXPECT_EQ(overseer.asked, "start content>program;");
    }
    pollfd waiting{reader, POLLIN, 0};
    ASSERT_EQ(poll(&waiting, 1, 30'000), 1);
    char text[4096] = "";
    ASSERT_GT(read(reader, text, sizeof text - 1), 0);
    EXPECT_EQ(text, folder / "0" + "\n") << "only the allowed start";
    close(reader);
}

TEST(Overseer, WhatIsPretendedHidesTheDisk)
{
    const CTemporaryFolder folder;
    const auto gone = folder.Write("gone", "x"), made = folder / "made", real = folder.Write("real", "x");
    CScriptedOverseer overseer(COverseer::Answer::Pretend, true);
    overseer.exists = {{gone, false}, {made, true}};
    platform::InstallOverseer(&overseer);
    for (const auto test : {platform::FileExists, platform::NameExists}) {
        EXPECT_FALSE(test(gone));
        EXPECT_TRUE(test(made));
        EXPECT_TRUE(test(real));
    }
    EXPECT_EQ(platform::CheckReadable(gone).errorNumber, ENOENT);
    EXPECT_EQ(platform::DeleteFile(gone).errorNumber, ENOENT);
    EXPECT_EQ(platform::MoveFile(gone, folder / "c", Existing::Fail).errorNumber, ENOENT);
    EXPECT_EQ(platform::CopyFile(real, made, Existing::Fail).errorNumber, EEXIST);
    EXPECT_TRUE(platform::CopyFile(real, gone, Existing::Fail));
    EXPECT_TRUE(platform::MoveFile(made, gone, Existing::Replace));
    EXPECT_EQ(WriteAtomic(made, Existing::Fail).errorNumber, EEXIST);
    EXPECT_TRUE(WriteAtomic(gone, Existing::Fail));
    CScriptedOverseer real2(COverseer::Answer::Go);
    real2.exists = overseer.exists;
    platform::InstallOverseer(&real2);
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
    EXPECT_TRUE(nameOf().starts_with(".ferrule-" + std::to_string(getpid())));
    EXPECT_EQ(folder.EntryCount(), 0u);
}
