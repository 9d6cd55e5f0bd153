#include "cli/LogCommand.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "support/TemporaryFolder.h"

namespace {

void Append(const std::string& path, const std::string& text)
{
    std::ofstream(path, std::ios::app | std::ios::binary) << text;
}

std::string All(cli::CLogTail& tail)
{
    std::string all;
    for (std::string piece = tail.Poll(); !piece.empty(); piece = tail.Poll()) all += piece;
    return all;
}

}  // namespace

TEST(LogTail, FollowsWhatIsAddedAlsoToALogThatIsMadeLater)
{
    const CTemporaryFolder folder;
    const std::string path = folder / "log";
    cli::CLogTail tail(path);
    EXPECT_EQ(All(tail), "");
    Append(path, "one\n");
    EXPECT_EQ(All(tail), "one\n");
    EXPECT_EQ(All(tail), "");
    Append(path, "tw");
    Append(path, std::string(200'000, 'x') + "\n");
    EXPECT_EQ(All(tail), "tw" + std::string(200'000, 'x') + "\n");
}

TEST(LogTail, LosesNothingWhenTheLogIsSetAside)
{
    const CTemporaryFolder folder;
    const std::string path = folder / "log";
    Append(path, "old\n");
    cli::CLogTail tail(path);
    EXPECT_EQ(All(tail), "old\n");
    Append(path, "last of the old\n");
    std::filesystem::rename(path, folder / "archive");
    EXPECT_EQ(All(tail), "last of the old\n");
    Append(path, "new\n");
    EXPECT_EQ(All(tail), "new\n");
}

TEST(LogTail, BeginsAgainWhenTheLogIsEmptied)
{
    const CTemporaryFolder folder;
    const std::string path = folder.Write("log", "a long old text\n");
    cli::CLogTail tail(path);
    EXPECT_EQ(All(tail), "a long old text\n");
    folder.Write("log", "short\n");
    EXPECT_EQ(All(tail), "short\n");
}
