#include "base/PathNames.h"
#include "jobs/PlannedFiles.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <algorithm>
#include <cctype>
#include <chrono>
#include <filesystem>
#include <numeric>
#include <random>
#include <regex>
#include <set>

namespace {

namespace fs = std::filesystem;

std::vector<PlannedFile> Plan(const std::string& folder, const WorkFacts& facts)
{
    CInputCollector inputs({{"pdf", "tif"}, true});
    inputs.AddPath(folder);
    const CPlannedFiles files(std::move(inputs), 0);
    CTouchedNames names(facts, {});
    std::vector<PlannedFile> planned;
    files.ForEach(names, [&](const PlannedFile& file) { planned.push_back(file); });
    return planned;
}

/// A folder tree with names that are likely to meet.
void MakeRandomTree(const CTemporaryFolder& folder, std::mt19937& random)
{
    const auto pick = [&](std::initializer_list<const char*> words) {
        return *(words.begin() + random() % words.size());
    };
    for (int i = 0; i < 40; ++i) {
        const std::string place = std::string(pick({"in", "in/a", "in/b", "in/a/c"}));
        folder.MakeFolder(place);
        const std::string path = folder / (place + '/' + pick({"x", "X", "y", "z", "long name"}) +
                                           pick({"", "", " (1)", "_o", " (2) (3)"}) + pick({".pdf", ".tif", ".PDF"}));
        if (fs::exists(fs::symlink_status(path))) continue;
        const auto before = fs::recursive_directory_iterator(folder / "in");
        const auto some = std::find_if(begin(before), end(before), [&](const fs::directory_entry& entry) {
            return entry.is_regular_file() && random() % 4 == 0;
        });
        const bool linked = random() % 5 == 0 && some != end(before);
        if (linked && (random() % 2 == 0 || !kHasLinks))
            fs::create_hard_link(some->path(), path);
        else if (linked)
            fs::create_symlink(some->path(), path);
        else
            folder.Write(path.substr(folder.Path().size() + 1), std::string(random() % 100, 'x'));
    }
}

/// The names that a file touches, by the simplest means: its own, and that of its result "<base>_o" in one folder.
std::set<std::string> NamesOf(const PlannedFile& file, const std::string& out)
{
    const auto comparable = [](std::string text) {
        for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        return std::regex_replace(text, std::regex("( \\([0-9]+\\))+$"), "");
    };
    const fs::path path = file.path;
    return {(path.parent_path() / comparable(path.stem().string())).string(),
            out + '/' + comparable(path.stem().string() + "_o")};
}

/// Files that may meet, also through others, get the same number.
std::vector<std::size_t> SlowSets(const std::vector<PlannedFile>& planned, const std::string& out)
{
    std::vector<std::size_t> sets(planned.size());
    std::iota(sets.begin(), sets.end(), std::size_t{0});
    std::vector<std::set<std::string>> names;
    for (const PlannedFile& file : planned) names.push_back(NamesOf(file, out));
    const auto meet = [&](std::size_t i, std::size_t j) {
        return fs::equivalent(planned[i].path, planned[j].path) ||
               std::any_of(names[i].begin(), names[i].end(),
                           [&](const auto& name) { return names[j].contains(name); });
    };
    for (std::size_t i = 0; i < planned.size(); ++i)
        for (std::size_t j = 0; j < i; ++j)
            if (sets[i] != sets[j] && meet(i, j))
                std::replace(sets.begin(), sets.end(), sets[i], std::size_t{sets[j]});
    return sets;
}

TEST(PlannedFiles, GroupsAreThoseOfASlowComparisonOfEveryPair)
{
    if (kNamesIgnoreCase) GTEST_SKIP() << "the comparison tells letter cases apart";
    std::mt19937 random(7);
    for (int round = 0; round < 40; ++round) {
        const CTemporaryFolder folder;
        folder.MakeFolder("in/a");
        const std::string out = folder.MakeFolder("in/b");  // results may be other inputs
        MakeRandomTree(folder, random);
        const WorkFacts facts{.results = {{.folder = out, .after = "_o"}}};
        const auto planned = Plan(folder / "in", facts);
        ASSERT_GT(planned.size(), 10u);

        const auto sets = SlowSets(planned, out);
        for (std::size_t i = 0; i < planned.size(); ++i) {
            const bool alone = std::count(sets.begin(), sets.end(), sets[i]) == 1;
            EXPECT_EQ(planned[i].group == 0, alone) << "round " << round << ": " << planned[i].path;
            for (std::size_t j = 0; j < i && !alone; ++j)
                EXPECT_EQ(planned[i].group == planned[j].group, sets[i] == sets[j])
                    << "round " << round << ": " << planned[i].path << " and " << planned[j].path;
        }
    }
}

TEST(PlannedFiles, TellsSizesAndLeavesOutWhatIsStillBeingWritten)
{
    const CTemporaryFolder folder;
    folder.Write("fresh.pdf", "x");
    const std::string old = folder.Write("old.pdf", "four");
    fs::last_write_time(old, fs::last_write_time(old) - std::chrono::hours(1));

    CInputCollector inputs({{"pdf"}, true});
    inputs.AddPath(folder.Path());
    inputs.AddPath(folder / "missing.pdf");
    const CPlannedFiles files(std::move(inputs), 60);
    EXPECT_EQ(files.TooYoung(), 1u);
    ASSERT_EQ(files.Count(), 2u);
    CTouchedNames names({}, {});
    std::vector<PlannedFile> planned;
    files.ForEach(names, [&](const PlannedFile& file) { planned.push_back(file); });
    EXPECT_EQ(planned[0].path, old);
    EXPECT_EQ(planned[0].number, 1u);
    EXPECT_EQ(planned[0].size, 4u);
    EXPECT_GT(planned[0].modifiedNanoseconds, 1'700'000'000'000'000'000);
    EXPECT_EQ(planned[1].path, folder / "missing.pdf");
    EXPECT_EQ(planned[1].number, 2u);
    EXPECT_EQ(planned[1].size, 0u);
}

}  // namespace
