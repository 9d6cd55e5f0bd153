// Processes one input file of a run.
#pragma once

#include <functional>
#include <string>

#include "engine/CommandList.h"
#include "engine/OutputSaving.h"
#include "engine/Work.h"
#include "pdflib/AcrobatDoc.h"
#include "sequence/OutputSettings.h"
#include "sequence/Sequence.h"

class CLogWriter;
class CProgressMonitorWrapper;
struct HostError;

/// What all files of a run share. Everything is borrowed.
struct RunContext {
    const ExecutorSettings& settings;
    CSequence& sequence;
    CLogWriter& log;
    CProgressMonitorWrapper& progress;
    CommandList& commands;                                      // those of the file before; replaced by each file
    const std::function<void(bool begins)>& sequencePreflight;  // may be empty
    int hostMajor = 0;
    int fileCount = 0;
    bool sequencePreflighted = false;
};

/// Opens one file, runs the commands on it, saves and closes it. A host error in any of these steps is logged and
/// ends in the outcome; the document is closed in all cases.
class CFileRun {
public:
    /// `fileNumber` counts from 1.
    CFileRun(RunContext& run, std::string path, int fileNumber);

    [[nodiscard]] ProcessedFile Process();

    /// Why the whole run has to stop after this file; empty when it goes on.
    const std::string& StopReason() const { return m_stopReason; }

private:
    bool Open();
    void NoteLoss(const std::string& loss);
    void Work();
    void ProcessOpen();
    bool PrepareCommands();
    void PreflightWholeSequence();
    void ShowDocument();
    void Preflight();
    bool RunCommands();
    bool RunCommand(SequenceCommand& command, int number);
    bool ExecuteReady(SequenceCommand& command);
    bool ExecuteSaveStep(SequenceCommand& command);
    bool Execute(SequenceCommand& command);
    bool MaySave(const SaveStepFacts& save, bool replacesInput);
    bool SavesIntoOutputFolder(const SaveStepFacts& save) const;
    bool Redirect(SequenceCommand& command);
    void Evaluate(SequenceCommand& command, AVCommandStatus status);
    void NotDone(const SequenceCommand& command, const std::string& reason);
    void SaveTemporary();
    void Save();
    void TakeSaveResult(const SaveResult& result);
    void NoteSaved(const std::string& path);
    void Refuse(const std::string& reason);
    SavingInput SavingPlace();

    /// Why the input must not be replaced at this moment; empty when it may be.
    std::string InPlaceObjection() const;
    bool IsHalfDone() const { return m_run.settings.sparesInputs && m_stepFailed && m_permissions.mayModify; }
    void Close();

    /// Lowers the outcome, never raises it; the first reason of the lowest outcome stays.
    void Mark(FileOutcome outcome, const std::string& reason);
    void Note(const std::string& sentence);
    void Stop(const std::string& reason);
    CCab Inputs() const;

    RunContext& m_run;
    CLogWriter& m_log;
    CAcrobatDoc m_document;
    OpenPermissions m_permissions;
    ProcessedFile m_result;
    std::string m_notes;  // sentences that change nothing of the outcome, each behind a blank
    std::string m_stopReason;
    int m_number;
    bool m_lastCommandInError = false;
    bool m_stepFailed = false;
    bool m_unprotected = false;  // the protection that the sequence wants is not there
};
