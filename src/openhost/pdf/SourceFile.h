#ifndef FERRULE_OPENHOST_PDF_SOURCE_FILE_H
#define FERRULE_OPENHOST_PDF_SOURCE_FILE_H

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>

namespace openhost {

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using FileHandle = std::unique_ptr<std::FILE, FileCloser>;

/// Opens a regular file for reading; never waits, whatever the path names.
/// Fails: CPdfError NotFound, NoAccess, NotAFile, CannotRead.
FileHandle OpenForReading(const std::string& path);

/// Whether a file that anybody has open keeps its name: no other can be put in its place until it is closed.
extern const bool kOpenFilesKeepTheirNames;

/// From the beginning, in bytes.
bool SeekTo(std::FILE* file, std::uint64_t position);

/// In bytes; nothing when the system does not say.
std::optional<std::uint64_t> SizeOf(std::FILE* file);

/// The whole file. Fails: as OpenForReading, and CannotRead when it holds more than `maxBytes`.
std::string ReadAll(const std::string& path, std::uint64_t maxBytes);

}  // namespace openhost

#endif
