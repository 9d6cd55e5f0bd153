#include "batchrun/DlgCreateBatchFile.h"

#include <algorithm>

#include "base/Names.h"
#include "base/Text.h"
#include "platform/Files.h"
#include "platform/NarrowText.h"
#include "platform/Programs.h"

namespace {

constexpr char kHelpTopic[] = "CreateBatchFile.htm";
constexpr int kFirstHostWithOptimizer = 8;
constexpr char kNoLogFile[] = "The Ferrule log file does not exist.";

// The order in which people choose the final action.
constexpr FinalAction kOfferedActions[] = {FinalAction::Nothing, FinalAction::Copy,        FinalAction::CopyVersions,
                                           FinalAction::Move,    FinalAction::MoveReplace, FinalAction::MoveVersions,
                                           FinalAction::Delete,  FinalAction::Execute};

std::string DisplayName(const std::string& path) { return platform::Utf8FromNarrow(SplitPath(FileName(path)).base); }

std::string FilterOf(BatchFileForm form)
{
    return form == BatchFileForm::Bat ? "Batch File (*.bat)|*.bat" : "Shell Script (*.sh)|*.sh";
}

FormAnswer Stay(const std::function<void()>& act)
{
    act();
    return FormAnswer::StayOpen;
}

}  // namespace

CDlgCreateBatchFile::CDlgCreateBatchFile(DialogServices services, Facts facts, BatchFileChoices& choices,
                                         BatchFileLog log)
    : m_services(std::move(services)),
      m_facts(std::move(facts)),
      m_choices(choices),
      m_log(std::move(log)),
      m_progress(choices.showProgress ? 0 : 1),
      m_extensions(choices.extensions),
      m_restrict(choices.restrictExtensions),
      m_disableLog(!*m_log.allowed)
{
    for (const FinalAction action : kOfferedActions) m_actions.push_back(&FactsOf(action));
}

bool CDlgCreateBatchFile::Show()
{
    DialogForm form = Describe();
    return m_services.windows.Show(form);
}

std::vector<FormControl> CDlgCreateBatchFile::SequenceControls()
{
    ListView sequences{.name = "Batch sequences",
                       .columns = {{"Batch Sequence", 30}, {"File"}},
                       .count = [this] { return m_facts.sequences.size(); },
                       .text =
                           [this](std::size_t row, std::size_t column) {
                               const std::string& path = m_facts.sequences[row];
                               return column == 0 ? DisplayName(path) : platform::Utf8FromNarrow(path);
                           },
                       .selected = &m_sequence,
                       .lines = 6,
                       .width = 80};
    return {{.what = StaticText{"Select a batch sequence and what happens to each input file after it has been "
                                "processed. The batch file takes the input folder as its first argument and the "
                                "output folder as its second."}},
            {.what = std::move(sequences), .id = "sequences", .grows = true},
            {.what = Row{
                 {{.what = Button{"Add &Sequence File...", [this] { return Stay([this] { AddSequence(); }); }}}}}}};
}

Group CDlgCreateBatchFile::ActionGroup()
{
    std::vector<std::string> rows;
    for (const FinalActionFacts* action : m_actions) rows.emplace_back(action->offered);
    const auto needsPlace = [this] { return Action() && Action()->destination != Destination::None; };
    return {
        .title = "",
        .controls = {{.what = Choice{"&Final action:", std::move(rows), &m_action}, .id = "action"},
                     {.what = Row{{{.what = TextField{.label = "&Destination:", .value = &m_destination, .width = 50},
                                    .id = "destination",
                                    .enabled = needsPlace},
                                   {.what = Button{"&Browse...", [this] { return Stay([this] { Browse(); }); }},
                                    .enabled = needsPlace}}}}}};
}

