#pragma once

#include <functional>

namespace platform {

/// Does the work where calls may nest very deep, as libraries do that follow a document's own nesting: a chain of
/// 100000 bookmarks must not end the process. Answers what the work answers; whatever it throws ends the program. The
/// stack is address space and takes memory only as far as it is used; where the process may not have that much, it is
/// as large as can be had.
///
/// On Windows a program's own stack is made so large when it is linked, and this just does the work.
int OnDeepStack(const std::function<int()>& work);

}  // namespace platform
