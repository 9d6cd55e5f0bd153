// What a run has done, read from its record or journal, the latest first.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "base/Expected.h"
#include "protocol/FileRecord.h"
#include "protocol/RunReach.h"
#include "supervisor/journal/LineReader.h"

/// One act, and what the run knew of it afterwards.
struct ActToUndo {
    IntendedAct act = {};
    std::string input = {};   ///< path of the file that it was done for
    bool mayNotHave = false;  ///< what became of the file does not list it: it may not have happened at all
};

/// The acts of a run. Memory: 16 bytes for each.
class CActsToUndo {
public:
    /// `path`: a record or a journal. Fails with a sentence: nothing of the file can be used, or it says something
    /// that the run could not have done.
    [[nodiscard]] static Expected<CActsToUndo> Open(const std::string& path);

    /// Only looks at the first line, for the id of the run. Fails with a sentence.
    [[nodiscard]] static Expected<std::string> RunOf(const std::string& path);

    const RunReach& Reach() const { return m_reach; }
    std::size_t Count() const { return m_entries.size(); }
    /// Visits all acts, the latest first, until `visit` answers false. Fails when the file cannot be read again.
    [[nodiscard]] std::string ForEach(const std::function<bool(const ActToUndo& act)>& visit) const;
    /// Folders of all files that the acts name, for what was left unfinished in them.
    const std::set<std::string>& Folders() const { return m_folders; }

private:
    struct Entry {
        std::uint64_t order;
        std::uint64_t line;  // its offset, and in the lowest 16 bits the place of the act in its record
    };
    class CJournalActs;

    // Fail with a sentence, the next ones with one that has no full stop.
    std::string ReadRecord();
    std::string ReadJournalFile();
    std::string AddRecord(const FileRecord& record, std::uint64_t offset);
    std::string Add(const IntendedAct& act, const std::string& input, std::uint64_t offset, std::size_t place);
    std::string ProblemWith(const IntendedAct& act, const std::string& input) const;
    bool Covers(const std::string& path, const std::string& input) const;
    void Sort(bool oneJournal);

    std::string m_path;
    RunReach m_reach;
    std::vector<Entry> m_entries;
    std::set<std::string> m_folders;
};
