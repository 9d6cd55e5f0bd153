#include "supervisor/RunFacts.h"

#include "base/Text.h"
#include "protocol/FinalAction.h"
#include "protocol/Json.h"

RunFacts ReadRunFacts(const ManifestHeader& manifest)
{
    const Json job = ParseObject(manifest.job).value_or(Json::object());
    const Json& settings = ObjectAt(job, "settings");
    const FinalActionFacts* const found = FindFinalAction(TextAt(settings, "FERRULEFINAL"));
    const FinalAction action = found ? found->action : FinalAction::Nothing;
    RunFacts facts{.rules = {.hasFinalAction = action != FinalAction::Nothing,
                             .outputsPerFile = manifest.outputsPerFile},
                   .inputLeaves = VacatesInput(action)};
    for (const char* name : {"FERRULEALTOUTPUTPATH", "FERRULEDEST"})
        if (std::string folder = RemoveQuotes(BytesAt(settings, name)); !folder.empty())
            facts.folders.push_back(std::move(folder));
    return facts;
}
