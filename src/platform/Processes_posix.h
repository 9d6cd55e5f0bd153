#pragma once

#include <signal.h>

// Shared by the services of this folder that start programs or take signals; not for callers outside.
namespace platform {

/// In a new process before it becomes another program: every signal does what the system does by default, and none is
/// blocked. Safe between fork and exec.
void ResetSignals();

/// Keeps every signal from this thread while it lives.
class CSignalsBlocked {
public:
    CSignalsBlocked();
    CSignalsBlocked(const CSignalsBlocked&) = delete;
    CSignalsBlocked& operator=(const CSignalsBlocked&) = delete;
    ~CSignalsBlocked();

private:
    sigset_t m_before;
};

/// Becomes readable with each request to end this process; -1 while those are not counted.
int InterruptDescriptor();
/// Takes note of the requests so far, so that it is readable only after the next one.
void ForgetInterruptWakeUps();

/// The descriptor itself, or a copy above the standard streams when it is one of them; the original is then closed.
/// Fails: -1, with errno.
int AboveStandardStreams(int descriptor);

/// Makes a pipe that is not handed on to programs, both ends above the standard streams. Fails: false, with errno.
bool MakePipe(int (&ends)[2]);

}  // namespace platform
