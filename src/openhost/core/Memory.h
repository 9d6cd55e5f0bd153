#ifndef FERRULE_OPENHOST_CORE_MEMORY_H
#define FERRULE_OPENHOST_CORE_MEMORY_H

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

}  // namespace openhost

#endif
