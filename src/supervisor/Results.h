// What comes of the files of a run or shard: journal, counts, progress, and the way to log and record.
#pragma once

#include "supervisor/DoneIndex.h"
#include "supervisor/InputOrder.h"
#include "supervisor/Journal.h"
#include "supervisor/RunObserver.h"

#include <array>
#include <optional>
#include <string>
#include <utility>
#include <vector>

class CEpilogues {
public:
    /// What differs from earlier ones only in times takes the place of those.
    void Add(std::vector<std::string> lines);
    bool Empty() const { return m_epilogues.empty(); }
    /// What each has of its own, one after the other, and then what all of them end with. A worker that could open
    /// none of its files has nothing of its own.
    [[nodiscard]] std::vector<std::string> Joined() const;

private:
    std::vector<std::vector<std::string>> m_epilogues;  // none like another
};

class CResults {
public:
    /// Everything is borrowed. `journal`: null in a trial run. `order`: null when there is neither log nor record.
    struct Parts {
        CDoneIndex& done;
        CJournalWriter* journal = nullptr;
        CInputOrder* order = nullptr;
        CRunObserver& observer;
    };
    CResults(const Parts& parts, RunProgress progress) : m_parts(parts), m_progress(progress) {}

    /// On disk when this comes back.
    platform::FileResult AddIntent(const Intent& intent);
    /// The file, which had an outcome, is begun again.
    platform::FileResult AddAgain(int number, ToDo toDo);
    /// Only one that is in the journal is passed on.
    platform::FileResult AddDone(const DoneFile& done);
    /// The outcome that stands at this place of the journal stays.
    void KeepDone(const DoneFile& done, const DonePlace& place);
    /// A worker's last lines.
    void AddEpilogue(std::vector<std::string> lines) { m_epilogues.Add(std::move(lines)); }
    /// Those of the run.
    [[nodiscard]] std::vector<std::string> Epilogue() const { return m_epilogues.Joined(); }

    const RunProgress& Progress() const { return m_progress; }
    bool IsTrial() const { return m_parts.journal == nullptr; }

private:
    void Count(const DoneFile& done, const DonePlace& place);

    Parts m_parts;
    RunProgress m_progress;
    CEpilogues m_epilogues;
};
