#include "unit/supervisor/FakeWorker.h"

#include <signal.h>
#include <unistd.h>

void KillParent() { kill(getppid(), SIGKILL); }
