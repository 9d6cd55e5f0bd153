// What a file has besides its content.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

/// Of a symbolic link itself. What a system does not know is 0 or empty: on Windows the mode holds the marks of a
/// file, and there is no owner.
struct FileTraits {
    std::uint32_t mode = 0;
    std::uint32_t owner = 0, group = 0;
    std::int64_t modifiedNanoseconds = 0, accessedNanoseconds = 0;  ///< since 1970
    /// Name and value of the extended attributes that belong to the document, sorted.
    std::vector<std::pair<std::string, std::string>> attributes = {};

    /// Whether a file with these has all that `other` says. Looking at a file changes the time of its last access, so
    /// that does not count; nor do further attributes, because not every one can be read at any time.
    bool Fulfil(const FileTraits& other) const
    {
        return mode == other.mode && owner == other.owner && group == other.group &&
               modifiedNanoseconds == other.modifiedNanoseconds &&
               std::includes(attributes.begin(), attributes.end(), other.attributes.begin(), other.attributes.end());
    }
};
