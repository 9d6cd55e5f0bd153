#include "jobs/PlannedFiles.h"

#include <gtest/gtest.h>

namespace {

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

}  // namespace
