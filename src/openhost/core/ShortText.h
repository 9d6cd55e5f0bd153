#ifndef FERRULE_OPENHOST_CORE_SHORT_TEXT_H
#define FERRULE_OPENHOST_CORE_SHORT_TEXT_H

#include <cstddef>
#include <string>
#include <string_view>

namespace openhost {

/// Plug-ins ask for error texts with room for so many bytes.
inline constexpr std::size_t kLongestErrorText = 255;

/// The same text when it has at most `bytes` bytes; else its beginning and, twice as long, its end, with dots between
/// them. Characters of UTF-8 stay whole.
std::string ShortenedInMiddle(std::string_view text, std::size_t bytes);

}  // namespace openhost

#endif
