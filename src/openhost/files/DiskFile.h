#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "hostapi/HostRecords.h"

namespace openhost {

/// How a file of the disk is opened.
struct DiskFileMode {
    bool read = false;
    bool write = false;
    bool create = false;  // make it when it is not there
};

/// One open file of the disk, without a position of its own. All answers are 0 or an error code of the interface.
class CDiskFile {
public:
    CDiskFile() = default;
    ~CDiskFile();
    CDiskFile(CDiskFile&& other) noexcept;
    CDiskFile& operator=(CDiskFile&& other) noexcept;

    ASErrorCode Open(const std::string& nativePath, DiskFileMode mode);
    ASErrorCode Close();
    /// `done` is less than `count` only at the end of the file.
    ASErrorCode ReadAt(std::uint64_t position, char* bytes, std::size_t count, std::size_t* done);
    ASErrorCode WriteAt(std::uint64_t position, const char* bytes, std::size_t count, std::size_t* done);
    ASErrorCode Length(std::uint64_t* length) const;
    ASErrorCode SetLength(std::uint64_t length);
    ASErrorCode FlushToDisk();
    /// Whether the path names this very file, through whatever links.
    bool IsSame(const std::string& nativePath) const;

private:
    int m_descriptor = -1;
};

/// The code of the interface that says what the system's error number says; never 0.
ASErrorCode FileErrorFromSystem(int errorNumber);

/// What is known of a file or folder; `isThere` is false for a missing one. Dates are in universal time. The caller
/// sets `size`.
ASFileSysItemPropsRec ItemProperties(const std::string& nativePath);

/// In a folder that is there.
ASErrorCode MakeFolder(const std::string& nativePath);
ASErrorCode RemoveEmptyFolder(const std::string& nativePath);
/// Bytes that this user can still write there; nothing when there is no such folder.
std::optional<std::uint64_t> FreeSpaceIn(const std::string& nativeFolder);

}  // namespace openhost
