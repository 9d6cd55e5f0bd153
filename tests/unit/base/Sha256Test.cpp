#include "base/Sha256.h"
#include "platform/FileDigest.h"

#include <gtest/gtest.h>

#include "platform/FileProblem.h"
#include "support/TemporaryFolder.h"

using platform::FileProblem;
using platform::ProblemOf;

TEST(Sha256, FilesAndPiecesHaveTheKnownDigests)
{
    const CTemporaryFolder folder;
    const struct {
        std::string bytes;
        const char* digest;
    } rows[] = {{"", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
                {"abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
                {std::string(1'000'000, 'a'), "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"}};
    for (const auto& row : rows) {
        EXPECT_EQ(platform::Sha256OfFile(folder.Write("file", row.bytes)), row.digest);
        CSha256 pieces;
        for (std::size_t at = 0; at < row.bytes.size(); at += 77) {
            const auto piece = row.bytes.substr(at, 77);
            pieces.Add(piece.data(), piece.size());
        }
        EXPECT_EQ(pieces.Digest(), row.digest);
    }
    platform::FileResult result;
    EXPECT_EQ(platform::Sha256OfFile(folder / "missing", &result), "");
    EXPECT_EQ(ProblemOf(result), FileProblem::Missing);
    EXPECT_EQ(platform::Sha256OfFile(folder.Path(), &result), "");
    EXPECT_EQ(ProblemOf(result), FileProblem::IsAFolder);
}
