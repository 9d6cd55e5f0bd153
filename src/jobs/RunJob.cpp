#include "jobs/RunJob.h"

#include "batchrun/RunDriver.h"
#include "jobs/JobInputs.h"
#include "jobs/JobSettings.h"

void DoRunJob(const nlohmann::json& job, const JobServices& services) noexcept
{
    CJobInputs inputs;
    RunVariation variation{.inputs = &inputs};
    variation.keepIncomplete = JobFlag(job, "strictFinalAction", true);
    variation.acceptDamaged = JobFlag(job, "acceptDamaged", false);
    variation.insistsOnOutputPath = true;
    variation.trialRun = JobFlag(job, "dryRun", false);
    CRunDriver driver({.environment = EnvironmentOf(job),
                       .log = services.log,
                       .events = services.events,
                       .host = services.host,
                       .variation = variation});
    driver.Idle();
}
