// What the caller of a run may set beside the sequence itself.
#pragma once

#include <optional>
#include <string>
#include <vector>

struct ExecutorSettings {
    std::string alternativeInputPath;            // a folder or a file in place of the sequence's input; empty = none
    std::vector<std::string> furtherInputPaths;  // beside it; they, too, replace the sequence's input
    std::string alternativeOutputPath;           // a folder in place of the sequence's output folder; empty = none
    /// Saves nowhere else when the alternative output folder is gone; otherwise results then go where the sequence
    /// says, or beside their inputs.
    bool insistsOnOutputPath = false;
    /// After a failed step a save step saves into the alternative output folder only: anywhere else it could put a
    /// document that is not done in the place of its input. Nor does the engine save there.
    bool sparesInputs = false;
    /// Folders that get files beside the results; like the output folder they are left out of an input around them.
    std::vector<std::string> furtherOutputPaths = {};
    /// In place of the file types that the sequence accepts. An empty list accepts none.
    std::optional<std::vector<std::string>> allowedExtensions;
    bool noSubfolders = false;
    bool acceptDamaged = false;  // a document that lost something in its repair counts as if it had not
    bool trialRun = false;       // nothing is to be done for good; steps that could do it anyway are left out
    bool interactive = false;    // whether a command may show its settings dialog
};
