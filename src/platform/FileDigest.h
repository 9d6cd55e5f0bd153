#pragma once

#include <string>

#include "platform/Files.h"

namespace platform {

/// SHA-256 of a regular file's content in lower-case hexadecimal digits. Fails: empty, with the reason in `result`.
std::string Sha256OfFile(const std::string& path, FileResult* result = nullptr);

}  // namespace platform
