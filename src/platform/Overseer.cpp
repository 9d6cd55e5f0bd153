#include "platform/Overseer.h"

#include <utility>

namespace platform {
namespace {

COverseer* installed = nullptr;
std::string temporaryTag;

}  // namespace

COverseer* InstallOverseer(COverseer* overseer) { return std::exchange(installed, overseer); }

COverseer* Overseer() { return installed; }

void SetTemporaryTag(const std::string& tag) { temporaryTag = tag; }

std::string TemporaryTag() { return temporaryTag; }

std::string TemporaryPrefix(const std::string& tag) { return tag.empty() ? ".ferrule-" : ".ferrule-" + tag + '-'; }

}  // namespace platform
