#include "hostcalls/Jobs.h"

#include "hostapi/JobsTable.h"
#include "hostcalls/HostSlot.h"

bool JobsTablePresent() { return HostTables().Has(HostTable::FerruleJobs); }

void JobRunStarts(int inputs) noexcept
{
    if (JobsTablePresent()) hostcalls::Quietly([&] { HostCall(HOST_SLOT(FerruleJobs, JobsRunStarts), inputs); });
}

void JobFileDone(const std::string& path, int outcome, const std::string& message) noexcept
{
    if (JobsTablePresent())
        hostcalls::Quietly(
            [&] { HostCall(HOST_SLOT(FerruleJobs, JobsFileDone), path.c_str(), outcome, message.c_str()); });
}

void JobRunEnds(int end, const std::string& message) noexcept
{
    if (JobsTablePresent())
        hostcalls::Quietly([&] { HostCall(HOST_SLOT(FerruleJobs, JobsRunEnds), end, message.c_str()); });
}
