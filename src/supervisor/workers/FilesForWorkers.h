// Files on their way to workers: what an earlier start of the run has left of them, and whether they changed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <unordered_set>

#include "supervisor/RunObserver.h"
#include "supervisor/journal/JournalIndex.h"
#include "supervisor/results/OutcomeRecorder.h"
#include "supervisor/resume/ResumePoint.h"
#include "supervisor/workers/FileGroups.h"
#include "supervisor/workers/PretendedActs.h"
#include "supervisor/workers/Worker.h"

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
    bool Finish(const DoneFile& done, const PlannedFile& file);
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

/// The block of the log and the record of a file that no worker has said anything about.
[[nodiscard]] DoneFile DoneWithoutWorker(const PlannedFile& file, FileOutcome outcome, const std::string& message);
