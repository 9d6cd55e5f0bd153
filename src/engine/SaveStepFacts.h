// Where a save step saves, as its parameters tell.
#pragma once

#include "hostcalls/Cab.h"

#include <optional>
#include <string>

/// Strings in the narrow code page.
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

/// Whether the step, which has these parameters by now, may write over the input file. `documentFile` is the file
/// behind the document at this moment.
[[nodiscard]] bool MayReplaceInput(const SaveStepFacts& save, const std::string& documentFile,
                                   const std::string& inputPath);