Group CDlgCreateBatchFile::OptionGroup()
{
    return {.title = "",
            .controls = {{.what = CheckBox{"Execute batch commands in &multiple steps", &m_inSteps}, .id = "steps"},
                         {.what = Choice{.label = "&Progress:",
                                         .rows = {"Show progress while the files are processed",
                                                  "Start hidden, without showing progress"},
                                         .row = &m_progress,
                                         .asButtons = true},
                          .id = "progress"},
                         {.what = Row{{{.what = CheckBox{"&Restrict input files to these extensions:", &m_restrict},
                                        .id = "restrict"},
                                       {.what = TextField{.label = "",
                                                          .value = &m_extensions,
                                                          .width = 20,
                                                          .name = "Extensions, separated by commas"},
                                        .id = "extensions",
                                        .enabled = [this] { return m_restrict; }}}}},
                         {.what = CheckBox{"&Include subfolders", &m_subfolders}, .id = "subfolders"}}};
}

Row CDlgCreateBatchFile::LogRow()
{
    return {{{.what = CheckBox{"Disable &Logging", &m_disableLog}, .id = "no-log"},
             {.what = Button{"&View Log", [this] { return Stay([this] { ViewLog(); }); }}},
             {.what = Button{"C&lear Log", [this] { return Stay([this] { ClearLog(); }); }}}}};
}

DialogForm CDlgCreateBatchFile::Describe()
{
    DialogForm form{
        .title = "Create Command-Line Batch File (Ferrule Plug-in)",
        .controls = SequenceControls(),
        .buttons = {{.what =
                         Button{"&Help...", [this] { return Stay([this] { m_services.showHelp(kHelpTopic); }); }}},
                    {.what = Button{"OK", [this] { return Confirm(); }, ButtonRole::Default}},
                    {.what = Button{"Cancel", [] { return FormAnswer::Cancel; }, ButtonRole::Cancel}}},
        .focus = "sequences"};
    form.controls.push_back({.what = ActionGroup()});
    form.controls.push_back({.what = OptionGroup()});
    form.controls.push_back({.what = LogRow()});
    return form;
}

const FinalActionFacts* CDlgCreateBatchFile::Action() const
{
    return m_action < 0 ? nullptr : m_actions[static_cast<std::size_t>(m_action)];
}

void CDlgCreateBatchFile::AddSequence()
{
    const auto path = m_services.windows.OpenFile(
        {.filter = "Acrobat Batch Sequence (*.sequ)|*.sequ||", .defaultExtension = "sequ"});
    if (!path) return;
    const auto same = [&](const std::string& known) {
        return platform::ResolvedPath(known) == platform::ResolvedPath(*path);
    };
    if (std::ranges::any_of(m_facts.sequences, same)) {
        m_services.windows.Message(MessageKind::Warning, "This file is already in the batch sequences list.");
        return;
    }
    m_facts.sequences.push_back(*path);
    m_sequence = {m_facts.sequences.size() - 1};
}

void CDlgCreateBatchFile::Browse()
{
    const bool wantsFolder = Action() && Action()->destination == Destination::Folder;
    const auto path =
        wantsFolder
            ? m_services.windows.ChooseFolder("Select destination folder", platform::NarrowFromUtf8(m_destination))
            : m_services.windows.OpenFile({.filter = "Application (*.exe)|*.exe|All Files (*.*)|*.*||",
                                           .initial = platform::NarrowFromUtf8(m_destination)});
    if (path) m_destination = platform::Utf8FromNarrow(*path);
}

void CDlgCreateBatchFile::ViewLog()
{
    const bool there = m_log.isOpen() || platform::FileExists(m_log.path);
    if (!there) {
        const char* const how =
            m_disableLog ? "\nPlease uncheck \"Disable Logging\" option to enabled processing log." : "";
        m_services.windows.Message(MessageKind::Note, std::string(kNoLogFile) + how);
    } else if (!platform::OpenDocument(m_log.path)) {
        m_services.windows.Message(MessageKind::Warning, "No program could be started to show the log file " +
                                                             platform::Utf8FromNarrow(m_log.path) + ".");
    }
}

