#include "batchrun/StartupReader.h"

#include "base/Text.h"
#include "common/Log.h"

namespace {

constexpr int kRunDriverPeriodTicks = 60;

}  // namespace

StartupDecision ReadStartup(const WorkDescription& work, const std::string& noProgress, CLogWriter& log,
                            CStartupActions& actions)
{
    const std::string sequence = WorkFilePath(work, kSequenceWork);
    const bool isSequence = work.kind.empty() || work.kind == kSequenceWork;
    if (isSequence && sequence.empty()) {
        log.Line("No sequence file specified");
        return {};
    }
    StartupDecision decision;
    // Kept: not trimmed here, so " yes" hides the progress dialog later but not the host window now.
    if (EqualsIgnoreCaseAscii(noProgress, "yes")) {
        decision.hostWindowHidden = true;
        actions.HideHostWindow();
    }
    actions.KeepHostWindowOffScreen();
    if (isSequence)
        log.NameValue("Registering sequence file", sequence, 0);
    else
        log.NameValue("Registering work", work.kind, 0);
    actions.ScheduleRunDriver(kRunDriverPeriodTicks);
    decision.runScheduled = true;
    return decision;
}
