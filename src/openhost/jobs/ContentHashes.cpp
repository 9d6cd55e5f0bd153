#include "openhost/jobs/ContentHashes.h"

#include <algorithm>

#include "platform/FileDigest.h"

namespace openhost {

namespace {

constexpr std::size_t kRemembered = 16;

}  // namespace

std::optional<platform::FileStamp> StampOfRegularFile(const std::string& path)
{
    const auto stamp = platform::StampOf(path);
    return stamp && stamp->regular ? stamp : std::nullopt;
}

std::string CContentHashes::Of(const std::string& path)
{
    const auto stamp = StampOfRegularFile(path);
    if (!stamp) return {};
    const auto known =
        std::find_if(m_known.begin(), m_known.end(), [&](const Entry& entry) { return entry.stamp == *stamp; });
    if (known != m_known.end()) return known->sha256;
    std::string sha256 = platform::Sha256OfFile(path);
    // Not what was looked at above when somebody wrote into it meanwhile.
    if (!sha256.empty() && StampOfRegularFile(path) == stamp) Keep(*stamp, sha256);
    return sha256;
}

void CContentHashes::Renamed(const platform::FileStamp& former, const std::string& path)
{
    const auto now = StampOfRegularFile(path);
    if (!now || !now->IsSameFile(former) || now->size != former.size ||
        now->modifiedNanoseconds != former.modifiedNanoseconds)
        return;
    for (const Entry& entry : m_known)
        if (entry.stamp == former) return Keep(*now, std::string(entry.sha256));
}

void CContentHashes::Keep(const platform::FileStamp& stamp, std::string sha256)
{
    m_known.push_front({stamp, std::move(sha256)});
    if (m_known.size() > kRemembered) m_known.pop_back();
}

}  // namespace openhost
