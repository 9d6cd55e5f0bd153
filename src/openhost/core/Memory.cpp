#include "openhost/core/Memory.h"

#include <cstdlib>
#include <cstring>

#include "openhost/core/Raise.h"

namespace openhost {

namespace {
std::size_t g_liveBlocks = 0;  // outlives a host: blocks may be freed after it
}

void* AllocateShared(ASSize_t bytes)
{
    void* const block = std::malloc(bytes ? bytes : 1);
    if (block) ++g_liveBlocks;
    return block;
}

void* ReallocateShared(void* block, ASSize_t bytes)
{
    if (!block) return AllocateShared(bytes);
    return std::realloc(block, bytes ? bytes : 1);
}

void FreeShared(void* block)
{
    if (!block) return;
    --g_liveBlocks;
    std::free(block);
}

std::size_t LiveSharedBlocks() { return g_liveBlocks; }

char* SharedCopy(std::string_view bytes)
{
    char* const block = static_cast<char*>(AllocateShared(bytes.size() + 1));
    if (!block) Raise(genErrNoMemory, "out of memory");
    if (!bytes.empty()) std::memcpy(block, bytes.data(), bytes.size());
    block[bytes.size()] = 0;
    return block;
}

}  // namespace openhost
