#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "openhost/values/Cabinet.h"

namespace openhost {

/// The bytes of a cab: a signed and versioned header with length and checksum, then the entries. All value types
/// except pointers, which are left out. Raises genErrListOverflow when there is more than could be read back.
std::string BytesOfCab(const CCabinet& cab);

/// Reads up to `count` bytes, fewer only at the end.
using ReadBytes = std::function<std::size_t(char* buffer, std::size_t count)>;

/// Reads exactly one cab and nothing behind it. An empty owner when the bytes are not a cab of ours, are cut off or
/// damaged, or nest or grow past the limits. Does not raise for any content.
COwnedCab ReadCab(const ReadBytes& read);
/// The same from memory; bytes behind the cab are ignored.
COwnedCab CabFromBytes(std::string_view bytes);

/// Makes the values of one level, in the order of the stream. Cabs among them come packed, inside no other yet.
void UnpackEntries(const PackedEntries& packed,
                   const std::function<void(std::string_view key, CabValue value)>& take);

}  // namespace openhost
