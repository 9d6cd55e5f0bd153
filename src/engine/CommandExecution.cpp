#include "engine/CommandExecution.h"

#include "common/Log.h"
#include "common/Progress.h"
#include "hostapi/HostConstants.h"

namespace {

void MakeReady(CHostCommand& command, CLogWriter& log)
{
    if (command.Status() == kAVCommandReady) return;
    log.Line("\tWARNING: Command is not ready.");
    command.Reset();
    log.Line("\tWARNING: Command is RESET.");
}

void ShowDialogIfWanted(CHostCommand& command, bool interactive, CLogWriter& log)
{
    const bool canShow = command.Props({kAVCommandKeyCanShowDialog}).Bool(kAVCommandKeyCanShowDialog, false);
    if (!canShow || !interactive) return;
    log.Line("\tCommand's settings dialog is displayed.");
    command.ShowDialog();
}

AVCommandStatus WorkToTheEnd(CHostCommand& command, CProgressMonitorWrapper& progress)
{
    AVCommandStatus status = command.Work();
    while (status == kAVCommandWorking) {
        if (progress.IsCancelled()) {
            status = command.Cancel();
            return status == kAVCommandWorking ? AVCommandStatus{kAVCommandCanceled} : status;
        }
        status = command.Work();
    }
    return status;
}

AVCommandStatus Execute(CHostCommand& command, bool interactive, CProgressMonitorWrapper& progress, CLogWriter& log)
{
    MakeReady(command, log);
    ShowDialogIfWanted(command, interactive, log);
    AVCommandStatus status = command.Status();
    if (status != kAVCommandCanceled) status = WorkToTheEnd(command, progress);  // a dismissed dialog cancels
    if (status == kAVCommandCanceled) log.Line("Processing has been canceled");
    if (status == kAVCommandInError) command.Cancel();
    return status;
}

}  // namespace

ExecutionOutcome ExecuteCommand(CHostCommand& command, bool interactive, CProgressMonitorWrapper& progress,
                                CLogWriter& log)
{
    ExecutionOutcome outcome;
    log.NameTime("Command starting time", 1);
    outcome.raised = CatchHostError([&] { outcome.status = Execute(command, interactive, progress, log); });
    if (outcome.raised)
        log.NameValue("Exeption occured in ExecuteCommand() function", outcome.raised->text, 1);  // sic
    log.NameTime("Command ending time", 1);
    return outcome;
}
