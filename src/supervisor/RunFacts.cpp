#include "supervisor/RunFacts.h"

RunFacts ReadRunFacts(const ManifestHeader& manifest)
{
    const RunDescription& description = manifest.order.description;
    RunFacts facts{.rules = {.hasFinalAction = description.finalAction != FinalAction::Nothing,
                             .outputsPerFile = manifest.outputsPerFile},
                   .inputLeaves = VacatesInput(description.finalAction)};
    for (const std::string& folder : {description.outputFolder, description.destination})
        if (!folder.empty()) facts.folders.push_back(folder);
    return facts;
}
