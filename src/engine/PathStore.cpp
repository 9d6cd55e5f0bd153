#include "engine/PathStore.h"

#include "base/PathNames.h"

#include <algorithm>
#include <cstring>
#include <functional>

namespace {

constexpr std::size_t kBlockBytes = std::size_t{1} << 20;

}  // namespace

std::uint32_t CPathStore::FolderNumber(const std::string& text)
{
    const auto [place, isNew] = m_folderNumbers.emplace(text, static_cast<std::uint32_t>(m_folders.size()));
    if (isNew) m_folders.push_back(&place->first);
    return place->second;
}

CPathStore::Item CPathStore::Hold(std::uint32_t folder, std::string_view name)
{
    char* const space = Space(name.size());
    std::memcpy(space, name.data(), name.size());
    return {space, static_cast<std::uint32_t>(name.size()), folder};
}

char* CPathStore::Space(std::size_t length)
{
    if (m_blocks.empty() || length > m_left) {
        m_left = std::max(kBlockBytes, length);
        m_blocks.push_back(std::make_unique_for_overwrite<char[]>(m_left));
    }
    // Filled from its end, so that the bytes left tell the place.
    m_left -= length;
    return m_blocks.back().get() + m_left;
}

bool CPathStore::Add(const Item& item)
{
    if ((m_items.size() + 1) * 3 > m_table.size() * 2) Grow();
    const std::size_t place = Place(item);
    if (m_table[place] != 0) return false;
    m_items.push_back(item);
    m_table[place] = static_cast<std::uint32_t>(m_items.size());
    return true;
}

bool CPathStore::AddPath(std::string_view path)
{
    const std::string folder = FolderOf(path);
    return Add(Hold(FolderNumber(folder), path.substr(folder.size())));
}

std::string CPathStore::Path(std::size_t index) const
{
    return FolderText(m_items[index].folder) + std::string(Name(index));
}

/// Where the item is in the table, or the free place where it belongs.
std::size_t CPathStore::Place(const Item& item) const
{
    const std::string_view name(item.name, item.length);
    const std::size_t hash = std::hash<std::string_view>()(name) + item.folder * std::size_t{0x9E3779B97F4A7C15};
    std::size_t place = hash % m_table.size();
    while (m_table[place] != 0) {
        const Item& other = m_items[m_table[place] - 1];
        if (other.folder == item.folder && std::string_view(other.name, other.length) == name) break;
        if (++place == m_table.size()) place = 0;
    }
    return place;
}

void CPathStore::Grow()
{
    const std::size_t size = std::max<std::size_t>(64, m_table.size() * 2);
    m_table.assign(size, 0);
    m_table.shrink_to_fit();
    for (std::size_t index = 0; index < m_items.size(); ++index)
        m_table[Place(m_items[index])] = static_cast<std::uint32_t>(index + 1);
}
