#include "platform/DeepStack.h"

namespace platform {

int OnDeepStack(const std::function<int()>& work) { return work(); }

}  // namespace platform
