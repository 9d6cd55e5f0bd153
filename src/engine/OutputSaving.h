// Saves a processed document by the output rules of its sequence.
#pragma once

#include "pdflib/AcrobatDoc.h"
#include "sequence/OutputSettings.h"

#include <functional>
#include <optional>
#include <string>

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
