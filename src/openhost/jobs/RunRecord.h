#ifndef FERRULE_OPENHOST_JOBS_RUN_RECORD_H
#define FERRULE_OPENHOST_JOBS_RUN_RECORD_H

#include <array>
#include <string>
#include <string_view>

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

}  // namespace openhost

#endif
