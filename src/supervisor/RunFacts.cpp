#include "supervisor/RunFacts.h"

#include "base/Text.h"
#include "supervisor/Json.h"

namespace {

constexpr int kLastFinalAction = 8;

bool IsInputTakenAway(int finalAction)
{
    return finalAction == 2 || finalAction == 3 || finalAction == 4 || finalAction == 6 || finalAction == 7;
}

}  // namespace

RunFacts ReadRunFacts(const ManifestHeader& manifest)
{
    const Json job = ParseObject(manifest.job).value_or(Json::object());
    const Json& settings = ObjectAt(job, "settings");
    const int action = ParseDecimal(TextAt(settings, "FERRULEFINAL"));
    RunFacts facts{.rules = {.hasFinalAction = action >= 1 && action <= kLastFinalAction,
                             .outputsPerFile = manifest.outputsPerFile},
                   .inputLeaves = IsInputTakenAway(action)};
    for (const char* name : {"FERRULEALTOUTPUTPATH", "FERRULEDEST"})
        if (std::string folder = RemoveQuotes(BytesAt(settings, name)); !folder.empty())
            facts.folders.push_back(std::move(folder));
    return facts;
}
