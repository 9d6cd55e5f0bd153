#include "tools/RenameList.h"

#include <algorithm>
#include <cstring>
#include <functional>
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

bool IsSeparator(char letter) { return letter != '\0' && std::strchr(kPathSeparators, letter); }

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

/// `isPath`: the new name says where the file goes.
PlannedRename RenameOf(std::string from, const std::string& name, bool isPath, const std::string& folder)
{
    PlannedRename file{.from = std::move(from)};
    if (name.empty()) return file;
    if (isPath) {
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

/// Whether the file is to get another name, or its own again.
bool GetsName(const PlannedRename& file) { return !file.to.empty() && file.problem.empty(); }

std::size_t HashOfKey(const std::string& key) { return std::hash<std::string>{}(key); }

enum State : char { kNew, kFollowed, kOrdered };

}  // namespace

Expected<CRenameList> CRenameList::From(std::string_view utf8, const std::string& base)
{
    CRenameList list;
    list.m_texts.reserve(utf8.size());
    std::string problem = ForEachRename(utf8, [&](const RenameLine& line) { list.Add(line, base); });
    std::ranges::sort(list.m_byPath);
    if (problem.empty()) problem = list.ListedTwice();
    if (!problem.empty()) return Failure(std::move(problem));
    list.Sort();
    return list;
}

void CRenameList::GoInto(const std::string& folder)
{
    if (folder == m_folder) return;
    m_folder = folder;
    Sort();
}

std::optional<PlannedRename> CRenameList::Find(const std::string& path) const
{
    const auto line = LineOf(path);
    return line ? std::optional(Rename(*line)) : std::nullopt;
}

void CRenameList::Add(const RenameLine& line, const std::string& base)
{
    const auto number = static_cast<LineNumber>(m_lines.size());
    std::string path = NarrowPath(line.path);
    if (!IsAbsolute(path)) path.insert(0, WithTrailingSeparator(base));
    const std::string name = NarrowPath(line.newName);
    m_lines.push_back({.text = m_texts.size(),
                       .pathLength = static_cast<std::uint32_t>(path.size()),
                       .nameLength = static_cast<std::uint32_t>(name.size()),
                       .line = static_cast<std::uint32_t>(line.line),
                       .isPath = IsAbsolute(name)});
    m_texts.append(path).append(name);
    m_byPath.emplace_back(HashOfKey(PathKey(path)), number);
}

/// A sentence about the first one; empty when none is.
std::string CRenameList::ListedTwice() const
{
    std::optional<LineNumber> first;
    for (std::size_t at = 1; at < m_byPath.size(); ++at) {
        const auto& [hash, line] = m_byPath[at];
        if (hash != m_byPath[at - 1].first) continue;
        if (LineOf(PathOf(line)) != line && (!first || line < *first)) first = line;
    }
    if (!first) return {};
    return "Line " + std::to_string(m_lines[*first].line) + ": " + PathOf(*first) +
           " is listed a second time; a file can have one new name only.";
}

std::string CRenameList::PathOf(LineNumber line) const
{
    return m_texts.substr(m_lines[line].text, m_lines[line].pathLength);
}

PlannedRename CRenameList::Rename(LineNumber line) const
{
    const Line& texts = m_lines[line];
    const std::string name = m_texts.substr(texts.text + texts.pathLength, texts.nameLength);
    PlannedRename file = RenameOf(PathOf(line), name, texts.isPath, m_folder);
    if (const auto waits = m_waits.find(line); waits != m_waits.end()) file.waits = PathOf(waits->second);
    if (const auto same = m_sameNames.find(line); same != m_sameNames.end()) file.sameName = Rename(same->second).to;
    return file;
}

/// The first one of that path.
std::optional<CRenameList::LineNumber> CRenameList::LineOf(const std::string& path) const
{
    const std::string key = PathKey(path);
    const std::size_t hash = HashOfKey(key);
    for (auto at = std::ranges::lower_bound(m_byPath, std::pair<std::size_t, LineNumber>{hash, 0});
         at != m_byPath.end() && at->first == hash; ++at)
        if (PathKey(PathOf(at->second)) == key) return at->second;
    return std::nullopt;
}

void CRenameList::FindSameNames()
{
    m_sameNames.clear();
    Hashes byName;
    for (LineNumber line = 0; line < m_lines.size(); ++line)
        if (const PlannedRename file = Rename(line); GetsName(file))
            byName.emplace_back(HashOfKey(NameKey(file.to)), line);
    std::ranges::sort(byName);
    for (std::size_t at = 1, begin = 0; at < byName.size(); ++at) {
        if (byName[at].first != byName[begin].first) begin = at;
        const std::string key = at > begin ? NameKey(Rename(byName[at].second).to) : std::string();
        for (std::size_t earlier = begin; earlier < at; ++earlier) {
            if (NameKey(Rename(byName[earlier].second).to) != key) continue;
            m_sameNames[byName[at].second] = byName[earlier].second;
            break;
        }
    }
}

void CRenameList::Sort()
{
    m_waits.clear();
    FindSameNames();
    m_depends = !m_sameNames.empty();
    m_order.clear();
    m_order.reserve(m_lines.size());
    std::vector<char> states(m_lines.size(), kNew);
    for (LineNumber start = 0; start < m_lines.size(); ++start) Follow(start, states);
}

/// From a file to the one that has its new name, and on; the last of these comes first. Where the way comes back to
/// itself, the last one makes the first one wait.
void CRenameList::Follow(LineNumber start, std::vector<char>& states)
{
    std::vector<LineNumber> way;
    for (LineNumber line = start; states[line] == kNew;) {
        states[line] = kFollowed;
        way.push_back(line);
        const PlannedRename file = Rename(line);
        const auto next = GetsName(file) ? LineOf(file.to) : std::nullopt;
        if (!next || *next == line) break;
        m_depends = true;
        if (states[*next] == kFollowed) m_waits[line] = *next;
        line = *next;
    }
    for (; !way.empty(); way.pop_back()) {
        states[way.back()] = kOrdered;
        m_order.push_back(way.back());
    }
}
