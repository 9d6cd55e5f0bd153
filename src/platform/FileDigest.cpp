#include "platform/FileDigest.h"

#include <string_view>

#include "base/Sha256.h"

namespace platform {

std::string Sha256OfFile(const std::string& path, FileResult* result)
{
    CSha256 digest;
    const auto added = ReadPieces(path, [&](std::string_view bytes) {
        digest.Add(bytes.data(), bytes.size());
        return true;
    });
    if (result) *result = added;
    return added ? digest.Digest() : std::string();
}

}  // namespace platform
