#include "engine/InputCollector.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <map>
#include <string_view>
#include <utility>

#include "base/Names.h"
#include "base/Text.h"
#include "common/Log.h"
#include "platform/Files.h"
#include "protocol/RunDescription.h"

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

namespace {

bool HasExtension(std::string_view name, std::string_view extension)
{
    if (extension == "*") return true;
    if (name.size() < extension.size() + 1) return false;
    const std::size_t start = name.size() - extension.size();
    return name[start - 1] == '.' && EqualsIgnoreCaseAscii(name.substr(start), extension);
}

}  // namespace

CInputCollector::CInputCollector(CollectorOptions options) : m_options(std::move(options))
{
    for (const std::string& folder : m_options.leftOut)
        if (std::string place = platform::CanonicalPath(folder); !place.empty())
            m_leftOutPlaces.insert(std::move(place));
}

void CInputCollector::AddPath(const std::string& path)
{
    if (!platform::FolderExists(path)) return AddFile(path);
    Walk walk;
    ReadFolder(path, walk);
    for (const std::string& extension : m_options.extensions)
        for (const CPathStore::Item& file : walk.files)
            if (HasExtension({file.name, file.length}, extension)) m_paths.Add(file);
}

void CInputCollector::AddFile(const std::string& path)
{
    if (!m_paths.AddPath(path)) return;
    m_named.resize(m_paths.Size());
    m_named.back() = true;
}

void CInputCollector::KeepOneNameOfEachFile()
{
    std::map<std::pair<std::uint64_t, std::uint64_t>, std::size_t> keptNames;  // by device and inode
    std::vector<bool> stays(m_paths.Size(), true);
    for (std::size_t index = 0; index < m_paths.Size(); ++index) {
        const std::string path = m_paths.Path(index);
        const auto stamp = platform::StampOf(path);
        if (!stamp || stamp->inode == 0) continue;  // a file system that has no such numbers
        const auto [place, isNew] = keptNames.emplace(std::pair(stamp->device, stamp->inode), index);
        if (isNew) continue;
        const std::string kept = m_paths.Path(place->second);
        const bool isLink = platform::NameIsLink(path);
        stays[isLink || !platform::NameIsLink(kept) ? index : std::exchange(place->second, index)] = false;
        if (stamp->links > 1 && !isLink && !stays[index] &&
            platform::CanonicalPath(path) != platform::CanonicalPath(kept))
            m_otherNames.push_back(path);
    }
    if (std::ranges::find(stays, false) == stays.end()) return;
    CPathStore rest;
    std::vector<bool> named;
    for (std::size_t index = 0; index < m_paths.Size(); ++index) {
        if (!stays[index]) continue;
        rest.AddPath(m_paths.Path(index));
        named.push_back(IsNamedFile(index));
    }
    m_paths = std::move(rest);
    m_named = std::move(named);
}

void CInputCollector::ReadFolder(const std::string& path, Walk& walk)
{
    const bool isTop = walk.entered.empty();
    const std::string place = platform::CanonicalPath(path);
    if (!walk.entered.insert(place).second) return;
    if (!isTop && (m_leftOutPlaces.contains(place) || IsKeptFolderName(FileName(place)))) {
        if (std::find(m_leftOut.begin(), m_leftOut.end(), path) == m_leftOut.end()) m_leftOut.push_back(path);
        return;
    }
    const std::string folder = WithTrailingSeparator(path);
    std::vector<std::string> subfolders;
    platform::FileResult result;
    for (const platform::FolderEntry& entry : platform::ListFolder(path, &result)) {
        if (entry.isHidden || entry.name.starts_with('.')) continue;
        if (entry.isFolder) {
            if (m_options.subfolders) subfolders.push_back(entry.name);
        } else if (IsWanted(entry.name)) {
            walk.files.push_back(m_paths.Hold(m_paths.FolderNumber(folder), entry.name));
        }
    }
    for (const std::string& name : subfolders) ReadFolder(folder + name, walk);
    if (!result) m_unreadable.push_back({path, result.errorNumber});
}

bool CInputCollector::IsWanted(const std::string& name) const
{
    return std::any_of(m_options.extensions.begin(), m_options.extensions.end(),
                       [&](const std::string& extension) { return HasExtension(name, extension); });
}

namespace {

/// The folders that a run writes to, as far as they are known before it.
std::vector<std::string> WrittenFolders(const ExecutorSettings& settings, const CWork& work)
{
    std::vector<std::string> folders = settings.furtherOutputPaths;
    if (!settings.alternativeOutputPath.empty()) {
        folders.push_back(settings.alternativeOutputPath);
        return folders;
    }
    for (std::string& folder : work.OwnOutputFolders()) folders.push_back(std::move(folder));
    return folders;
}

}  // namespace

Expected<CInputCollector> CollectInputFiles(const ExecutorSettings& settings, const CWork& work,
                                            const std::vector<std::string>& extensions, CLogWriter& log)
{
    CInputCollector collector(
        {.extensions = extensions, .subfolders = !settings.noSubfolders, .leftOut = WrittenFolders(settings, work)});
    std::string problem = work.InputPlaces(settings, extensions, Asking::Allowed, log,
                                           [&](const std::string& place) { collector.AddPath(place); });
    if (!problem.empty()) return Failure(std::move(problem));
    if (work.TakesEachFileOnce()) collector.KeepOneNameOfEachFile();
    for (const UnreadableFolder& folder : collector.Unreadable())
        log.NameValue("Folder cannot be read", folder.path + " (" + platform::ErrorText(folder.errorNumber) + ")", 1);
    for (const std::string& folder : collector.LeftOut())
        log.NameValue(IsKeptFolderName(FileName(platform::CanonicalPath(folder)))
                          ? "Folder is left out of the input because originals are kept there"
                          : "Folder is left out of the input because results go there",
                      folder, 1);
    return collector;
}

std::vector<std::string> InputExtensions(const ExecutorSettings& settings, const CWork& work, CLogWriter& log)
{
    return settings.allowedExtensions ? *settings.allowedExtensions : work.Extensions(log);
}

std::optional<RunInput> CCollectedInputs::Next()
{
    if (m_next == m_collector.Paths().Size()) return std::nullopt;
    RunInput input{.path = m_collector.Paths().Path(m_next)};
    input.number = static_cast<int>(++m_next);
    return input;
}
