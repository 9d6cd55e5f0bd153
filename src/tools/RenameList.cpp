#include "tools/RenameList.h"

#include <utility>

#include "base/Names.h"
#include "base/Text.h"
#include "base/Unicode.h"
#include "platform/NarrowText.h"

namespace {

constexpr char kFolderEnds[] = "/\\";
#ifdef _WIN32
constexpr char kPathSeparators[] = "/\\";
#else
constexpr char kPathSeparators[] = "/";
#endif

bool IsSeparator(char letter) { return std::string_view(kPathSeparators).find(letter) != std::string_view::npos; }

/// Several separators in a row are one, but for two at the beginning: network paths and "\\?\" have these.
std::string WithSingleSeparators(const std::string& path)
{
    std::string single;
    for (std::size_t at = 0; at < path.size(); ++at) {
        const bool again = !single.empty() && IsSeparator(path[at]) && IsSeparator(single.back());
        const bool network = again && single.size() == 1 && single.front() == '\\' && path[at] == '\\';
        if (!again || network) single += path[at];
    }
    return single;
}

bool IsAbsolute(const std::string& path) { return platform::StandardPath(path).is_absolute(); }

std::string NarrowPath(const std::string& utf8)
{
    return WithSingleSeparators(platform::NarrowFromUtf8(BytesFromText(utf8)));
}

std::string PathKey(const std::string& path) { return kNamesIgnoreCase ? LowerCasedName(path) : path; }

/// Equal for names that any file system takes for one, and for some more.
std::string NameKey(const std::string& path)
{
    std::string key;
    for (const char32_t character : Utf8ToUtf32(TextFromBytes(LowerCasedName(path))))
        for (const char32_t folded : FoldedForSearch(character)) AppendUtf8(key, folded);
    return key;
}

std::string NameProblem(const std::string& name)
{
    if (name == "." || name == "..") return "\"" + name + "\" is no name of a file.";
    for (const char letter : name)
        if (static_cast<unsigned char>(letter) < ' ') return "The new name holds a line break, a tab or the like.";
    return {};
}

PlannedRename RenameOf(const RenameLine& line, const std::string& base, const std::string& folder)
{
    PlannedRename file{.from = NarrowPath(line.path)};
    if (!IsAbsolute(file.from)) file.from = WithTrailingSeparator(base) + file.from;
    const std::string name = NarrowPath(line.newName);
    if (name.empty()) return file;
    if (IsAbsolute(name)) {
        file.to = name;
    } else if (name.find_first_of(kFolderEnds) != std::string::npos) {
        file.problem = "The new name " + name + " holds a folder; give the whole path, or a name alone.";
        return file;
    } else {
        file.to = (folder.empty() ? FolderOf(file.from) : WithTrailingSeparator(folder)) + name;
    }
    file.problem = NameProblem(FileName(file.to));
    if (file.problem.empty() && FileName(file.to).empty())
        file.problem = "The new name " + name + " is that of a folder; give the name of the file, too.";
    return file;
}

enum State { kNew, kFollowed, kOrdered };

}  // namespace

Expected<CRenameList> CRenameList::From(const std::vector<RenameLine>& lines, const std::string& base,
                                        const std::string& folder)
{
    CRenameList list;
    if (std::string problem = list.Add(lines, base, folder); !problem.empty()) return Failure(std::move(problem));
    list.Sort();
    return list;
}

const PlannedRename* CRenameList::Find(const std::string& path) const
{
    const auto place = m_places.find(PathKey(path));
    return place == m_places.end() ? nullptr : &m_files[place->second];
}

std::string CRenameList::Add(const std::vector<RenameLine>& lines, const std::string& base, const std::string& folder)
{
    std::unordered_map<std::string, std::string> taken;
    for (const RenameLine& line : lines) {
        PlannedRename file = RenameOf(line, base, folder);
        const auto [place, isNew] = m_places.emplace(PathKey(file.from), m_files.size());
        if (!isNew)
            return "Line " + std::to_string(line.line) + ": " + file.from +
                   " is listed a second time; a file can have one new name only.";
        if (!file.to.empty() && file.problem.empty()) {
            const auto [same, isFirst] = taken.emplace(NameKey(file.to), file.to);
            if (!isFirst) file.sameName = same->second;
        }
        m_depends = m_depends || !file.sameName.empty();
        m_files.push_back(std::move(file));
    }
    return {};
}

void CRenameList::Sort()
{
    std::vector<int> states(m_files.size(), kNew);
    std::vector<std::size_t> order;
    order.reserve(m_files.size());
    for (std::size_t start = 0; start < m_files.size(); ++start) Follow(start, states, order);
    std::vector<PlannedRename> sorted;
    sorted.reserve(m_files.size());
    for (const std::size_t place : order) {
        m_places[PathKey(m_files[place].from)] = sorted.size();
        sorted.push_back(std::move(m_files[place]));
    }
    m_files = std::move(sorted);
}

/// From a file to the one that has its new name, and on; the last of these comes first. Where the way comes back to
/// itself, the last one makes the first one wait.
void CRenameList::Follow(std::size_t start, std::vector<int>& states, std::vector<std::size_t>& order)
{
    std::vector<std::size_t> way;
    for (std::size_t file = start; states[file] == kNew;) {
        states[file] = kFollowed;
        way.push_back(file);
        if (m_files[file].to.empty() || !m_files[file].problem.empty()) break;
        const auto next = m_places.find(PathKey(m_files[file].to));
        if (next == m_places.end() || next->second == file) break;
        m_depends = true;
        if (states[next->second] == kFollowed) m_files[file].waits = m_files[next->second].from;
        file = next->second;
    }
    for (; !way.empty(); way.pop_back()) {
        states[way.back()] = kOrdered;
        order.push_back(way.back());
    }
}
