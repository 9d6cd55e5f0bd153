// Files that are written under a name of their own before they get their place; not for callers outside this folder.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/Files.h"

namespace platform {

/// What a file takes over from the one that it replaces: access rights and, where systems have such, marks and
/// attributes.
class CFileRights {
public:
    CFileRights();
    CFileRights(const CFileRights&) = delete;
    CFileRights& operator=(const CFileRights&) = delete;
    ~CFileRights();
    FileResult ReadFrom(const std::string& path);
    /// Only what others must not exceed; of a file that is gone: the owner's alone.
    FileResult ReadLimit(const std::string& path);

private:
    friend class CTemporaryFile;
    struct State;
    std::unique_ptr<State> m_state;  // null until it was read
};

/// A file under a name of its own in some folder; removed again unless it was put in a place.
class CTemporaryFile {
public:
    CTemporaryFile() = default;
    CTemporaryFile(const CTemporaryFile&) = delete;
    CTemporaryFile& operator=(const CTemporaryFile&) = delete;
    ~CTemporaryFile();

    /// Creates the file in the folder of `target`. AsUsual: nobody but the owner gets more than `limit`, if given.
    FileResult CreateBeside(const std::string& target, Readers readers, const CFileRights* limit = nullptr);
    /// Whose a copy is, and who may read it besides those who may read the source.
    struct CopyRights {
        const CFileRights* limit = nullptr;  ///< nobody gets more than this either
        bool withOwner = false;              ///< as far as the system lets us
        bool clone = false;                  ///< only when the file system lets both share their blocks
    };
    /// Creates it as a complete copy of a regular file, with its rights, attributes and time stamps.
    FileResult CopyBeside(const std::string& from, const std::string& target, const CopyRights& rights);
    FileResult Write(std::string_view bytes);
    /// Gives an OwnerForNow file the rights of the one that it will replace, but to nobody more than `limit`, if
    /// given. What cannot be taken over leaves the rights with the owner alone.
    FileResult TakeOver(const CFileRights& rights, const CFileRights* limit);
    /// Flushes it to disk and closes it.
    FileResult Complete();
    /// Closes it as it is: after a power cut it may hold anything.
    void CloseUnflushed() { m_file.Close(); }
    /// Gives the completed file its final name.
    FileResult PutInPlace(const std::string& target, Existing existing);
    /// Empty as long as there is no file.
    const std::string& Path() const { return m_path; }

private:
    FileResult CreateNew(const std::string& target, unsigned mode);

    COpenFile m_file;
    CFileRights m_rights;  // given when the file is complete, if there are any
    std::string m_path;    // empty when there is nothing to remove
};

}  // namespace platform
