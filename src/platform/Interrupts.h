#pragma once

namespace platform {

/// From now on requests to end this process (keyboard interrupt, termination, hang-up) are counted instead of ending
/// it. Waiting for children ends early at each.
void CountInterrupts();
/// How many there were so far.
int Interrupts();

}  // namespace platform
