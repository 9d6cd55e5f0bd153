// What comes of the files of a run or shard: journal, counts, progress, and the way to log and record.
#pragma once

#include <array>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "supervisor/RunObserver.h"
#include "supervisor/journal/Journal.h"
#include "supervisor/journal/JournalIndex.h"

/// Puts what is done in any order into input order: passes each outcome on as soon as those of all earlier files are
/// known. Waiting ones are read again from their journal, so they take no memory; without a reader, as in a trial,
/// which has no journal, they are kept. Everything is borrowed.
class COutcomeSorter {
public:
    /// Reads an outcome again; nothing when that fails. May be empty.
    using Reader = std::function<std::optional<DoneFile>(const DonePlace& place)>;
    /// `written`: an earlier start of the run has logged it.
    using Taker = std::function<void(const DoneFile& done, bool written)>;

    COutcomeSorter(const CDoneIndex& done, Reader reader, Taker taker);

    /// Passes on what an earlier start of the run has left at the front.
    void Begin() { Advance(); }
    /// The file is in the index.
    void Done(const DoneFile& done, bool written = false);
    /// Passes on the rest, over the gaps of what is not done.
    void Finish();
    /// An outcome could not be read again.
    bool Failed() const { return m_failed; }

private:
    void Advance();
    void PassOn(int number);

    const CDoneIndex& m_done;
    std::map<int, DoneFile> m_waiting;  // by number; empty with a reader
    Reader m_reader;
    Taker m_taker;
    int m_next = 1;
    bool m_failed = false;
};

class CClosingLines {
public:
    /// What differs from earlier ones only in times takes the place of those.
    void Add(std::vector<std::string> lines);
    bool Empty() const { return m_closingLines.empty(); }
    /// What each has of its own, one after the other, and then what all of them end with. A worker that could open
    /// none of its files has nothing of its own.
    [[nodiscard]] std::vector<std::string> Joined() const;

private:
    std::vector<std::vector<std::string>> m_closingLines;  // none like another
};

class COutcomeRecorder {
public:
    /// Everything is borrowed. `journal`: null in a trial run. `order`: null when there is neither log nor record.
    struct Parts {
        CDoneIndex& done;
        CJournalWriter* journal = nullptr;
        COutcomeSorter* order = nullptr;
        CRunObserver& observer;
    };
    COutcomeRecorder(const Parts& parts, RunProgress progress) : m_parts(parts), m_progress(progress) {}

    /// On disk when this comes back. `order`: which it gets; those of later ones are greater.
    platform::FileResult AddIntent(const Intent& intent, std::uint64_t* order = nullptr);
    /// The file, which had an outcome, is begun again.
    platform::FileResult AddAgain(int number, ToDo toDo);
    /// Only one that is in the journal is passed on.
    platform::FileResult AddDone(const DoneFile& done);
    /// The outcome that stands at this place of the journal stays.
    void KeepDone(const DoneFile& done, const DonePlace& place);
    /// A worker's last lines.
    void AddEpilogue(std::vector<std::string> lines) { m_closingLines.Add(std::move(lines)); }
    /// Those of the run.
    [[nodiscard]] std::vector<std::string> Epilogue() const { return m_closingLines.Joined(); }

    const RunProgress& Progress() const { return m_progress; }
    bool IsTrial() const { return m_parts.journal == nullptr; }

private:
    void Count(const DoneFile& done, const DonePlace& place);

    Parts m_parts;
    RunProgress m_progress;
    CClosingLines m_closingLines;
};
