// Jobs that answer one report and touch no document.
#pragma once

#include <optional>

#include "cli/Arguments.h"
#include "cli/Console.h"
#include "protocol/JsonType.h"

namespace cli {

/// What the job reports as its answer. Nothing when it could not be done; the screen says why then.
[[nodiscard]] std::optional<Json> AnswerOfJob(const CArguments& arguments, const Json& job, const Screen& screen);

}  // namespace cli
