// Steps that are made from a job's words.
#pragma once

#include "base/Expected.h"
#include "protocol/JsonType.h"
#include "sequence/XmlForm.h"

// The fields are listed in SequenceJobs.h. A failure says which field is wrong; it tells no values.

/// The steps of a template, or those listed under "steps", and the save step of "output".
[[nodiscard]] Expected<std::vector<WorkflowCommand>> StepsFromJob(const Json& job);

/// One value of a step's parameters.
[[nodiscard]] Expected<CSettingsRecord::Value> ValueFromJson(const Json& value);
