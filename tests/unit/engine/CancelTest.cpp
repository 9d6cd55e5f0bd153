// Runs that somebody cancels, with the steps of the plug-in's engine in the open host.
#include <algorithm>

#include <gtest/gtest.h>

#include "common/Progress.h"
#include "engine/Executor.h"
#include "engine/SequenceWork.h"
#include "hostapi/HostConstants.h"
#include "hostcalls/Commands.h"
#include "hostcalls/Documents.h"
#include "hostcalls/HostFrame.h"
#include "sequence/HostForm.h"
#include "sequence/XmlForm.h"
#include "support/MemoryLog.h"
#include "support/PlugInHost.h"

namespace {

/// Somebody presses cancel once the step has worked so many times.
int g_worked, g_cancelledCalls, g_cancelAfter;
AVCommandStatus g_answerOfWork;
std::string g_temporaryFile;  // where the step leaves the document; empty = where it was

AVCommandStatus HOSTCALL Work(AVCommand command)
{
    ++g_worked;
    if (!g_temporaryFile.empty()) SaveDocument(CommandDocument(command), PDSaveFull, g_temporaryFile);
    return g_answerOfWork;
}

AVCommandStatus HOSTCALL Cancel(AVCommand)
{
    ++g_cancelledCalls;
    return kAVCommandCanceled;
}

class CImpatientMonitor final : public CProgressMonitorWrapper {
public:
    void BeginOperation() override { ++open; }
    void EndOperation() override { --open; }
    void SetOperationText(const std::string&) override {}
    void SetStatusText(const std::string&) override {}
    void SetDuration(int) override {}
    void SetCurrentValue(int) override {}
    bool IsCancelled() override { return g_worked >= g_cancelAfter; }

    int open = 0;
};

struct CancelledRun {
    ExecutionResult result;
    std::vector<ProcessedFile> files;
    int finalActions = 0;
    std::vector<std::string> log;

    auto Count(const std::string& line) const { return std::count(log.begin(), log.end(), line); }
};

/// Runs the step and a save step over a folder of two files.
CancelledRun RunUntilCancelled(const CTemporaryFolder& folder)
{
    for (const char* name : {"in/a.pdf", "in/b.pdf"}) folder.Write(name, kPdf);
    static AVCommandHandlerRec handler = {};
    handler.size = sizeof(handler);
    handler.Work = Callback(&Work);
    handler.Cancel = Callback(&Cancel);
    RegisterCommandHandler("T:Impatient", &handler);
    const auto workflow = ParseWorkflow(
        "<Workflow><Group label='g'><Command name='T:Impatient'/>"
        "<Command name='WorkflowPlaybackSaveFiles'><Items><Item name='DocSaveDestType' type='string' "
        "value='WorkflowPlaybackSave'/></Items></Command></Group></Workflow>");
    CSequenceWork work(SequenceFromWorkflow(*workflow));
    CancelledRun run;
    CImpatientMonitor monitor;
    CMemoryLog log;
    const ExecutorCallbacks callbacks{.inputsFound = [](int) {},
                                      .finalAction =
                                          [&](const ProcessedFile&) {
                                              ++run.finalActions;
                                              return std::string();
                                          },
                                      .fileDone = [&](const ProcessedFile& file) { run.files.push_back(file); }};
    ExecutorSettings settings;
    settings.alternativeInputPath = folder / "in";
    settings.alternativeOutputPath = folder / "out";
    run.result = RunWork(settings, work, &monitor, callbacks, log);
    EXPECT_EQ(monitor.open, 0) << "the progress was not ended";
    run.log = log.lines;
    return run;
}

}  // namespace

TEST(Cancel, StopsTheRunWithoutASaveAndWithoutAFinalAction)
{
    constexpr AVCommandStatus kWorking = kAVCommandWorking, kDone = kAVCommandDone;
    const struct {
        const char* when;
        int cancelAfter;
        AVCommandStatus answerOfWork;
        int worked, cancelled;
        std::size_t files;
        bool temporaryFile = false;
    } rows[] = {{"before the first file", 0, kDone, 0, 0, 0},
                {"while a step works", 3, kWorking, 3, 1, 1},
                {"after a step of the first file", 1, kDone, 1, 0, 1},
                {"after a step that left the document in a temporary file", 1, kDone, 1, 0, 1, true},
                {"after a step of the second file", 2, kDone, 2, 0, 2}};
    for (const auto& row : rows) {
        const CPlugInHost host;
        ASSERT_TRUE(host.Started());
        const CTemporaryFolder folder;
        folder.MakeFolder("in");
        folder.MakeFolder("out");
        g_worked = g_cancelledCalls = 0;
        g_cancelAfter = row.cancelAfter;
        g_answerOfWork = row.answerOfWork;
        g_temporaryFile = row.temporaryFile ? folder / "step.tmp" : "";
        const CancelledRun run = RunUntilCancelled(folder);
        EXPECT_EQ(run.result.end, ExecutionEnd::Stopped) << row.when;
        EXPECT_EQ(run.Count("Command execution is aborted"), 1) << row.when;
        EXPECT_EQ(g_worked, row.worked) << row.when;
        EXPECT_EQ(g_cancelledCalls, row.cancelled) << row.when;
        ASSERT_EQ(run.files.size(), row.files) << row.when;
        if (row.files > 0) {
            EXPECT_EQ(run.files.back().outcome, FileOutcome::Stopped) << row.when;
        }
        const int finished = row.files > 0 ? static_cast<int>(row.files) - 1 : 0;
        EXPECT_EQ(run.finalActions, finished) << row.when;
        EXPECT_EQ(FileBytes(folder / "out/a.pdf") != "<missing>", finished > 0) << row.when;
        EXPECT_EQ(FileBytes(folder / "out/b.pdf"), "<missing>") << row.when;
        for (const char* name : {"in/a.pdf", "in/b.pdf"}) {
            EXPECT_EQ(FileBytes(folder / name), kPdf) << row.when;
        }
    }
}
