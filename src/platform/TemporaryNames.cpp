#include "platform/TemporaryNames.h"

#include <atomic>

namespace platform {
namespace {

std::string temporaryTag;

}  // namespace

void SetTemporaryTag(const std::string& tag) { temporaryTag = tag; }

std::string TemporaryPrefix(const std::string& tag) { return tag.empty() ? ".ferrule-" : ".ferrule-" + tag + '-'; }

std::string NextTemporaryName(unsigned long processId)
{
    static std::atomic<unsigned> counter{0};
    return TemporaryPrefix(temporaryTag) + std::to_string(processId) + '-' + std::to_string(++counter) + ".tmp";
}

}  // namespace platform
