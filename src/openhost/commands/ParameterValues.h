#pragma once

#include <optional>
#include <string>

#include "openhost/commands/Step.h"

namespace openhost {

/// What a sequence gives for a parameter, in the parameter's own kind and within its limits: a text that is a number
/// counts as one, a whole number as an integer, 0 and 1 as a boolean. Nothing when the meaning is not clear.
std::optional<ParameterValue> ConvertedParameter(const StepParameter& parameter, const CabValue& given);

/// The value for messages, short: "abc", 12, a list.
std::string ShownValue(const CabValue& given);
/// What the parameter wants: "90, 180 or 270".
std::string ExpectedOf(const StepParameter& parameter);

}  // namespace openhost
