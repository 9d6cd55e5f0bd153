// Cabs in files, in the host's own form.
#pragma once

#include "base/Expected.h"
#include "hostcalls/Cab.h"

#include <string>

/// Reads the cab that a file holds. The sentence says what went wrong: the file cannot be opened, the content is no
/// cab of this host, or the host's own error. Nothing stays open. Does not throw CHostException.
[[nodiscard]] Expected<CCab> ReadCabFile(const std::string& path);

/// Writes a cab to a file, which is made or replaced; a failure may leave an incomplete file. Does not throw
/// CHostException.
[[nodiscard]] bool WriteCabFile(const std::string& path, CCabView cab);
