#pragma once

#include <functional>
#include <string>

#include "protocol/JsonType.h"

/// Lets the host do what the job wants with a full-text index; its reports are those of hostapi/IndexTable.h. Answers
/// a sentence that says why it is not done; empty when it is. Throws CHostException.
[[nodiscard]] std::string CarryOutIndexJob(const Json& job, const std::function<void(const std::string&)>& report);
