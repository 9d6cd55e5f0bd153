// The steps that are part of the host, under any name that they had in any version.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "sequence/StepDescription.h"

/// Null for a handler that is none of the host.
[[nodiscard]] const StepDescription* HostStep(std::string_view handler);

/// The same without regard to letter case.
[[nodiscard]] const StepDescription* MeantHostStep(std::string_view handler);

/// The newer name under which a command may be registered when the one in the sequence is not. One way only.
[[nodiscard]] std::optional<std::string> AlternativeHandler(std::string_view handler);
