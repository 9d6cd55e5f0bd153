// Sequences told as JSON, and steps made from it. The fields are listed in SequenceJobs.h.
#pragma once

#include <string>

#include "base/Expected.h"
#include "protocol/JsonType.h"
#include "sequence/SequenceFile.h"
#include "sequence/XmlForm.h"

/// A sequence for people and programs to look at. Throws CHostException.
[[nodiscard]] Json SequenceReport(const SequenceSource& source);

// Steps that are made from a job's words. A failure says which field is wrong; it tells no values.

/// The steps of a template, or those listed under "steps", and the save step of "output".
[[nodiscard]] Expected<std::vector<WorkflowCommand>> StepsFromJob(const Json& job);

/// One value of a step's parameters.
[[nodiscard]] Expected<CSettingsRecord::Value> ValueFromJson(const Json& value);
