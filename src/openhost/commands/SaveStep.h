#pragma once

#include <functional>
#include <optional>
#include <string>

#include "openhost/values/Cabinet.h"

namespace openhost {

/// How a sequence's save step wants the document saved. All texts in host encoding.
struct SaveStepSettings {
    bool inFolder = false;                   ///< in `folder`, else where the document is
    std::optional<std::string> folder = {};  ///< native
    std::string before = {}, after = {};     ///< put around the base name
    bool dontOverwrite = true;               ///< a new file gets a name that is not taken
    bool optimise = true;                    ///< linearised
    std::string converterId = {};            ///< empty: PDF

    /// Reads the step's parameters; null stands for none: save in place.
    static SaveStepSettings Read(const CCabinet* params);
};

/// What is known of the document that the step saves.
struct SaveStepDocument {
    std::string path;      ///< its own file, empty when it never had one
    std::string madeFrom;  ///< the file it was converted from, or empty
    std::string baseName;  ///< as given with the inputs, or empty
};

struct SaveTarget {
    std::string path;
    bool inPlace = false;  ///< the document's own file
};

/// Where the document goes. A save in place without affixes goes to the document's own file, whatever
/// `dontOverwrite` says; a converted document goes beside its source as base.`extension`. All other names are made
/// unique as "base (1).ext" when an existing file must not be overwritten.
/// Raises genErrBadParm when there is no place or no name, or an affix would lead out of the folder.
SaveTarget PlanSaveTarget(const SaveStepSettings& settings, const SaveStepDocument& document,
                          const std::string& extension, const std::function<bool(const std::string&)>& exists);

}  // namespace openhost
