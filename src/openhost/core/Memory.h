#pragma once

#include <cstddef>
#include <string_view>

#include "hostapi/HostTypes.h"

namespace openhost {

/// Memory that crosses the boundary: what the host hands over is freed by the plug-in with the host's free, and the
/// other way round. Blocks are counted, so that tests can ask what was left.
void* AllocateShared(ASSize_t bytes);  // null when there is none
void* ReallocateShared(void* block, ASSize_t bytes);
void FreeShared(void* block);  // null is harmless
std::size_t LiveSharedBlocks();

/// A copy for the plug-in, ended by a zero. Raises genErrNoMemory.
char* SharedCopy(std::string_view bytes);

/// A member of a plug-in's record that begins with or contains its size; null (or 0) when the record ends before the
/// member does. A record may end exactly behind it.
template <class Record, class Member>
Member MemberOf(const Record* record, Member Record::*member)
{
    const auto* const start = reinterpret_cast<const char*>(record);
    const auto offset = static_cast<std::size_t>(reinterpret_cast<const char*>(&(record->*member)) - start);
    return offset + sizeof(Member) <= static_cast<std::size_t>(record->size) ? record->*member : Member{};
}

}  // namespace openhost
