// The file that describes a full-text index: which folders it is made of, and where the index lies.
#pragma once

#include <string>
#include <vector>

#include "base/Expected.h"

namespace openhost {

/// What a ".pdx" file of ours says. It is JSON, so that people can read and change it:
///
/// {"ferrule": "index", "version": 1, "folders": [".", "/srv/archive"], "extensions": ["pdf"], "includeEncrypted":
/// false}
struct IndexDescription {
    std::vector<std::string> folders = {};  ///< absolute, or relative to the folder of the description
    std::vector<std::string> extensions = {"pdf"};
    bool includeEncrypted = false;  ///< the text of encrypted documents goes into the index, which is not encrypted
};

/// Fails with a sentence that names the file and says what to do. What another program made is refused.
Expected<IndexDescription> ReadIndexDescription(const std::string& path);
/// Replaces nothing. Fails with a sentence that names the file; otherwise the text is empty.
std::string WriteIndexDescription(const std::string& path, const IndexDescription& description);

/// Where things lie, all absolute.
struct IndexPlace {
    std::string description;
    std::string base;                   ///< the folder of the description
    std::string folder;                 ///< of the index: the description's name with ".index" in place of ".pdx"
    std::string index, newIndex, lock;  ///< in it; nothing else there is touched
};

IndexPlace PlaceOfIndex(const std::string& descriptionPath);

}  // namespace openhost
