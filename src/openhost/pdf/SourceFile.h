#ifndef FERRULE_OPENHOST_PDF_SOURCE_FILE_H
#define FERRULE_OPENHOST_PDF_SOURCE_FILE_H

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>

#include "platform/Files.h"

namespace openhost {

/// Opens a regular file for reading; never waits, whatever the path names.
/// Fails: CPdfError NotFound, NoAccess, NotAFile, CannotRead.
platform::Stream OpenForReading(const std::string& path);

/// From the beginning, in bytes.
bool SeekTo(std::FILE* file, std::uint64_t position);

/// In bytes; nothing when the system does not say. The file stands at its beginning after it.
std::optional<std::uint64_t> SizeOf(std::FILE* file);

/// The whole file. Fails: as OpenForReading, and CannotRead when it holds more than `maxBytes`.
std::string ReadAll(const std::string& path, std::uint64_t maxBytes);

}  // namespace openhost

#endif
