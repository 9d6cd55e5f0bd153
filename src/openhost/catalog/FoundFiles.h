// The documents that an index is made of, as they lie in its folders.
#pragma once

#include <string>
#include <vector>

#include "openhost/catalog/Description.h"
#include "platform/Files.h"

namespace openhost {

struct FoundFile {
    std::string key;   ///< as it stands in the index
    std::string path;  ///< absolute
    platform::FileStamp stamp;
};

struct FoundFiles {
    std::vector<FoundFile> files = {};         ///< in the order of their keys, each once
    std::vector<std::string> unreadable = {};  ///< folders, absolute
    int folders = 0;                           ///< of the description, those that could be read
};

/// Hidden files and folders are left out, and no folder is entered twice.
FoundFiles FindFiles(const IndexPlace& place, const IndexDescription& description);

/// How a path stands in the index: relative to the folder of the description when it lies below.
std::string KeyOfPath(const IndexPlace& place, const std::string& absolute);
std::string PathOfKey(const IndexPlace& place, const std::string& key);
/// Whether the path is the folder, or lies below.
bool LiesIn(const std::string& absolute, const std::string& folder);

}  // namespace openhost
