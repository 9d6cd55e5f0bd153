#include "batchrun/RunDriver.h"

#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "base/Overseer.h"
#include "batchrun/FinalAction.h"
#include "batchrun/WorkKinds.h"
#include "common/Log.h"
#include "engine/InputOpening.h"
#include "platform/Files.h"
#include "platform/Programs.h"

/// While it lives, no act of the file services is done once the input is another file than the stamp says: it looks
/// before the overseer that was installed is asked and, since that may take a while, again when that lets the act
/// happen.
class CInputGuard final : public COverseer {
public:
    /// Without a stamp everything may happen.
    CInputGuard(std::string inputPath, std::optional<platform::FileStamp> stamp);
    CInputGuard(const CInputGuard&) = delete;
    CInputGuard& operator=(const CInputGuard&) = delete;
    ~CInputGuard() override;

    /// Whether the input has changed, by now or when an act was refused for it.
    bool FindsChange() { return IsChanged(); }

    Answer Ask(Act act, const std::string& file, const std::string& target) override;
    bool Pretends() const override;
    std::optional<bool> Exists(const std::string& path) const override;

private:
    bool IsChanged();

    std::string m_inputPath;
    std::optional<platform::FileStamp> m_stamp;
    COverseer* m_former;
    bool m_foundChange = false;
};

CInputGuard::CInputGuard(std::string inputPath, std::optional<platform::FileStamp> stamp)
    : m_inputPath(std::move(inputPath)), m_stamp(stamp), m_former(InstallOverseer(this))
{
}

CInputGuard::~CInputGuard() { InstallOverseer(m_former); }

bool CInputGuard::IsChanged() { return m_foundChange = m_foundChange || HasChanged(m_inputPath, m_stamp); }

COverseer::Answer CInputGuard::Ask(Act act, const std::string& file, const std::string& target)
{
    if (IsChanged()) return Answer::Refuse;
    const Answer answer = m_former ? m_former->Ask(act, file, target) : Answer::Go;
    return answer == Answer::Go && IsChanged() ? Answer::Refuse : answer;
}

bool CInputGuard::Pretends() const { return m_former && m_former->Pretends(); }

std::optional<bool> CInputGuard::Exists(const std::string& path) const
{
    return m_former ? m_former->Exists(path) : std::nullopt;
}

namespace {

constexpr char kEndOfRun[] = "--------------------------------------------------------------------------------------";

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

Expected<std::unique_ptr<CWork>> MakeWork(const WorkDescription& description)
{
    for (const WorkKind& kind : WorkKinds())
        if (kind.name == description.kind) return kind.make(description);
    return Failure("This version of Ferrule knows no work of the kind \"" + description.kind + "\".");
}

/// What people know the final action by.
std::string InBrackets(FinalAction action)
{
    const std::string_view offered = FactsOf(action).offered;
    return offered.empty() ? "" : " (" + std::string(offered) + ")";
}

/// Said at once and not after the first file; the run does what else is to do.
void LogMissingProgram(const RunSettings& settings, CLogWriter& log)
{
    if (settings.finalAction == FinalAction::Execute && !platform::ProgramMayExist(settings.destination))
        log.NameValue("The program of the final action cannot be found", settings.destination, 1);
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
    const RunSettings settings = m_services.settings();
    Ending ending = LoadAndRun(settings);
    m_services.host.CloseHost();
    return ending;
}

CRunDriver::Ending CRunDriver::LoadAndRun(const RunSettings& settings)
{
    const auto work = MakeWork(settings.work);
    if (!work) {
        m_services.log.NameValue("The run is not started", work.Error(), 1);
        return {RunEnd::NotStarted, work.Error()};
    }
    if (std::string problem = (*work)->Load(m_services.log); !problem.empty())
        return {RunEnd::NotStarted, std::move(problem)};
    return RunLoaded(settings, **work);
}

CRunDriver::Ending CRunDriver::RunLoaded(const RunSettings& settings, CWork& work)
{
    CLogWriter& log = m_services.log;
    m_executeInSteps = settings.executeInSteps;
    for (const std::string& extension : settings.execution.allowedExtensions.value_or(std::vector<std::string>()))
        log.NameValue("Allowed file extension", extension, 1);
    LogMissingProgram(settings, log);

    const ExecutionResult result = m_services.use ? m_services.use(settings, work) : RunFiles(settings, work);
    return {EndOf(result.end), result.message};
}

ExecutionResult CRunDriver::RunFiles(const RunSettings& settings, CWork& work)
{
    CRunEvents& events = m_services.events;
    const ExecutorCallbacks callbacks{
        .inputsFound =
            [&](int inputs) {
                events.InputsCounted();
                events.RunStarts(inputs);
            },
        .finalAction = [&](const ProcessedFile& file) { return ApplyFinalActionTo(file, settings); },
        .fileDone = [&](const ProcessedFile& file) { events.FileDone(file); },
        .sequencePreflight = [&](bool begins) { events.SequencePreflight(begins); },
        .inputs = m_services.inputs};
    CCustomMonitor monitor;
    const bool shown = settings.showProgress && monitor.Start(m_services.progressWindow);
    return RunWork(settings.execution, work, shown ? &monitor : nullptr, callbacks, m_services.log);
}

std::string CRunDriver::LeaveOutFinalAction(const char* because, const std::string& message)
{
    m_services.log.Line(std::string("\tThe final action is left out because ") + because + '.');
    return message;
}

std::string CRunDriver::ApplyFinalActionTo(const ProcessedFile& file, const RunSettings& settings)
{
    const FinalAction action = settings.finalAction;
    if (action == FinalAction::Nothing) return {};
    const char* const stays = "The input stays where it is.";
    if (VacatesInput(action) && !file.loss.empty()) return LeaveOutFinalAction("the document is damaged", stays);
    if (settings.execution.sparesInputs && file.outcome == FileOutcome::Incomplete)
        return LeaveOutFinalAction("the file is incomplete", stays);
    m_services.events.FinalActionBegins();
    CInputGuard guard(file.path, VacatesInput(action) ? file.input : std::nullopt);
    const FinalActionRequest request{.action = action, .destination = settings.destination};
    const FinalActionOutcome outcome = ApplyFinalAction(file.path, request, m_services.log);
    if (outcome.result == FinalActionResult::Done) return {};
    if (guard.FindsChange())
        return LeaveOutFinalAction(kInputChanged,
                                   std::string("The final action is left out, because ") + kInputChanged + '.');
    m_services.log.NameValue("The final action failed", outcome.reason, 1);
    return outcome.reason + ": the final action on the input file failed" + InBrackets(action) +
           (outcome.path.empty() ? "." : ": " + outcome.path);
}
