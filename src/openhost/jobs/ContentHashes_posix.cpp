#include <sys/stat.h>

#include "openhost/jobs/ContentHashes.h"

namespace openhost {

namespace {

std::int64_t Nanoseconds(const timespec& time) { return time.tv_sec * std::int64_t{1000000000} + time.tv_nsec; }

}  // namespace

std::optional<FileIdentity> IdentityOf(const std::string& path)
{
    struct stat facts = {};
    if (::stat(path.c_str(), &facts) != 0 || !S_ISREG(facts.st_mode)) return std::nullopt;
    return FileIdentity{facts.st_dev, facts.st_ino, static_cast<std::uint64_t>(facts.st_size),
                        Nanoseconds(facts.st_mtim), Nanoseconds(facts.st_ctim)};
}

}  // namespace openhost