void CDlgCreateBatchFile::ClearLog()
{
    CWindows& windows = m_services.windows;
    if (!platform::FileExists(m_log.path)) {
        windows.Message(MessageKind::Note, kNoLogFile);
        return;
    }
    if (windows.Message(MessageKind::Question, "Do you really want to remove all records from plug-in's log file?") &&
        !m_log.clear())
        windows.Message(MessageKind::Warning,
                        "The log file " + platform::Utf8FromNarrow(m_log.path) + " cannot be cleared.");
}

FormAnswer CDlgCreateBatchFile::Refuse(const std::string& text)
{
    m_services.windows.Message(MessageKind::Warning, text);
    return FormAnswer::StayOpen;
}

FormAnswer CDlgCreateBatchFile::Confirm()
{
    if (!Action()) return Refuse("Please select final action.");
    if (m_sequence.empty()) return Refuse("Please select a batch sequence.");
    const auto optimizes = SequenceRunsOptimizer(m_facts.sequences[m_sequence.front()]);
    if (!optimizes)
        return Refuse("Error reading a batch sequence file. Please verify that input batch sequence is not corrupt.");
    const auto settings = Settings();
    if (!settings) return Refuse(settings.Error());
    if (!Write(*settings)) return FormAnswer::StayOpen;
    m_choices = {m_progress == 0, m_progress != 0, m_restrict, m_extensions};
    *m_log.allowed = !m_disableLog;
    if (*optimizes && m_facts.hostMajorVersion < kFirstHostWithOptimizer)
        m_services.windows.Message(
            MessageKind::Note,
            "This batch sequence is using \"PDF Optimizer\" options that are not supported by Ferrule plug-in in "
            "Adobe Acrobat prior version 8. No PDF optimization will be performed when executing this batch file.");
    return FormAnswer::Confirm;
}

Expected<BatchFileSettings> CDlgCreateBatchFile::Settings() const
{
    BatchFileSettings settings{
        .sequence = platform::Utf8FromNarrow(m_facts.sequences[m_sequence.front()]),
        .finalAction = Action()->action,
        .destination = Action()->destination == Destination::None ? std::string() : m_destination,
        .executeInSteps = m_inSteps,
        .showProgress = m_progress == 0,
        .startHidden = m_progress != 0,
        .extensions = m_restrict ? std::optional(m_extensions) : std::nullopt,
        .includeSubfolders = m_subfolders,
        .hostProgram = platform::Utf8FromNarrow(m_facts.hostProgram)};
    std::string problem = DestinationProblem(settings.finalAction, settings.destination);
    if (problem.empty()) return settings;
    return Failure(std::move(problem));
}

bool CDlgCreateBatchFile::Write(const BatchFileSettings& settings)
{
    // Made for the proposed form before a name is asked for, so that a value that does not fit is told first.
    if (const auto proposed = MakeBatchFile(settings, m_facts.form); !proposed) {
        Refuse(proposed.Error());
        return false;
    }
    const bool both = m_facts.form == BatchFileForm::Sh;
    const std::string extension = ExtensionOf(m_facts.form);
    const auto path = m_services.windows.SaveFile(
        {.filter = FilterOf(m_facts.form) + (both ? "|" + FilterOf(BatchFileForm::Bat) : "") + "||",
         .defaultExtension = extension,
         .initial = platform::NarrowFromUtf8("Ferrule " + DisplayName(m_facts.sequences[m_sequence.front()]) + '.' +
                                             extension)});
    if (!path) return false;
    const bool isBat = m_facts.form == BatchFileForm::Bat || EqualsIgnoreCaseAscii(Extension(*path), "bat");
    const BatchFileForm form = isBat ? BatchFileForm::Bat : BatchFileForm::Sh;
    const auto bytes = MakeBatchFile(settings, form);
    if (!bytes) {
        Refuse(bytes.Error());
        return false;
    }
    if (const std::string problem = WriteBatchFile(*path, *bytes, form, true); !problem.empty()) {
        Refuse("Error writing output file.\n" + problem);
        return false;
    }
    return true;
}
