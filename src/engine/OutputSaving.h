#pragma once

#include <functional>
#include <optional>
#include <string>

#include "hostcalls/Commands.h"
#include "pdflib/AcrobatDoc.h"
#include "sequence/OutputSettings.h"
#include "sequence/Sequence.h"

// Saves a processed document by the output rules of its sequence.

class CLogWriter;

/// What the document's security allowed when the document was opened.
struct OpenPermissions {
    bool mayModify = true;
    bool mayFullSave = true;
};

struct SavingInput {
    std::string path;                              // of the input file
    std::optional<std::string> alternativeFolder;  // in place of the one that the sequence names
    OpenPermissions permissions;
    /// Asked immediately before the input itself would be replaced; answers why it must stay, empty when it need not.
    std::function<std::string()> inPlaceObjection = {};
};

enum class SaveStatus {
    NotWanted,         // the sequence saves for itself
    Saved,             // the result is written
    CopiedUnchanged,   // security forbade saving: the output is a copy of the input
    ConversionFailed,  // counts as a success in the log, but nothing was written
    Refused,           // it would have replaced an input that must stay
    Failed
};

struct SaveResult {
    SaveStatus status = SaveStatus::Failed;
    std::string reason = {};  // one sentence, unless all went well
    std::string path = {};    // of what was saved
};

/// Never replaces the input by anything but the saved document itself, nor another file when the settings forbid it.
/// Throws CHostException from everything but the saving itself, which is logged and answered.
[[nodiscard]] SaveResult SaveProcessed(CAcrobatDoc& document, const OutputSettings& settings,
                                       const SavingInput& input, CLogWriter& log);

/// Saves a document that a step left in a temporary file: as "<base name of the input>.pdf" in the input's folder. A
/// file of that name which is not the input stays; then a number is added. Not wanted when the document is in no
/// temporary file. Throws CHostException when the host cannot save it.
[[nodiscard]] SaveResult SaveTemporaryFile(CAcrobatDoc& document, const SavingInput& input, CLogWriter& log);

// Sends the host's own save step into a folder.

class CLogWriter;
struct ExecutorSettings;

/// Where results go in place of what the sequence says; nothing when nothing was given or it is no folder and the run
/// does not insist on it. With a separator at its end.
[[nodiscard]] std::optional<std::string> AlternativeOutputFolder(const ExecutorSettings& settings);

/// The alternative output folder, otherwise the input's folder; with a separator at its end.
[[nodiscard]] std::string RedirectionFolder(const std::string& inputPath, const ExecutorSettings& settings);

/// Changes the parameters of a save step, when they say where to save. Answers what went wrong; empty when nothing
/// did. Throws CHostException.
[[nodiscard]] std::string RedirectSaveStep(CHostCommand& command, const std::string& folder, CLogWriter& log);

/// The same in the output part of a sequence. Throws CHostException.
void RedirectOutput(CSequence& sequence, const std::string& folder, CLogWriter& log);

/// Whether the step, which has these parameters by now, may write over the input file. `documentFile` is the file
/// behind the document at this moment.
[[nodiscard]] bool MayReplaceInput(const SaveStepFacts& save, const std::string& documentFile,
                                   const std::string& inputPath);
