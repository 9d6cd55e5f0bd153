#include "batchrun/RunSettings.h"

#include "base/Text.h"
#include "common/Log.h"

namespace {

FinalAction FinalActionOf(const std::string& value)
{
    const int code = ParseDecimal(value);
    const bool known = code >= 0 && code < static_cast<int>(FinalActions().size());
    return known ? static_cast<FinalAction>(code) : FinalAction::Nothing;
}

/// The pieces of the list without blanks, and without the dot that people like to put in front.
std::vector<std::string> ExtensionList(const std::string& value)
{
    std::vector<std::string> extensions;
    for (const std::string& piece : Split(value, ",;")) {
        std::string extension = Trim(piece);
        if (extension.starts_with('.')) extension = Trim(extension.substr(1));
        if (!extension.empty()) extensions.push_back(std::move(extension));
    }
    return extensions;
}

bool IsYes(const std::string& value) { return ToLowerAscii(value) == "yes"; }

/// As they were given, in the order of the log.
struct GivenSettings {
    const WorkDescription& work;
    const std::string &finalAction, &destination, &input, &inSteps, &noProgress, &output, &extensions, &noSubfolders;
};

void LogSettings(const GivenSettings& given, CLogWriter& log)
{
    if (given.work.kind == kSequenceWork)
        log.NameValue("Sequence file", WorkFilePath(given.work, kSequenceWork), 1);
    else
        log.NameValue("Work", given.work.kind, 1);
    log.NameValue("Final action", given.finalAction, 1);
    log.NameValue("Destination", given.destination, 1);
    log.NameValue("Alternative path", given.input, 1);
    log.NameValue("Execute in steps", given.inSteps, 1);
    log.NameValue("Progress dialog", given.noProgress, 1);
    log.NameValue("Alternative output path", given.output, 1);
    log.NameValue("Allowed file extentions", given.extensions, 0);  // sic
    log.NameValue("No subfolders", given.noSubfolders, 0);
}

/// Like the output folder, the folder of the final action is no input.
void AddActionFolder(RunSettings& settings)
{
    if (WantsFolder(settings.finalAction) && !settings.destination.empty())
        settings.execution.furtherOutputPaths = {settings.destination};
}

}  // namespace

std::string CleanPath(const std::string& value) { return RemoveQuotes(value); }

RunSettings ReadRunSettings(const EnvironmentReader& environment, CLogWriter& log)
{
    const std::string sequence = environment("FERRULESEQU");
    const std::string finalAction = environment("FERRULEFINAL");
    const std::string destination = environment("FERRULEDEST");
    const std::string alternativeInput = environment("FERRULEALTPATH");
    const std::string inSteps = environment("EXECUTEINSTEPS");
    const std::string noProgress = environment("FERRULENOPROGRESS");
    const std::string alternativeOutput = Trim(environment("FERRULEALTOUTPUTPATH"));
    const std::string extensions = Trim(environment("FERRULEFILEEXT"));
    const std::string noSubfolders = environment("FERRULENOSUBFOLDERS");

    LogSettings({SequenceWork(sequence), finalAction, destination, alternativeInput, inSteps, noProgress,
                 alternativeOutput, extensions, noSubfolders},
                log);
    RunSettings settings{.work = SequenceWork(CleanPath(sequence)),
                         .finalAction = FinalActionOf(finalAction),
                         .destination = destination,
                         .executeInSteps = IsYes(Trim(inSteps)),
                         .showProgress = !IsYes(Trim(noProgress)),
                         .execution = {}};
    settings.execution.alternativeInputPath = CleanPath(alternativeInput);
    settings.execution.alternativeOutputPath = CleanPath(alternativeOutput);
    if (!extensions.empty()) settings.execution.allowedExtensions = ExtensionList(extensions);
    settings.execution.noSubfolders = IsYes(noSubfolders);  // Kept: this one is not trimmed.
    AddActionFolder(settings);
    return settings;
}

RunSettings DescribedSettings(const RunDescription& description, bool trialRun, CLogWriter& log)
{
    const auto& inputs = description.inputs;
    const std::string firstInput = inputs.empty() ? "" : inputs.front();
    LogSettings(
        {description.work, std::to_string(static_cast<int>(description.finalAction)), description.destination,
         firstInput, "", "", description.outputFolder, description.extensions, description.noSubfolders ? "yes" : ""},
        log);
    RunSettings settings{.work = description.work,
                         .finalAction = description.finalAction,
                         .destination = description.destination,
                         .execution = {}};
    ExecutorSettings& execution = settings.execution;
    execution.alternativeInputPath = firstInput;
    if (inputs.size() > 1) execution.furtherInputPaths.assign(inputs.begin() + 1, inputs.end());
    execution.alternativeOutputPath = description.outputFolder;
    execution.insistsOnOutputPath = true;
    execution.sparesInputs = true;
    if (!description.extensions.empty()) execution.allowedExtensions = ExtensionList(description.extensions);
    execution.noSubfolders = description.noSubfolders;
    execution.acceptDamaged = description.acceptDamaged;
    execution.sparesRepaired = description.sparesRepaired;
    execution.trialRun = trialRun;
    AddActionFolder(settings);
    if (!description.keepOriginals.empty()) execution.furtherOutputPaths.push_back(description.keepOriginals);
    return settings;
}

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
