#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/Text.h"
#include "supervisor/watch/FolderLook.h"
#include "supervisor/watch/WatchJournal.h"
#include "supervisor/watch/WatchModel.h"
#include "support/TemporaryFolder.h"

namespace {

constexpr WatchRules kRules{.minAgeMs = 5000, .tries = 3, .firstPauseMs = 60'000};

/// One moment of a watch. `folder`: what a look sees, "a=1" for version 1 of a, "a=1*" when only its inode changed
/// since; "-": nobody looks; a leading "?": not all could be read. `ready`: what may be taken then. `does`: what
/// becomes of that: "done", "fail", "quarantine"; or, whatever is ready, "release", "restart" or "compact".
struct Moment {
    std::uint64_t seconds;
    std::string folder, ready, does = {};
};

/// A watch over a folder and a clock that are only told, with a journal on the disk.
class CToldWatch {
public:
    CToldWatch() { Start(0); }

    void Do(const Moment& moment)
    {
        const std::uint64_t now = moment.seconds * 1000;
        if (moment.folder != "-") Look(moment.folder, now);
        const std::vector<SeenFile> ready = m_model->Ready(now, 100);
        std::string names;
        for (const SeenFile& file : ready) names += (names.empty() ? "" : " ") + file.path;
        EXPECT_EQ(names, moment.ready);
        std::string problem;
        if (moment.does == "release") problem = m_journal->Forget(m_model->ReleaseQuarantined());
        if (moment.does == "compact") problem = m_journal->Compact(*m_model);
        EXPECT_EQ(problem, "");
        if (moment.does == "restart" || moment.does == "compact") Start(now);
        for (const SeenFile& file : ready) Settle(file, moment.does, now);
    }

    std::string Quarantined() const
    {
        std::string found;
        for (const WatchedFile& file : m_model->Quarantined())
            found +=
                (found.empty() ? "" : " ") + file.path + ':' + std::to_string(file.tries) + ':' + file.trouble.reason;
        return found;
    }

    std::string JournalPath() const { return m_folder / "watch.jsonl"; }

private:
    static std::string Hash(const WatchStamp& stamp) { return std::string(64, static_cast<char>('0' + stamp.size)); }

    void Start(std::uint64_t now)
    {
        m_model = std::make_unique<CWatchModel>(kRules);
        m_journal = std::make_unique<CWatchJournal>(JournalPath());
        EXPECT_EQ(m_journal->Open(*m_model, now), "");
    }

    void Look(const std::string& folder, std::uint64_t now)
    {
        std::vector<SeenFile> files;
        for (const std::string& word : Split(folder, " ")) {
            const auto equals = word.find('=');
            if (equals == std::string::npos) continue;
            const auto version = static_cast<std::uint64_t>(word[equals + 1] - '0');
            files.push_back({word.substr(0, equals),
                             {.size = version,
                              .modifiedNanoseconds = static_cast<std::int64_t>(version),
                              .inode = word.ends_with('*') ? 2U : 1U}});
        }
        m_model->Look(files, !folder.starts_with('?'), now, 1000);
    }

    void Settle(const SeenFile& file, const std::string& does, std::uint64_t now)
    {
        WatchedFile kept;
        if (does == "done") kept = m_model->Done(file.path, file.stamp, Hash(file.stamp), 1000);
        if (does == "fail") kept = m_model->Failed(file, Hash(file.stamp), "broken", now, 1000);
        if (does == "quarantine") kept = m_model->Quarantine(file, {}, "damaged", 1000);
        if (kept.path.empty()) return;
        EXPECT_EQ(m_journal->Add({kept}), "");
    }

    CTemporaryFolder m_folder;
    std::unique_ptr<CWatchModel> m_model;
    std::unique_ptr<CWatchJournal> m_journal;
};

TEST(WatchModel, TakesEachVersionOnceAndTriesAgainAfterGrowingPauses)
{
    struct Row {
        const char* what;
        std::vector<Moment> moments;
        std::string quarantined = {};
    };
    const Row rows[] = {
        {"unchanged for long enough at two looks", {{0, "a=1", ""}, {4, "a=1", ""}, {5, "a=1", "a"}}},
        {"time alone makes nothing ready: nobody has looked", {{0, "a=1", ""}, {60, "-", ""}}},
        {"grows", {{0, "a=1", ""}, {5, "a=2", ""}, {9, "a=2", ""}, {10, "a=2", "a"}}},
        {"replaced by a copy of the same size and time", {{0, "a=1", ""}, {5, "a=1*", ""}, {10, "a=1*", "a"}}},
        {"those that wait longest come first", {{0, "b=1", ""}, {1, "a=1 b=1", ""}, {6, "a=1 b=1", "b a"}}},
        {"gone before it was taken, and there again",
         {{0, "a=1", ""}, {5, "", ""}, {6, "a=1", ""}, {11, "a=1", "a"}}},
        {"not seen because a folder could not be read", {{0, "a=1", ""}, {5, "?", ""}, {6, "a=1", "a"}}},
        {"done, also after a restart",
         {{0, "a=1", ""}, {5, "a=1", "a", "done"}, {6, "a=1", "", "restart"}, {7, "a=1", ""}, {12, "a=1", ""}}},
        {"done, and a share was empty for a while",
         {{0, "a=1", ""}, {5, "a=1", "a", "done"}, {6, "", ""}, {7, "a=1", ""}, {99, "a=1", ""}}},
        {"links and rights of what is done change",
         {{0, "a=1", ""}, {5, "a=1", "a", "done"}, {6, "a=1*", ""}, {99, "a=1*", ""}}},
        {"a new version of what is done",
         {{0, "a=1", ""}, {5, "a=1", "a", "done"}, {6, "a=2", "", "compact"}, {7, "a=2", ""}, {12, "a=2", "a"}}},
        {"fails three times",
         {{0, "a=1", ""},
          {5, "a=1", "a", "fail"},
          {64, "a=1", ""},
          {65, "a=1", "a", "fail"},
          {304, "a=1", ""},
          {305, "a=1", "a", "fail"},
          {99'999, "a=1", ""}},
         "a:3:broken"},
        {"a restart makes no pause shorter and forgets no try",
         {{0, "a=1", ""},
          {5, "a=1", "a", "fail"},
          {65, "a=1", "a", "fail"},
          {66, "-", "", "compact"},
          {67, "a=1", ""},
          {305, "a=1", ""},
          {306, "a=1", "a", "fail"},
          {99'999, "a=1", "", "restart"},
          {100'000, "a=1", ""}},
         "a:3:broken"},
        {"a new version begins with no failures",
         {{0, "a=1", ""},
          {5, "a=1", "a", "fail"},
          {65, "a=1", "a", "fail"},
          {66, "a=2", ""},
          {71, "a=2", "a", "fail"}}},
        {"quarantine is left by a new version",
         {{0, "a=1 b=1", ""}, {5, "a=1 b=1", "a b", "quarantine"}, {6, "a=2 b=1", ""}, {11, "a=2 b=1", "a"}},
         "b:1:damaged"},
        {"quarantine is released",
         {{0, "a=1", ""},
          {5, "a=1", "a", "quarantine"},
          {6, "a=1", "", "release"},
          {7, "a=1", "", "restart"},
          {8, "a=1", ""},
          {13, "a=1", "a"}}},
        {"the list names only what is there", {{0, "a=1", ""}, {5, "a=1", "a", "quarantine"}, {6, "", ""}}},
    };
    for (const Row& row : rows) {
        CToldWatch watch;
        for (const Moment& moment : row.moments) {
            SCOPED_TRACE(std::string(row.what) + ", at " + std::to_string(moment.seconds));
            watch.Do(moment);
        }
        EXPECT_EQ(watch.Quarantined(), row.quarantined) << row.what;
    }
}

TEST(WatchJournal, TornEndIsCutOffAndDamageIsRefused)
{
    const CTemporaryFolder folder;
    const std::string path = folder / "watch.jsonl";
    const std::vector<SeenFile> batch = {{"a\xff", {.size = 3, .modifiedNanoseconds = 4}}};
    {
        CWatchModel model(kRules);
        CWatchJournal journal(path);
        ASSERT_EQ(journal.Open(model, 0), "");
        ASSERT_EQ(journal.BeginBatch(batch), "");
    }
    std::ofstream(path, std::ios::app) << "{\"end\":tr";
    {
        CWatchModel model(kRules);
        CWatchJournal journal(path);
        ASSERT_EQ(journal.Open(model, 0), "");
        ASSERT_EQ(journal.OpenBatch().size(), 1U);
        EXPECT_EQ(journal.OpenBatch().front().path, batch.front().path);
        EXPECT_TRUE(journal.OpenBatch().front().stamp.IsSameVersion(batch.front().stamp));
        ASSERT_EQ(journal.EndBatch({}, {}), "");
    }
    CWatchModel model(kRules);
    CWatchJournal journal(path);
    ASSERT_EQ(journal.Open(model, 0), "");
    EXPECT_TRUE(journal.OpenBatch().empty());
    for (const auto& [text, problem] :
         {std::pair("\n{\"file\":{}}\n", "damaged in line"), std::pair("junk\n", "damaged in line")}) {
        std::ofstream(path, std::ios::app) << text;
        CWatchModel other(kRules);
        EXPECT_NE(CWatchJournal(path).Open(other, 0).find(problem), std::string::npos) << text;
    }
    std::ofstream(path) << "{\"ferrule\":\"watch\",\"version\":2}\n";
    EXPECT_NE(CWatchJournal(path).Open(model, 0).find("newer version"), std::string::npos);
}

TEST(FolderLook, NamesOfWhatIsNotCompleteAreLeftAlone)
{
    for (const char* const name : {".a.pdf", "~$a.pdf", "a.pdf~", "a.pdf.part", "a.pdf.CRDOWNLOAD", "a.pdf.tmp"})
        EXPECT_TRUE(IsTemporaryName(name)) << name;
    for (const char* const name : {"a.pdf", "part.pdf", "~a.pdf", "a.tmp.pdf"})
        EXPECT_FALSE(IsTemporaryName(name)) << name;
}

}  // namespace
