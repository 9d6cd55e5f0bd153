#include "openhost/program/EventLoop.h"

#include <algorithm>
#include <chrono>
#include <thread>

#include "openhost/app/AppState.h"
#include "openhost/app/IdleProcedures.h"
#include "openhost/core/Diagnostics.h"
#include "openhost/jobs/Jobs.h"
#include "openhost/jobs/RunRecord.h"

namespace openhost {

namespace {

constexpr std::uint64_t kLongestWaitMs = 100;

bool QuitIsWanted() { return Part<AppWishes>().quit; }
bool AllIsDone() { return Part<CIdleProcedures>().AllCalled() && !Part<CRunRecord>().Running(); }

void WaitForNextCall(const EventLoopOptions& options)
{
    const std::uint64_t now = Part<AppClock>().milliseconds();
    const auto next = Part<CIdleProcedures>().NextDue().value_or(now + kLongestWaitMs);
    if (next <= now) return;
    const std::uint64_t wait = std::min(next - now, kLongestWaitMs);
    if (options.sleep)
        options.sleep(wait);
    else
        std::this_thread::sleep_for(std::chrono::milliseconds(wait));
}

int CodeWithoutQuit()
{
    if (Part<CRunRecord>().Told())
        Diagnose("the run is over, but the host was not asked to quit");
    else if (Part<CIdleProcedures>().AnyEverRegistered())
        Diagnose("the plug-ins have nothing more to do, but the host was not asked to quit");
    else
        Diagnose("nothing was scheduled: no plug-in has anything to do");
    return kExitBroken;
}

int CodeOfRuns()
{
    const auto& record = Part<CRunRecord>();
    if (record.Broken() || Part<CJobs>().Source().Broken()) return kExitBroken;
    return record.Saved() == record.Files() ? kExitFine : kExitSomeFailed;
}

}  // namespace

int RunEventLoop(const EventLoopOptions& options)
{
    while (!QuitIsWanted()) {
        Part<CIdleProcedures>().CallDue();
        if (QuitIsWanted()) break;
        if (!options.stay && AllIsDone()) return CodeWithoutQuit();
        WaitForNextCall(options);
    }
    return CodeOfRuns();
}

}  // namespace openhost
