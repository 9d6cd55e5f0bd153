// The records of runs as people have them: records, journals of parts, packed runs; whole, cut off or edited.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "report/RunSums.h"

/// Numbers of files, in little memory where they lie close together.
class CNumberSet {
public:
    /// False when it was there already.
    bool Add(int number);
    std::uint64_t Size() const { return m_size; }

private:
    static constexpr int kBits = 64, kWords = 4;
    std::unordered_map<int, std::array<std::uint64_t, kWords>> m_chunks;
    std::uint64_t m_size = 0;
};

/// Reads records into sums. A file of a run that stands in several of them counts once, as it is in the record that
/// was read first. Memory: the longest line, and some bits for each file.
class CRecordReading {
public:
    /// Borrowed.
    explicit CRecordReading(CRunSums& sums) : m_sums(sums) {}

    /// Whatever cannot be told becomes a problem of the sums that names file and line. False when the file tells
    /// nothing at all.
    bool Read(const std::string& path);
    /// After the last: what is missing of the runs.
    void Complete();

private:
    class CJournalOutcomes;
    struct Run {
        CNumberSet numbers;
        std::uint64_t total = 0;  // 0: no record tells
        std::uint64_t repeated = 0;
    };

    bool ReadAs(const std::string& path, const std::string& shownPath);
    bool ReadRecord(const std::string& path, RecordSource& source);
    bool ReadJournalFile(const std::string& path, RecordSource& source);
    /// False: not the line of a record.
    bool AddLine(const Json& object, RecordSource& source);
    void AddFile(const FileRecord& record, RecordSource& source);

    CRunSums& m_sums;
    std::map<std::string, Run> m_runs;  // by id
};

/// The sums of all these records, of which the last that has a file counts. False when none of them told anything.
[[nodiscard]] bool SumUpRecords(const std::vector<std::string>& paths, CRunSums& sums);
