#include "engine/FileRun.h"

#include <utility>

#include "base/Names.h"
#include "base/Text.h"
#include "common/Log.h"
#include "common/Progress.h"
#include "engine/CommandList.h"
#include "engine/InputOpening.h"
#include "engine/OutputSaving.h"
#include "hostapi/HostConstants.h"
#include "hostcalls/HostFrame.h"

namespace {

constexpr int kFirstMajorWithViews = 11;

/// The further down, the worse.
int Badness(FileOutcome outcome)
{
    switch (outcome) {
        case FileOutcome::Saved:
            return 0;
        case FileOutcome::CopiedUnchanged:
            return 1;
        case FileOutcome::Incomplete:
            return 2;
        case FileOutcome::Failed:
            return 3;
        default:
            return 4;
    }
}

}  // namespace

CFileRun::CFileRun(RunContext& run, std::string path, int fileNumber)
    : m_run(run), m_log(run.log), m_result{.path = std::move(path)}, m_number(fileNumber)
{
}

ProcessedFile CFileRun::Process()
{
    m_log.NameValue("Opening input document", m_result.path, 1);
    if (Open()) Work();
    m_result.message = Trim(m_result.loss + " " + m_result.message + m_notes);
    return m_result;
}

void CFileRun::Work()
{
    if (const auto error = CatchHostError([&] { ProcessOpen(); })) {
        m_log.NameValue("ERROR: Command execution failed", error->text, 1);
        Mark(FileOutcome::Failed, error->text);
    }
    Close();
}

bool CFileRun::Open()
{
    std::string reason, loss;
    m_result.input = platform::StampOf(m_result.path);
    const auto error = CatchHostError([&] {
        reason = OpenInput(m_document, m_result.path, m_log);
        if (!reason.empty()) return;
        m_permissions = {m_document.MayModify(), m_document.MayFullSave()};
        if (IsPdfPath(m_result.path)) loss = m_document.Loss(m_run.settings.sparesRepaired);
    });
    if (error) reason = error->text;
    if (reason.empty()) return NoteLoss(loss), true;
    m_log.NameValue("Can't open input document", m_result.path + " (" + reason + ")", 1);
    Mark(FileOutcome::Failed, "The file cannot be opened: " + reason);
    return false;
}

void CFileRun::NoteLoss(const std::string& loss)
{
    if (loss.empty()) return;
    m_log.NameValue("The document is damaged", loss, 1);
    if (m_run.settings.acceptDamaged) return Note(loss);
    m_result.loss = loss;
    Mark(FileOutcome::Incomplete, {});
}

void CFileRun::ProcessOpen()
{
    if (!PrepareCommands()) return;
    ShowDocument();
    m_run.progress.SetOperationText(
        FormatText("Processing file %d out %d (%s)", m_number, m_run.fileCount, FileName(m_result.path).c_str()));
    m_run.progress.SetCurrentValue(m_number);
    Preflight();
    if (RunCommands() && m_result.outcome != FileOutcome::Failed) Save();
}

bool CFileRun::PrepareCommands()
{
    const CCabView commands = m_run.sequence.Commands();
    if (commands.Size() == 0) m_log.Line("Batch sequence does not contain any commands.");
    m_run.commands.clear();
    std::string reason;
    const auto error = CatchHostError([&] {
        auto made = MakeCommands(commands, m_run.settings.trialRun, m_log);
        if (made) m_run.commands = std::move(*made);
        if (!made) reason = made.Error();
    });
    if (error) reason = error->text;
    if (!reason.empty()) {
        m_log.NameValue("Error preparing commands", reason, 1);
        Mark(FileOutcome::Failed, reason);
        return false;
    }
    if (m_run.sequencePreflighted) return true;
    PreflightWholeSequence();
    return m_stopReason.empty();
}

void CFileRun::PreflightWholeSequence()
{
    m_run.sequencePreflighted = true;
    const auto mark = [this](bool begins) {
        if (m_run.sequencePreflight) m_run.sequencePreflight(begins);
    };
    mark(true);
    if (const std::string problem = PreflightSequence(m_run.commands, m_log); !problem.empty()) Stop(problem);
    mark(false);
}

void CFileRun::ShowDocument()
{
    if (m_run.hostMajor < kFirstMajorWithViews || m_document.View()) return;
    if (m_document.OpenView()) m_log.Line("Displaying input document...");
}

void CFileRun::Preflight()
{
    const std::string problem = PreflightFile(m_run.commands, m_document.Document(), Inputs(), m_log);
    if (!problem.empty()) Mark(FileOutcome::Incomplete, problem);
}

bool CFileRun::RunCommands()
{
    m_log.NameNumber("Number of commands to execute", static_cast<long long>(m_run.commands.size()), 1);
    int number = 0;
    for (SequenceCommand& command : m_run.commands) {
        if (!RunCommand(command, ++number)) return false;
        if (m_run.progress.IsCancelled()) {
            m_log.Line("Command execution is aborted");
            Stop("The run was cancelled.");
            return false;
        }
        if (m_unprotected) {
            m_log.Line("ERROR: The document is not protected, so it is not saved.");
            break;
        }
        SaveTemporary();
    }
    if (m_lastCommandInError) m_log.Line("ERROR: Command execution failed without an exception.");
    return !m_unprotected;
}

