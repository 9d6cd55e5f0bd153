// What a journal says about where its shard stands.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "supervisor/RunObserver.h"
#include "supervisor/journal/Journal.h"

struct DonePlace {
    std::uint64_t offset = 0;  ///< in its journal
    int journal = 0;           ///< position in a list of the caller, below 65536
    FileOutcome outcome = FileOutcome::Failed;
    bool logged = false;  ///< its part of the log is written already
};

/// For files numbered from 1 to `total`.
class CDoneIndex {
public:
    explicit CDoneIndex(int total) : m_places(static_cast<std::size_t>(total) + 1, 0) {}

    int Total() const { return static_cast<int>(m_places.size()) - 1; }
    bool Contains(int number) const { return number >= 1 && number <= Total(); }
    /// The others only for numbers that it contains.
    bool IsDone(int number) const { return m_places[static_cast<std::size_t>(number)] != 0; }
    DonePlace At(int number) const;  ///< only when done
    void Set(int number, const DonePlace& place);
    void Forget(int number) { m_places[static_cast<std::size_t>(number)] = 0; }

private:
    std::vector<std::uint64_t> m_places;
};

/// Whether a file of this outcome is done again when that is asked for.
[[nodiscard]] bool IsRetried(FileOutcome outcome);

/// What was begun with a file that has no final outcome.
struct FileHistory {
    std::vector<Intent> intents = {};
    /// Its results were complete before: where the outcome stands that says so.
    std::optional<std::uint64_t> resultsOffset = {};
    /// Its outcome before it was begun again.
    std::optional<std::uint64_t> earlierOffset = {};
};

/// Filled by ReadJournal. Memory: eight bytes a file and eight for each intent, and what is open.
class CJournalIndex final : public CJournalVisitor {
public:
    /// `done` is borrowed. `journal`: the position of this journal in the caller's list.
    /// `retries`: files that were not saved may be done again, so what was begun with them is kept.
    explicit CJournalIndex(CDoneIndex& done, int journal = 0, bool retries = false)
        : m_done(done), m_journal(journal), m_retries(retries), m_told(static_cast<std::size_t>(done.Total()) + 1)
    {
    }

    /// By number.
    std::map<int, FileHistory>& Open() { return m_open; }
    /// Of files that were not saved, by number.
    const std::map<int, FileHistory>& NotSaved() const { return m_notSaved; }
    /// "finished", "stopped", "broken"; empty when the journal does not end with an end line.
    const std::string& Ending() const { return m_ending; }
    /// Of the last end line.
    const std::vector<std::string>& Epilogue() const { return m_epilogue; }
    /// Where the outcome stands that a start of the run has told before its end line: the file's own one, or the one
    /// before it was begun again.
    std::optional<std::uint64_t> ToldOutcome(int number) const;
    /// Whether the run was going to write to this path.
    bool HasTarget(const std::string& path) const;
    /// Folders of everything that the run was going to write.
    const std::set<std::string>& TargetFolders() const { return m_targetFolders; }
    /// Once, after reading.
    void Complete();

private:
    std::string OnIntent(Intent intent) override;
    std::string OnDone(const FileRecord& record, std::uint64_t offset) override;
    std::string OnAgain(int number, ToDo toDo) override;
    std::string OnEnd(const std::string& outcome, std::vector<std::string> epilogue) override;
    void MarkAllLogged();

    CDoneIndex& m_done;
    int m_journal;
    bool m_retries;
    std::map<int, FileHistory> m_open, m_notSaved;
    std::vector<std::uint64_t> m_targets;  // hashes, sorted by Complete
    std::set<std::string> m_targetFolders;
    std::vector<int> m_sinceEnd;  // done since the last end line
    std::vector<bool> m_told;     // by number: the present outcome stands before an end line
    std::map<int, std::uint64_t> m_toldBefore;
    std::string m_ending;
    std::vector<std::string> m_epilogue;
};
