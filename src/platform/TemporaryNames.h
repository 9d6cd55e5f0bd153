#pragma once

#include <string>

namespace platform {

/// From now on the names of this module's temporary files begin with ".ferrule-<tag>-", so that whoever gave out the
/// tag can find what a killed process left. Letters and digits only.
void SetTemporaryTag(const std::string& tag);
/// What such names begin with; "" as tag: those of runs without one.
std::string TemporaryPrefix(const std::string& tag);

/// A new name for a temporary file of this module. Not derived from any target's, which may already have the greatest
/// length.
std::string NextTemporaryName(unsigned long processId);

}  // namespace platform
