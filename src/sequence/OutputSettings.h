// How a sequence wants its results to be saved: by its output part, and by a save step.
#pragma once

#include "hostcalls/Cab.h"

#include <optional>
#include <string>

enum OutputKind { kOutputInputFolder = 0, kOutputAskUser = 1, kOutputFolder = 2, kOutputNone = 3 };

/// The output part of a sequence with its defaults. Strings in the narrow code page.
struct OutputSettings {
    int kind = kOutputFolder;               // an OutputKind, or a number that nobody knows
    std::string insertBefore, insertAfter;  // empty unless the sequence adds them
    bool dontOverwrite = true;
    bool optimizePdf = true;
    bool runPdfOptimizer = false;               // without effect on the engine's own save
    std::optional<std::string> handlerId;       // of the converter that writes another format than PDF
    std::optional<std::string> selectedFolder;  // platform path

    /// Throws CHostException.
    [[nodiscard]] static OutputSettings Read(CCabView output);
};

/// The first major version of the host whose sequences save by a step of their own.
inline constexpr int kFirstMajorWithSaveStep = 11;

/// The parameter of a save step that tells whether it saves into a folder.
inline constexpr char kSaveDestinationKey[] = "DocSaveDestType";
inline constexpr char kSaveInAFolder[] = "WorkflowPlaybackSaveInAFolder";

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
