#include "supervisor/workers/FileGroups.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <utility>

#include "base/Names.h"
#include "platform/NarrowText.h"

CGroupedFiles::CGroupedFiles(Source source, std::size_t lookahead)
    : m_source(std::move(source)), m_lookahead(lookahead)
{
}

std::optional<PlannedFile> CGroupedFiles::Take()
{
    if (auto file = TakeHeldBack()) return file;
    while (m_heldBack.size() < m_lookahead) {
        auto file = Read();
        if (!file) return std::nullopt;
        if (!IsBusy(*file)) return Handed(std::move(*file));
        m_heldBack.push_back(std::move(*file));
    }
    return std::nullopt;
}

bool CGroupedFiles::Empty()
{
    if (!m_heldBack.empty()) return false;
    if (!m_peeked) m_peeked = Read();
    return !m_peeked;
}

std::optional<PlannedFile> CGroupedFiles::TakeHeldBack()
{
    const auto place =
        std::find_if(m_heldBack.begin(), m_heldBack.end(), [this](const PlannedFile& file) { return !IsBusy(file); });
    if (place == m_heldBack.end()) return std::nullopt;
    PlannedFile file = std::move(*place);
    m_heldBack.erase(place);
    return Handed(std::move(file));
}

std::optional<PlannedFile> CGroupedFiles::Read()
{
    if (m_peeked) return std::exchange(m_peeked, std::nullopt);
    if (m_sourceEnded) return std::nullopt;
    auto file = m_source();
    m_sourceEnded = !file;
    return file;
}

PlannedFile CGroupedFiles::Handed(PlannedFile file)
{
    if (file.group != 0) m_busy.insert(file.group);
    return file;
}

namespace {

/// Equal for a path and the same path with separators more than needed, or in other letters where they do not count.
std::uint64_t HashOf(const std::string& path)
{
    const std::string normal = platform::TextOf(platform::StandardPath(path).lexically_normal().make_preferred());
    return std::hash<std::string>{}(kNamesIgnoreCase ? LowerCasedName(normal) : normal);
}

}  // namespace

void CGroupedInputs::Add(const PlannedFile& file)
{
    if (file.group != 0) m_hashes.push_back(HashOf(file.path));
}

void CGroupedInputs::Complete() { std::sort(m_hashes.begin(), m_hashes.end()); }

bool CGroupedInputs::Contains(const std::string& path) const
{
    return std::binary_search(m_hashes.begin(), m_hashes.end(), HashOf(path));
}
