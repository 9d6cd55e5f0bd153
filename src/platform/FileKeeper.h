// A second place for files that are about to be replaced or removed, and what is to be known to put them back.
#pragma once

#include <optional>
#include <string>

#include "base/FileTraits.h"
#include "platform/Files.h"

namespace platform {

/// Fails: nothing, with the reason in `result`, which tells a file that is missing from one that nobody can look at.
std::optional<FileTraits> TraitsOf(const std::string& path, FileResult* result = nullptr);
/// Gives them to a regular file as far as the system lets us; true when it has all of them now.
bool GiveTraits(const std::string& path, const FileTraits& traits);

/// Where a symbolic link leads, as it stands there; empty when it is none.
std::string LinkText(const std::string& path);

/// Keeps files. The overseer is not asked: a kept file is nobody's document until it is put back.
class CFileKeeper {
public:
    /// `mayLink`: whether a second name for the file itself will do, which shows what anybody writes into the file.
    explicit CFileKeeper(bool mayLink) : m_mayLink(mayLink) {}

    /// Gives the file, or the symbolic link, a second place with rights, owner, attributes and times: by a clone that
    /// shares the blocks on the disk, else by a second name, else by a copy. On disk when it comes back. `to` must be
    /// free. Fails: nothing stands there.
    FileResult Keep(const std::string& from, const std::string& to);

private:
    bool m_mayClone = true;
    bool m_mayLink;
};

}  // namespace platform
