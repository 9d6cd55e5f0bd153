#pragma once

#include <cstddef>
#include <string>

struct duk_hthread;

namespace openhost {

/// What "global" holds now, as JSON. Fails: std::runtime_error beyond so many bytes.
std::string GlobalsAsJson(duk_hthread* context, std::size_t mostBytes);

}  // namespace openhost
