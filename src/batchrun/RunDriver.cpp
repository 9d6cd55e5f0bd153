#include "batchrun/RunDriver.h"

#include "batchrun/FinalAction.h"
#include "common/Log.h"
#include "common/Progress.h"
#include "engine/SequenceFile.h"

#include <exception>
#include <memory>
#include <utility>

namespace {

constexpr char kEndOfRun[] = "--------------------------------------------------------------------------------------";

/// The folder of the final action, when it has one.
std::vector<std::string> FurtherOutputPaths(const RunSettings& settings)
{
    if (!WantsFolder(settings.finalAction) || settings.destination.empty()) return {};
    return {settings.destination};
}

ExecutorSettings SettingsForExecutor(const RunSettings& settings, const RunVariation& variation)
{
    return {.alternativeInputPath = settings.alternativeInputPath,
            .furtherInputPaths = variation.furtherInputPaths,
            .alternativeOutputPath = settings.alternativeOutputPath,
            .insistsOnOutputPath = variation.insistsOnOutputPath,
            .sparesInputs = variation.keepIncomplete,
            .furtherOutputPaths = FurtherOutputPaths(settings),
            .allowedExtensions = settings.allowedExtensions,
            .noSubfolders = settings.noSubfolders,
            .trialRun = variation.trialRun};
}

/// The monitor of a run; it shows nothing as long as there is no progress window to show.
std::unique_ptr<CCustomMonitor> StartMonitor()
{
    auto monitor = std::make_unique<CCustomMonitor>();
    monitor->Start(nullptr);
    monitor->BeginOperation();
    return monitor;
}

RunEnd EndOf(ExecutionEnd end)
{
    switch (end) {
        case ExecutionEnd::Finished:
            return RunEnd::Finished;
        case ExecutionEnd::NotStarted:
            return RunEnd::NotStarted;
        case ExecutionEnd::Stopped:
            return RunEnd::Broken;
    }
    return RunEnd::Broken;
}

}  // namespace

CRunDriver::CRunDriver(RunDriverServices services) : m_services(std::move(services)) {}

void CRunDriver::Idle() noexcept
{
    if (m_started) return;
    m_started = true;  // before anything else: the host's idle loop may come back here during the run
    const Ending ending = RunGuarded();
    m_services.log.Line(kEndOfRun);
    m_services.events.RunEnds(ending.end, ending.message);
}

CRunDriver::Ending CRunDriver::RunGuarded() noexcept
{
    std::string reason;
    try {
        return Run();
    } catch (const std::exception& exception) {  // host errors are of this kind
        reason = exception.what();
    } catch (...) {
        reason = "unknown exception";
    }
    // The host stays open for the operator.
    m_services.log.NameValue("Unexpected application exception occured during Ferrule execution", reason, 1);  // sic
    return {RunEnd::Broken, reason};
}

CRunDriver::Ending CRunDriver::Run()
{
    const RunSettings settings = ReadRunSettings(m_services.environment, m_services.log);
    Expected<CSequence> sequence = LoadSequenceFile(settings.sequencePath, m_services.log);
    Ending ending{RunEnd::NotStarted, sequence ? "" : sequence.Error()};
    if (sequence) ending = RunLoaded(settings, *sequence);
    m_services.host.CloseHost();
    return ending;
}

CRunDriver::Ending CRunDriver::RunLoaded(const RunSettings& settings, CSequence& sequence)
{
    CLogWriter& log = m_services.log;
    log.NameValue("Processing batch sequence", settings.sequencePath, 1);
    const std::unique_ptr<CCustomMonitor> monitor = settings.showProgress ? StartMonitor() : nullptr;
    m_executeInSteps = settings.executeInSteps;
    for (const std::string& extension : settings.allowedExtensions)
        log.NameValue("Allowed file extension", extension, 1);

    const ExecutionResult result =
        m_services.variation.use
            ? m_services.variation.use(settings, SettingsForExecutor(settings, m_services.variation), sequence)
            : RunFiles(settings, sequence, monitor.get());
    if (monitor) monitor->EndOperation();
    return {EndOf(result.end), result.message};
}

ExecutionResult CRunDriver::RunFiles(const RunSettings& settings, CSequence& sequence,
                                     CProgressMonitorWrapper* monitor)
{
    CRunEvents& events = m_services.events;
    const ExecutorCallbacks callbacks{
        .inputsFound = [&](int inputs) { events.RunStarts(inputs); },
        .finalAction = [&](const ProcessedFile& file) { return ApplyFinalActionTo(file, settings); },
        .fileDone = [&](const ProcessedFile& file) { events.FileDone(file); },
        .sequencePreflight = [&](bool begins) { events.SequencePreflight(begins); },
        .inputs = m_services.variation.inputs};
    return ::RunSequence(SettingsForExecutor(settings, m_services.variation), sequence, monitor, callbacks,
                         m_services.log);
}

std::string CRunDriver::ApplyFinalActionTo(const ProcessedFile& file, const RunSettings& settings)
{
    if (settings.finalAction == kFinalActionNothing) return {};
    if (m_services.variation.keepIncomplete && file.outcome == FileOutcome::Incomplete) {
        m_services.log.Line("\tThe final action is left out because the file is incomplete.");
        return "The input stays where it is.";
    }
    m_services.events.FinalActionBegins();
    const FinalAction action{.code = settings.finalAction, .destination = settings.destination};
    if (ApplyFinalAction(file.path, action, m_services.log) == FinalActionResult::Done) return {};
    for (const FinalActionName& offered : kOfferedFinalActions)
        if (offered.code == settings.finalAction)
            return std::string("The final action on the input file failed: ") + offered.name + ".";
    return "The final action on the input file failed.";
}
