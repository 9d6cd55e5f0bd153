#include "jobs/IndexJob.h"

#include "hostapi/HostConstants.h"
#include "hostcalls/Index.h"
#include "protocol/Json.h"

std::string CarryOutIndexJob(const Json& job, const std::function<void(const std::string&)>& report)
{
    if (!IndexTablePresent()) return "This host has no full-text index.";
    std::string problem;
    const IndexStatus status = CarryOutIndexOrder(LineOf(job), [&](const std::string& json) {
        const auto object = ParseObject(json);
        if (object && object->contains("problem"))
            problem = TextAt(*object, "problem");
        else
            report(json);
    });
    const bool done = status == IndexBuildDone || status == IndexPurgeDone || status == IndexLoadDone;
    if (done || !problem.empty()) return problem;
    return "The host could not do it (status " + std::to_string(status) + ").";
}
