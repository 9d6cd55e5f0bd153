#pragma once

#include <optional>
#include <string_view>

#include "openhost/pdf/OpenSettings.h"

namespace openhost {

/// The view that a sequence names: a percentage, or a name as the user interface of one of the usual languages has
/// it. Case and spaces do not count. UTF-8. Nothing for a name that is not known.
std::optional<OpenView> ViewNamed(std::string_view name);

}  // namespace openhost
