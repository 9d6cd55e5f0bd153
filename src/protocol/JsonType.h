// The one type of JSON values, declared only: for headers that hand them on.
#pragma once

#include <nlohmann/json_fwd.hpp>

/// Keeps the keys in the order in which they are written.
using Json = nlohmann::ordered_json;
