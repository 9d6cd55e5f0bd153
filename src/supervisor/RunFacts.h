// What the supervisor has to know of a run's job.
#pragma once

#include "supervisor/Manifest.h"
#include "supervisor/Settler.h"

#include <string>
#include <vector>

struct RunFacts {
    SettlingRules rules = {};
    bool inputLeaves = false;               ///< the final action moves, renames or deletes it
    std::vector<std::string> folders = {};  ///< of results and of final actions, as far as the job names them
};

[[nodiscard]] RunFacts ReadRunFacts(const ManifestHeader& manifest);
