// How a sequence wants its results to be saved.
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
