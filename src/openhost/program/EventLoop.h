#ifndef FERRULE_OPENHOST_PROGRAM_EVENT_LOOP_H
#define FERRULE_OPENHOST_PROGRAM_EVENT_LOOP_H

#include <cstdint>
#include <functional>

namespace openhost {

/// Exit codes of the program.
enum ExitCode : int {
    kExitFine = 0,        ///< all files are fine
    kExitBroken = 1,      ///< the run could not start, broke off, or nobody asked to quit
    kExitUsage = 2,       ///< the command line makes no sense
    kExitSomeFailed = 3,  ///< the run finished, but not every file came out
};

struct EventLoopOptions {
    bool stay = false;  ///< goes on until somebody asks to quit
    /// Waits; tests put their own.
    std::function<void(std::uint64_t milliseconds)> sleep;
};

/// Calls the idle procedures until somebody asks to quit, or until all was done that plug-ins had scheduled: each
/// idle procedure was called and no run is under way. Answers the exit code.
int RunEventLoop(const EventLoopOptions& options);

}  // namespace openhost

#endif
