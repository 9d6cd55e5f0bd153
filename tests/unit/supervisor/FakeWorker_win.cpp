#include "unit/supervisor/FakeWorker.h"

#include <cstdlib>

// No test of this system asks for it: a run that is to be killed would have to be a process of its own.
void KillParent() { std::abort(); }