/// False when the file's command loop ends here.
bool CFileRun::RunCommand(SequenceCommand& command, int number)
{
    m_log.NameNumber("Processing command", number, 1);
    if (command.leftOut) {
        m_log.Line("Skipping command because a trial run cannot contain what it does");
        Note("The command " + command.handlerName + " was left out of the trial run.");
        return true;
    }
    if (!command.command) {
        m_log.Line("Skipping command because it is not available");
        NotDone(command, "The command " + command.handlerName + " is not available.");
        return true;
    }
    m_log.NameValue("Command handler name", command.handlerName, 1);
    m_run.progress.SetStatusText(FormatText("Executing command: %s (%d out of %d). Please wait...",
                                            command.title.c_str(), number, static_cast<int>(m_run.commands.size())));
    return ExecuteReady(command);
}

bool CFileRun::ExecuteReady(SequenceCommand& command)
{
    CHostCommand& host = *command.command;
    const AVCommandStatus before = host.Status();
    if (before != kAVCommandReady) m_log.Line("Command is not ready. ");
    m_log.NameNumber("Status", before, 1);
    if (host.SetInputs(Inputs()) == kAVCommandInError) {
        m_log.Line("ERROR: Setting input file failed");
        const std::string problem = "The command " + command.handlerName + " did not take the document.";
        if (command.protects) return NotDone(command, problem), true;
        Mark(FileOutcome::Incomplete, problem);
    }
    if (command.saves) return ExecuteSaveStep(command);
    return Execute(command);
}

bool CFileRun::Execute(SequenceCommand& command)
{
    const ExecutionOutcome outcome =
        ExecuteCommand(*command.command, m_run.settings.interactive, m_run.progress, m_log);
    if (outcome.raised) {
        m_log.NameValue("ERROR: Command execution failed", outcome.raised->text, 1);
        Mark(FileOutcome::Failed, "The command " + command.handlerName + " failed: " + outcome.raised->text);
        return false;
    }
    Evaluate(command, outcome.status);
    return true;
}

/// A save step that would cost the input is passed over.
bool CFileRun::ExecuteSaveStep(SequenceCommand& command)
{
    if (!Redirect(command)) return false;
    const auto save = SaveStepFacts::Read(command.command->Params());
    const bool replacesInput = MayReplaceInput(save, m_document.CurrentFile(), m_result.path);
    if (!MaySave(save, replacesInput)) return m_result.outcome != FileOutcome::Failed;
    const FileOutcome before = m_result.outcome;
    const std::string messageBefore = m_result.message;
    const bool goesOn = Execute(command);
    if (!replacesInput) return goesOn;
    const bool failed = m_result.outcome == FileOutcome::Failed && before != FileOutcome::Failed;
    if (!failed) return NoteSaved(m_result.path), goesOn;
    if (HasChanged(m_result.path, m_result.input)) {  // which is why it could not be replaced
        m_result.outcome = before;
        m_result.message = messageBefore;
        Refuse(InPlaceObjection());
    }
    return goesOn;
}

/// False when a save step could cost the input.
bool CFileRun::MaySave(const SaveStepFacts& save, bool replacesInput)
{
    if (IsHalfDone() && (replacesInput || !SavesIntoOutputFolder(save))) {
        Refuse(m_result.message + " The document is not saved, so that its file stays as it is.");
        return false;
    }
    const std::string objection = replacesInput ? InPlaceObjection() : std::string();
    if (!objection.empty()) Refuse(objection);
    return objection.empty();
}

bool CFileRun::SavesIntoOutputFolder(const SaveStepFacts& save) const
{
    const auto folder = AlternativeOutputFolder(m_run.settings);
    return folder && save.folder && IsSameFolder(*folder, *save.folder);
}

std::string CFileRun::InPlaceObjection() const
{
    if (!m_result.loss.empty()) return "Not saved in the place of its input, because the document is damaged.";
    if (HasChanged(m_result.path, m_result.input))
        return std::string("Not saved in the place of its input, because ") + kInputChanged + '.';
    if (IsHalfDone()) return m_result.message + " The document is not saved, so that its file stays as it is.";
    return {};
}

/// The document is not saved where it should be.
void CFileRun::Refuse(const std::string& reason)
{
    m_log.NameValue("ERROR: The input is not replaced", reason, 1);
    const FileOutcome outcome = IsHalfDone() ? FileOutcome::Failed : FileOutcome::Incomplete;
    Mark(outcome, reason);
    if (m_result.message != reason) Note(reason);
}

/// False when a save step would save somewhere else than it should.
bool CFileRun::Redirect(SequenceCommand& command)
{
    if (m_run.hostMajor < kFirstMajorWithSaveStep) return true;
    const std::string folder = RedirectionFolder(m_result.path, m_run.settings);
    const std::string problem = RedirectSaveStep(*command.command, folder, m_log);
    if (problem.empty()) return true;
    m_log.NameValue("ERROR: Command execution failed", problem, 1);
    Mark(FileOutcome::Failed, problem);
    return false;
}

