#include <atomic>
#include <filesystem>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "MovingRows.h"
#include "platform/Files.h"
#include "support/TemporaryFolder.h"

using platform::CopyFile;
using platform::Existing;
using platform::FileProblem;
using platform::MoveFile;
using platform::ProblemOf;
namespace fs = std::filesystem;

namespace {

std::shared_ptr<void> Nothing(const std::string&) { return nullptr; }

std::shared_ptr<void> AFile(const std::string& path)
{
    std::ofstream(path) << "old";
    return nullptr;
}

std::shared_ptr<void> AFolder(const std::string& path)
{
    fs::create_directory(path);
    return nullptr;
}

const MovingRow kRows[] = {
    {"free name", Nothing, Existing::Fail, FileProblem::None},
    {"free name, replace", Nothing, Existing::Replace, FileProblem::None},
    {"existing file", AFile, Existing::Fail, FileProblem::Exists},
    {"existing file, replace", AFile, Existing::Replace, FileProblem::None},
    {"folder", AFolder, Existing::Fail, FileProblem::IsAFolder},
    {"folder, replace", AFolder, Existing::Replace, FileProblem::IsAFolder},
};

/// Does it from one folder into another; the target of a failure and the source must be as before.
void CheckRow(const MovingRow& row, const std::string& targetParent, bool move)
{
    SCOPED_TRACE(row.what);
    const CTemporaryFolder source, target{targetParent};
    const auto from = source.Write("a.pdf", "new"), to = target / "b.pdf";
    auto keeper = row.makeTarget(to);
    const auto entries = target.EntryCount();
    const auto before = fs::symlink_status(to).type();
    const auto result = move ? MoveFile(from, to, row.existing) : CopyFile(from, to, row.existing);
    keeper.reset();
    EXPECT_EQ(ProblemOf(result), row.problem) << result.errorNumber;
    EXPECT_EQ(FileBytes(from), move && result ? "<missing>" : "new");
    if (result) {
        EXPECT_EQ(FileBytes(to), "new");
    } else {
        EXPECT_EQ(fs::symlink_status(to).type(), before);
        EXPECT_TRUE(before != fs::file_type::regular || FileBytes(to) == "old");
    }
    EXPECT_EQ(target.EntryCount(), entries + (result && entries == 0)) << "leftovers";
}

void CheckRows(const std::string& targetParent, bool move)
{
    for (const auto& row : kRows) CheckRow(row, targetParent, move);
    for (const auto& row : RowsOfThisSystem()) CheckRow(row, targetParent, move);
}

}  // namespace

TEST(FileMoving, CopyingObeysWhatStandsAtTheTarget) { CheckRows({}, false); }

TEST(FileMoving, MovingObeysWhatStandsAtTheTarget) { CheckRows({}, true); }

TEST(FileMoving, MovingAcrossFileSystemsObeysTheSameRules)
{
    const auto other = OtherFileSystem();
    if (!other) GTEST_SKIP() << "this machine has one file system only";
    CheckRows(*other, true);
}

TEST(FileMoving, AmongManyAtOnceOnlyOneGetsTheName)
{
    constexpr int kThreads = 8;
    for (const bool move : {false, true}) {
        const CTemporaryFolder folder;
        std::vector<std::string> sources;
        for (int i = 0; i < kThreads; ++i)
            sources.push_back(folder.Write("s" + std::to_string(i), std::to_string(i)));
        std::atomic<int> winners{0}, refused{0};
        std::vector<std::thread> threads;
        for (const auto& source : sources) {
            threads.emplace_back([&, to = folder / "target"] {
                const auto result =
                    move ? MoveFile(source, to, Existing::Fail) : CopyFile(source, to, Existing::Fail);
                ++(result ? winners : refused);
            });
        }
        for (auto& thread : threads) thread.join();
        EXPECT_EQ(winners, 1);
        EXPECT_EQ(refused, kThreads - 1);
        EXPECT_EQ(folder.EntryCount(), move ? kThreads : kThreads + 1u);
    }
}

TEST(FileMoving, AFileMovedOrCopiedOntoItselfSurvives)
{
    enum class Way { SamePath, OtherSpelling, HardLink };
    const struct {
        Way way;
        bool sourceRemains;
    } rows[] = {{Way::SamePath, true}, {Way::OtherSpelling, true}, {Way::HardLink, false}};
    for (const auto& row : rows) {
        SCOPED_TRACE(static_cast<int>(row.way));
        const CTemporaryFolder folder;
        const std::string from = folder.Write("a.pdf", "content");
        std::string to = from;
        if (row.way == Way::OtherSpelling) to = folder.Path() + "/./a.pdf";
        if (row.way == Way::HardLink) fs::create_hard_link(from, to = folder / "b.pdf");

        EXPECT_EQ(ProblemOf(CopyFile(from, to, Existing::Fail)), FileProblem::Exists);
        EXPECT_EQ(ProblemOf(CopyFile(from, to, Existing::Replace)), FileProblem::NotARegularFile);
        EXPECT_EQ(ProblemOf(MoveFile(from, to, Existing::Fail)), FileProblem::Exists);
        EXPECT_EQ(FileBytes(from), "content");
        EXPECT_TRUE(MoveFile(from, to, Existing::Replace));
        EXPECT_EQ(FileBytes(to), "content");
        EXPECT_EQ(platform::NameExists(from), row.sourceRemains);
    }
}

TEST(FileMoving, ACopyKeepsTheTimeStamp)
{
    const CTemporaryFolder folder;
    const auto from = folder.Write("a", "x"), to = folder / "b";
    const auto then = fs::last_write_time(from) - std::chrono::hours(1000);
    fs::last_write_time(from, then);
    ASSERT_TRUE(CopyFile(from, to, Existing::Fail));
    EXPECT_EQ(fs::last_write_time(to), then);
}
