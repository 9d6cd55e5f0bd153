#pragma once

#include <cstdint>

namespace platform {

/// How many files this process may have open at a time, after it was tried to make room for `wanted`; started
/// programs get the same room.
std::uint64_t MakeRoomForOpenFiles(std::uint64_t wanted);

}  // namespace platform