void CFileRun::Evaluate(SequenceCommand& command, AVCommandStatus status)
{
    m_lastCommandInError = status == kAVCommandInError;
    if (status == kAVCommandDone) {
        m_log.Line("Batch command is successfully completed.");
        return;
    }
    m_stepFailed = true;
    std::string reason = "The command " + command.handlerName + " was not completed.";
    if (status == kAVCommandInError) {
        const std::string lastError = command.command->LastError();
        m_log.Line("Batch command is finished with an error.");
        m_log.NameValue("Last error", lastError, 1);
        reason = "The command " + command.handlerName + " failed" + (lastError.empty() ? "." : ": " + lastError);
    } else {
        m_log.Line("Batch command is finished without kAVCommandDone.");
    }
    NotDone(command, reason);
}

/// Without its save step nothing of a file is kept, and without its protection nothing must be: the input stays.
void CFileRun::NotDone(const SequenceCommand& command, const std::string& reason)
{
    const bool needed = command.protects || command.saves;
    Mark(needed ? FileOutcome::Failed : FileOutcome::Incomplete, reason);
    m_unprotected = m_unprotected || command.protects;
}

SavingInput CFileRun::SavingPlace()
{
    return {m_result.path, AlternativeOutputFolder(m_run.settings), m_permissions,
            [this] { return InPlaceObjection(); }};
}

void CFileRun::SaveTemporary()
{
    SaveResult result;
    const auto error = CatchHostError([&] { result = SaveTemporaryFile(m_document, SavingPlace(), m_log); });
    if (result.status == SaveStatus::Refused) return Refuse(result.reason);
    if (error && HasChanged(m_result.path, m_result.input)) return Refuse(InPlaceObjection());
    if (error) throw CHostException(*error);
    NoteSaved(result.path);
}

/// From now on the input is what was saved in its place.
void CFileRun::NoteSaved(const std::string& path)
{
    if (!path.empty() && IsSameFile(path, m_result.path)) m_result.input = platform::StampOf(m_result.path);
}

void CFileRun::Save()
{
    m_run.progress.SetStatusText("Saving document...");
    SaveResult result;
    const auto error = CatchHostError([&] {
        if (m_run.hostMajor >= kFirstMajorWithSaveStep)
            RedirectOutput(m_run.sequence, RedirectionFolder(m_result.path, m_run.settings), m_log);
        result = SaveProcessed(m_document, OutputSettings::Read(m_run.sequence.Output()), SavingPlace(), m_log);
    });
    if (!error) return TakeSaveResult(result);
    m_log.NameValue("Error saving document:", error->text, 1);
    Mark(FileOutcome::Failed, "The document cannot be saved: " + error->text);
}

void CFileRun::TakeSaveResult(const SaveResult& result)
{
    if (result.status == SaveStatus::Failed) {
        m_log.Line("Document did not save correctly");
        return Mark(FileOutcome::Failed, result.reason);
    }
    if (result.status == SaveStatus::Refused) {
        m_log.Line("Document did not save correctly");
        return Refuse(result.reason);
    }
    if (result.status != SaveStatus::NotWanted) m_log.Line("Document has been saved successfully");
    NoteSaved(result.path);
    if (result.status == SaveStatus::CopiedUnchanged) Mark(FileOutcome::CopiedUnchanged, result.reason);
    // A success for the log, but there is no output, so the input must not be moved or deleted.
    if (result.status == SaveStatus::ConversionFailed) Mark(FileOutcome::Failed, result.reason);
    const std::string problem = PostflightFile(m_run.commands, m_document.Document(), m_log);
    if (!problem.empty()) Mark(FileOutcome::Incomplete, problem);
}

void CFileRun::Close()
{
    CAcrobatDoc::Closed closed = CAcrobatDoc::Closed::NothingOpen;
    const auto error = CatchHostError([&] { closed = m_document.Close(); });
    if (closed != CAcrobatDoc::Closed::NothingOpen) m_log.Line("AVDoc is closed.");
    if (!error) return;
    m_log.NameValue("Exception occured during a document closing", error->text, 1);  // sic
    Mark(FileOutcome::Incomplete, "The document cannot be closed: " + error->text);
}

void CFileRun::Mark(FileOutcome outcome, const std::string& reason)
{
    if (Badness(outcome) < Badness(m_result.outcome)) return;
    if (outcome == m_result.outcome && !m_result.message.empty()) return;
    m_result.outcome = outcome;
    m_result.message = reason;
}

/// Beside the outcome's reason; each sentence once.
void CFileRun::Note(const std::string& sentence)
{
    if (m_notes.find(sentence) == std::string::npos) m_notes += " " + sentence;
}

void CFileRun::Stop(const std::string& reason)
{
    m_stopReason = reason;
    Mark(FileOutcome::Stopped, reason);
}

CCab CFileRun::Inputs() const
{
    const PathParts parts = SplitPath(m_result.path);
    return CommandInputs(m_document.Document(), parts.base, parts.extension);
}
