#include "supervisor/FileQueue.h"

#include "supervisor/ManifestRun.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

/// Files 1, 2, ... with these groups.
CScheduler::Source FilesOf(std::vector<std::uint32_t> groups)
{
    return [groups, next = std::size_t{0}]() mutable -> std::optional<PlannedFile> {
        if (next == groups.size()) return std::nullopt;
        ++next;
        return PlannedFile{.number = static_cast<int>(next), .group = groups[next - 1]};
    };
}

int Take(CScheduler& files)
{
    const auto file = files.Take();
    return file ? file->number : 0;
}

TEST(Scheduler, HandsOutAGroupInOrderAndOneFileAtATime)
{
    CScheduler files(FilesOf({7, 7, 0, 7, 8, 7}));
    EXPECT_EQ(Take(files), 1);
    EXPECT_EQ(Take(files), 3) << "2 waits for 1";
    EXPECT_EQ(Take(files), 5) << "4 waits, too";
    EXPECT_EQ(Take(files), 0);
    EXPECT_FALSE(files.Empty());
    files.Done(8);
    EXPECT_EQ(Take(files), 0);
    files.Done(7);
    EXPECT_EQ(Take(files), 2);
    EXPECT_EQ(Take(files), 0);
    files.Done(7);
    EXPECT_EQ(Take(files), 4);
    files.Done(7);
    EXPECT_EQ(Take(files), 6);
    EXPECT_TRUE(files.Empty());
}

TEST(Scheduler, HoldsBackNoMoreThanItsLookahead)
{
    int read = 0;
    CScheduler files([&]() -> std::optional<PlannedFile> { return PlannedFile{.number = ++read, .group = 1}; }, 10);
    EXPECT_EQ(Take(files), 1);
    for (int attempt = 0; attempt < 5; ++attempt) EXPECT_EQ(Take(files), 0);
    EXPECT_EQ(read, 11);
    files.Done(1);
    EXPECT_EQ(Take(files), 2);
}

TEST(Shards, DivideEveryFileExactlyOnceAndNoGroup)
{
    std::map<std::uint64_t, int> shardOfGroup;
    std::vector<int> sizes(5, 0);
    for (int number = 1; number <= 10000; ++number) {
        const PlannedFile file{.number = number,
                               .group = number % 3 == 0 ? static_cast<std::uint32_t>(number % 400) : 0};
        int found = 0;
        for (int shard = 1; shard <= 4; ++shard) {
            if (!IsInShard(file, shard, 4)) continue;
            ++found;
            ++sizes[static_cast<std::size_t>(shard)];
            const bool whole = file.group == 0 || shardOfGroup.emplace(file.group, shard).first->second == shard;
            EXPECT_TRUE(whole) << number;
        }
        ASSERT_EQ(found, 1) << number;
    }
    for (int shard = 1; shard <= 4; ++shard) EXPECT_NEAR(sizes[static_cast<std::size_t>(shard)], 2500, 500);
}

}  // namespace
