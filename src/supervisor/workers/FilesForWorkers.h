// Files on their way to workers and back: in which order and with which others, what an earlier start of the run has
// left of them, whether they changed, and what became of them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "supervisor/RunObserver.h"
#include "supervisor/journal/JournalIndex.h"
#include "supervisor/results/OutcomeRecorder.h"
#include "supervisor/resume/ResumePoint.h"
#include "supervisor/workers/PretendedActs.h"
#include "supervisor/workers/Worker.h"

/// Files whose names meet those of others: handed out one at a time, and kept from being replaced.
/// Streams through the files in input order. Files of one group are handed out one at a time, in order; a file whose
/// group is in hand is held back, and at most `lookahead` files are.
class CGroupedFiles {
public:
    /// Answers the files in order, then nothing.
    using Source = std::function<std::optional<PlannedFile>()>;
    static constexpr std::size_t kLookahead = 1000;

    explicit CGroupedFiles(Source source, std::size_t lookahead = kLookahead);

    /// The next file that may be processed now. The caller says Done with its group when it is dealt with.
    [[nodiscard]] std::optional<PlannedFile> Take();
    void Done(std::uint32_t group) { m_busy.erase(group); }
    /// No file is left to be taken, now or later.
    [[nodiscard]] bool Empty();

private:
    bool IsBusy(const PlannedFile& file) const { return file.group != 0 && m_busy.contains(file.group); }
    std::optional<PlannedFile> TakeHeldBack();
    std::optional<PlannedFile> Read();
    PlannedFile Handed(PlannedFile file);

    Source m_source;
    std::size_t m_lookahead;
    bool m_sourceEnded = false;
    std::optional<PlannedFile> m_peeked;
    std::deque<PlannedFile> m_heldBack;
    std::unordered_set<std::uint32_t> m_busy;  // groups in hand
};

/// The inputs of a run that are in groups.
/// Memory: eight bytes for each input of a group.
class CGroupedInputs {
public:
    /// A file of the manifest; those that are alone do not count.
    void Add(const PlannedFile& file);
    /// Once, after the last file.
    void Complete();

    bool Contains(const std::string& path) const;

private:
    std::vector<std::uint64_t> m_hashes;  // of the paths, sorted
};

class CFilesForWorkers {
public:
    /// Everything is borrowed. `earlier`: what the journal says of an earlier start; null for a new run.
    /// `again`: the files with an outcome that are to be done again, with where that stands.
    struct Parts {
        CGroupedFiles& files;
        COutcomeRecorder& results;
        const RunFacts& facts;
        CJournalIndex* earlier = nullptr;
        const std::map<int, DonePlace>* again = nullptr;
        COutcomeSorter::Reader readDone;
        const CPretendedActs* pretended = nullptr;  // of a trial run
    };
    explicit CFilesForWorkers(const Parts& parts) : m_parts(parts) {}

    /// The next file for a worker. What needs none (changed since the plan, or done by an earlier start) is dealt
    /// with on the way. Fails: nothing, and Problem says why; also nothing while all that is left has to wait.
    [[nodiscard]] std::optional<FileInHand> Next();
    [[nodiscard]] bool Empty() { return m_returned.empty() && m_parts.files.Empty(); }
    /// A file whose worker died and that goes on with another one.
    void Return(FileInHand file) { m_returned.push_back(std::move(file)); }
    /// The file has its outcome. Fails: Problem says why.
    bool Finish(DoneFile done, const FileInHand& hand);
    /// Something is going to be written to the path of a target.
    void NoteTarget(const PlannedFile& file, const std::string& target);

    /// Why the journal cannot be written; empty as long as it can.
    const std::string& Problem() const { return m_problem; }

private:
    enum class Readiness { Ready, DealtWith };

    Readiness Prepare(FileInHand& hand);
    Readiness PrepareWhole(FileInHand& hand);
    Readiness PrepareFinalAction(FileInHand& hand);
    void TakeUp(FileInHand& hand);
    Readiness PrepareAgain(FileInHand& hand, const DonePlace& place);
    bool MayHaveStarted(int number) const;
    bool TakeBackResults(const PlannedFile& file) const;
    Readiness TakeUpWhatWasBegun(FileInHand& hand);
    Readiness Skip(const FileInHand& hand, FileOutcome outcome, const std::string& message);
    Readiness PreparePretended(FileInHand& hand);
    bool IsAsPlanned(const PlannedFile& file, const platform::FileStamp& stamp) const;
    bool WasOurs(const PlannedFile& file) const;
    bool Journaled(const platform::FileResult& result);

    Parts m_parts;
    std::deque<FileInHand> m_returned;
    std::unordered_set<std::string> m_targets;  // of files in groups
    std::string m_problem;
};

/// The block of the log and the record of a file, put together from what its worker has told, or was made of it when
/// it had not, and what was known of the file before.
[[nodiscard]] DoneFile CombineDone(const FileInHand& hand, FileRecord record, LogBlock block);
/// The block of the log and the record of a file that no worker has said anything about.
[[nodiscard]] DoneFile DoneWithoutWorker(const PlannedFile& file, FileOutcome outcome, const std::string& message);
