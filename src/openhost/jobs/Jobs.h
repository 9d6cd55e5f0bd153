#ifndef FERRULE_OPENHOST_JOBS_JOBS_H
#define FERRULE_OPENHOST_JOBS_JOBS_H

#include <memory>
#include <optional>
#include <string>

#include "openhost/jobs/JobSource.h"
#include "openhost/jobs/Ledger.h"

namespace openhost {

/// The job of this host: its source, and the ledger that watches over what this process does to files for good. The
/// ledger is installed as the overseer of this program as long as this object lives.
class CJobs {
public:
    CJobs();
    ~CJobs();
    CJobs(const CJobs&) = delete;
    CJobs& operator=(const CJobs&) = delete;

    /// Before anything is done; without it the run is one without a job.
    void TakeFrom(std::shared_ptr<CJobSource> source);

    CJobSource& Source() { return *m_source; }
    CLedger& Ledger() { return *m_ledger; }
    /// Null when there is none left.
    const JobInputFile* NextInput();

private:
    void Install();

    std::shared_ptr<CJobSource> m_source;
    std::unique_ptr<CLedger> m_ledger;
    COverseer* m_former = nullptr;
    std::optional<JobInputFile> m_input;  // the one handed out last
};

/// Offers the table through which plug-ins get their job and tell of their runs. Once for each host.
void OfferJobsTable();

}  // namespace openhost

#endif
