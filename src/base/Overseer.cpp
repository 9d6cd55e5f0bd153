#include "base/Overseer.h"

#include <utility>

namespace {

COverseer* installed = nullptr;

}  // namespace

COverseer* InstallOverseer(COverseer* overseer) { return std::exchange(installed, overseer); }

COverseer* Overseer() { return installed; }
