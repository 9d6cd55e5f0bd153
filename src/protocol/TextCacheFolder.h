// The folder in which the host keeps words of documents, as far as those who name, show and clear it must know it.
#pragma once

#include <cstdint>

inline constexpr char kTextCacheSuffix[] = ".words";                      ///< what the names of its files end with
inline constexpr std::uint64_t kTextCacheBytes = std::uint64_t{1} << 30;  ///< at most, as soon as a process is done
