// Paths in the cabs of a sequence.
#pragma once

#include "hostcalls/Cab.h"

#include <optional>
#include <string>

/// The key of the folder that a sequence names, of its inputs, of its output and of its save steps.
inline constexpr char kFolderKey[] = "PreselectedFolderPath";

/// The platform path under a key: of a path cab, or of a text that is a device-independent path. Nothing when there
/// is no usable path.
[[nodiscard]] std::optional<std::string> PathEntry(CCabView cab, const char* key);
