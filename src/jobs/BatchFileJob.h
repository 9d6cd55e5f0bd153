// The job that writes a command file for unattended runs.
//
// batch-file {"path", "form": "bat"|"sh", "overwrite", "sequence", "finalAction": word or code, "destination",
//             "extensions", "executeInSteps", "noProgress", "startHidden", "noSubfolders"}
//            -> {"path", "form", "bytes"}
//
// Without "path" nothing is written, and the answer has the file as "text". Absent flags are false, without "form" it
// is that of the system, without "extensions" the sequence decides.
#pragma once

#include "base/Expected.h"
#include "protocol/JsonType.h"

/// Throws CHostException.
[[nodiscard]] Expected<Json> NewBatchFile(const Json& job);
