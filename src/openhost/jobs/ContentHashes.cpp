#include "openhost/jobs/ContentHashes.h"

#include <algorithm>

#include "platform/FileDigest.h"

namespace openhost {

namespace {

constexpr std::size_t kRemembered = 16;

}  // namespace

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
