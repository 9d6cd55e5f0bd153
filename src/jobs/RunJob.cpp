#include "jobs/RunJob.h"

#include "batchrun/RunDriver.h"
#include "jobs/JobInputs.h"

void DoRunJob(const RunOrder& order, const JobServices& services) noexcept
{
    CJobInputs inputs;
    CRunDriver driver({.settings = [&] { return DescribedSettings(order.description, order.dryRun, services.log); },
                       .log = services.log,
                       .events = services.events,
                       .host = services.host,
                       .inputs = &inputs});
    driver.Idle();
}
