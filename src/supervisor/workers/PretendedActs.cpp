#include "supervisor/workers/PretendedActs.h"

#include "base/Names.h"
#include "platform/Files.h"

namespace {

/// The name itself may be missing or a link, so only its folder is resolved.
std::string Key(const std::string& path)
{
    const std::string folder = platform::CanonicalPath(FolderOf(path));
    return folder.empty() ? path : folder + kSeparator + FileName(path);
}

}  // namespace

void CPretendedActs::Add(const Intent& intent)
{
    if (intent.act == Act::Move || intent.act == Act::Delete) m_paths[Key(intent.file)] = false;
    if (intent.act == Act::Move || intent.act == Act::Put) m_paths[Key(intent.target)] = true;
    // A link in the place of the target is replaced itself.
    if (intent.act == Act::Move || intent.act == Act::Put) m_replaced.insert(Key(intent.target));
}

bool CPretendedActs::IsGone(const std::string& path) const
{
    const std::string real = platform::CanonicalPath(path);
    return Exists(path) == false || (!real.empty() && Exists(real) == false);
}

bool CPretendedActs::IsReplaced(const std::string& path) const
{
    return m_replaced.contains(Key(path)) || m_replaced.contains(platform::CanonicalPath(path));
}

std::optional<bool> CPretendedActs::Exists(const std::string& path) const
{
    const auto place = m_paths.find(Key(path));
    if (place == m_paths.end()) return std::nullopt;
    return place->second;
}
