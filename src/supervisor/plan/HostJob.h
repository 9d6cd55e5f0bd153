// One start of the host for a job without files from us.
#pragma once

#include <functional>
#include <string>

#include "protocol/JsonType.h"
#include "supervisor/Supervisor.h"
#include "supervisor/workers/Worker.h"

struct HostJobResult {
    JobResult job = {};
    /// What the plug-in logged, bytes: before and after it had counted its inputs. All of it before when it did not.
    std::vector<std::string> preamble = {}, log = {};
};

/// `place`: the name of the private folder. `interruptsSeen`: those before; a new one ends the host.
[[nodiscard]] HostJobResult RunHostJob(const CWorkerStarter& starter, const std::string& place,
                                       const std::string& job, int interruptsSeen, CRunObserver& observer,
                                       const std::function<void(const Json&)>& onReport);
