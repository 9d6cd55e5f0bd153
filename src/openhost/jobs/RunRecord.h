#pragma once

#include <array>
#include <memory>
#include <string>
#include <string_view>

#include "openhost/jobs/Jobs.h"
#include "platform/Files.h"
#include "protocol/Outcomes.h"

namespace openhost {

/// What plug-ins have told of their runs over files, and what the host says about it.
class CRunRecord {
public:
    bool verbose = false;  ///< says every file, not only those that did not come out
    bool silent = false;   ///< says nothing: somebody gets the records

    void RunStarts();
    void FileDone(std::string_view path, FileOutcome outcome, std::string_view message);
    void RunEnds(RunEnd end, std::string_view message);

    bool Told() const { return m_told; }  ///< somebody has used the table at all
    bool Running() const { return m_running > 0; }
    /// A run did not start, broke off, or never said how it ended.
    bool Broken() const { return m_broken || Running(); }
    int Files() const;
    int Saved() const { return m_counts[static_cast<std::size_t>(FileOutcome::Saved)]; }
    /// "12 files: 10 saved, 2 failed".
    std::string Summary() const;

private:
    std::array<int, kFileOutcomes> m_counts{};
    int m_running = 0;
    bool m_told = false;
    bool m_broken = false;
};

/// The run without a job whose records somebody wants in a file, each a line that is there as soon as its input file
/// is done.
class CRecordFile final : public CJobSource {
public:
    /// Creates the file. One that is there is replaced when it is empty or a record itself, or no file at all but a
    /// pipe or a device. Null, with a sentence in `problem`, when that fails.
    static std::shared_ptr<CRecordFile> Create(const std::string& path, std::string& problem);

    bool WantsRecords() const override { return true; }
    /// Nothing is put in the place of the record, and the record is nobody's input that could be taken away.
    Answer MayAct(const IntendedAct& intended) override;
    void FileDone(const FileRecord& record) override;
    bool Broken() const override { return m_failed; }

private:
    CRecordFile(std::string path, platform::Stream stream) : m_path(std::move(path)), m_stream(std::move(stream)) {}

    std::string m_path;
    platform::Stream m_stream;
    bool m_failed = false;
};

}  // namespace openhost
