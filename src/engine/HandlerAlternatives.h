// Handlers that took over from others under a new name.
#pragma once

#include <optional>
#include <string>
#include <string_view>

/// The newer name under which a command may be registered when the one in the sequence is not. One way only.
[[nodiscard]] std::optional<std::string> AlternativeHandler(std::string_view handlerName);
