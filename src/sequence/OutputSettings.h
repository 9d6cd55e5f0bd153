// How a sequence wants its results to be saved: by its output part, and by save steps.
#pragma once

#include <optional>
#include <string>

#include "base/Expected.h"
#include "hostcalls/Cab.h"
#include "sequence/XmlForm.h"

enum OutputKind { kOutputInputFolder = 0, kOutputAskUser = 1, kOutputFolder = 2, kOutputNone = 3 };

/// The first major version of the host whose sequences save by a step of their own.
inline constexpr int kFirstMajorWithSaveStep = 11;

/// The output part of a sequence with its defaults; save steps have most of it, too. Strings in the narrow code page.
struct OutputSettings {
    int kind = kOutputFolder;               // an OutputKind, or a number that nobody knows
    bool namesDestination = false;          // only then the results can be sent into another folder
    std::string insertBefore, insertAfter;  // empty unless the sequence adds them
    bool dontOverwrite = true;
    bool optimizePdf = true;
    bool runPdfOptimizer = false;               // without effect on the engine's own save
    std::string optimizerPreset;                // the name of its settings
    bool embedIndex = false;                    // of save steps
    bool numberFiles = false;                   // of save steps
    std::optional<std::string> handlerId;       // of the converter that writes another format than PDF
    std::optional<std::string> selectedFolder;  // platform path

    /// Throws CHostException.
    [[nodiscard]] static OutputSettings Read(CCabView output);

    /// Whether a save into the folder of the input replaces the input.
    [[nodiscard]] bool ReplacesInput() const;
};

/// Output in which the engine itself saves nothing. Throws CHostException.
[[nodiscard]] CCab MakeNoOutput();

/// Where a save step saves, as its parameters tell. Strings in the narrow code page.
struct SaveStepFacts {
    bool namesDestination = false;      // only then it can be sent into another folder
    std::optional<std::string> folder;  // the one it names, when it is to save there
    std::string before, after;          // around the base name; empty unless it adds them
    std::string converterId;            // empty: saves as PDF
    bool dontOverwrite = true;          // of what it saves elsewhere than in the document's place

    /// Throws CHostException.
    [[nodiscard]] static SaveStepFacts Read(CCabView params);

    /// Whether it saves the document into the document's own file.
    [[nodiscard]] bool SavesWhereDocumentIs() const;
};

/// Whether the step saves the document where it came from, whatever output folder is given.
[[nodiscard]] bool SavesInPlace(const SaveStepFacts& save, int hostMajor);

/// What a new save step is to do.
struct SaveStepWishes {
    std::string folder;          // empty: where the document is
    std::string prefix, suffix;  // around the base name
    std::string converter;       // empty: saves as PDF
    bool overwrite = false;
    bool optimize = true;
};

/// Fails with a sentence when the folder has no name in a sequence.
[[nodiscard]] Expected<WorkflowCommand> MakeSaveStep(const SaveStepWishes& wishes);

/// A save step that does what the output settings say, as far as a step can; nothing when they save nothing or are
/// of an unknown kind. Throws CHostException.
[[nodiscard]] std::optional<WorkflowCommand> SaveStepFromOutput(CCabView output);
