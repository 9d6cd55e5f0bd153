// The host's table for full-text indexes, which need not be there.
#pragma once

#include <functional>
#include <string>

#include "hostapi/HostTypes.h"

[[nodiscard]] bool IndexTablePresent();

/// Lets the host do what the order says (JSON, see hostapi/IndexTable.h); answers its status code. `report` gets each
/// report, a JSON object. Throws CHostException, also when there is no such table.
[[nodiscard]] IndexStatus CarryOutIndexOrder(const std::string& order,
                                             const std::function<void(const std::string& json)>& report);
