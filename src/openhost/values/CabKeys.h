#pragma once

#include <string>
#include <string_view>

namespace openhost {

/// Whether this may be one step of a key: printable ASCII without the colon, 1 to 1024 characters.
bool IsKeyStep(std::string_view step);
bool IsNumberKey(std::string_view step);
/// The number that follows a key made of digits, without a limit.
std::string NextNumberKey(std::string_view number);
/// Cuts the first step off a path "a:b:c"; `path` becomes the rest, `last` tells that there is none.
std::string_view CutStep(std::string_view& path, bool& last);

}  // namespace openhost
