#include <sys/stat.h>

#include <algorithm>

#include "openhost/jobs/ContentHashes.h"
#include "platform/Sha256.h"

namespace openhost {

namespace {

constexpr std::size_t kRemembered = 16;

std::int64_t Nanoseconds(const timespec& time) { return time.tv_sec * std::int64_t{1000000000} + time.tv_nsec; }

}  // namespace

std::optional<FileIdentity> IdentityOf(const std::string& path)
{
    struct stat facts = {};
    if (::stat(path.c_str(), &facts) != 0 || !S_ISREG(facts.st_mode)) return std::nullopt;
    return FileIdentity{facts.st_dev, facts.st_ino, static_cast<std::uint64_t>(facts.st_size),
                        Nanoseconds(facts.st_mtim), Nanoseconds(facts.st_ctim)};
}

bool NameIsTaken(const std::string& path)
{
    struct stat facts = {};
    return ::lstat(path.c_str(), &facts) == 0;
}

std::string CContentHashes::Of(const std::string& path)
{
    const auto identity = IdentityOf(path);
    if (!identity) return {};
    const auto known =
        std::find_if(m_known.begin(), m_known.end(), [&](const Entry& entry) { return entry.identity == *identity; });
    if (known != m_known.end()) return known->sha256;
    std::string sha256 = platform::Sha256OfFile(path);
    // Not what was looked at above when somebody wrote into it meanwhile.
    if (!sha256.empty() && IdentityOf(path) == identity) Keep(*identity, sha256);
    return sha256;
}

void CContentHashes::Renamed(const FileIdentity& former, const std::string& path)
{
    const auto now = IdentityOf(path);
    if (!now || !now->SameFile(former) || now->size != former.size || now->modifiedNs != former.modifiedNs) return;
    for (const Entry& entry : m_known)
        if (entry.identity == former) return Keep(*now, std::string(entry.sha256));
}

void CContentHashes::Keep(const FileIdentity& identity, std::string sha256)
{
    m_known.push_front({identity, std::move(sha256)});
    if (m_known.size() > kRemembered) m_known.pop_back();
}

}  // namespace openhost
