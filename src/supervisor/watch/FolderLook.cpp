#include "supervisor/watch/FolderLook.h"

#include <algorithm>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "base/Names.h"
#include "base/Text.h"
#include "platform/Files.h"
#include "protocol/RunDescription.h"

namespace {

/// Names of browsers, copying and synchronising programs, editors.
constexpr std::string_view kUnfinishedEndings[] = {"part",       "partial", "crdownload", "filepart", "download",
                                                   "opdownload", "tmp",     "temp",       "swp",      "lock"};

class CLooker {
public:
    explicit CLooker(const LookRules& rules) : m_rules(rules)
    {
        for (const std::string& path : rules.leftOut) m_closed.insert(platform::ResolvedPath(path));
    }

    FolderLook Look()
    {
        platform::FileResult result;
        const auto entries = platform::ListFolder(m_rules.folder, &result);
        if (!result) {
            m_look.whole = false;
            m_look.problem = platform::ErrorText(result.errorNumber);
            return std::move(m_look);
        }
        const std::string real = platform::ResolvedPath(m_rules.folder);
        m_closed.insert(real);
        Take(WithTrailingSeparator(m_rules.folder), WithTrailingSeparator(real), entries);
        return std::move(m_look);
    }

private:
    /// `real`: the folder without links.
    void Take(const std::string& folder, const std::string& real, const std::vector<platform::FolderEntry>& entries)
    {
        for (const platform::FolderEntry& entry : entries) {
            if (entry.isHidden) continue;
            if (entry.isFolder)
                Enter(folder + entry.name);
            else if (IsWanted(entry.name) && !m_closed.contains(real + entry.name))
                Add(folder + entry.name);
        }
    }

    void Enter(const std::string& path)
    {
        if (!m_rules.subfolders || IsKeptFolderName(FileName(path))) return;
        const std::string real = platform::ResolvedPath(path);
        if (!m_closed.insert(real).second) return;
        platform::FileResult result;
        const auto entries = platform::ListFolder(path, &result);
        // One that is gone meanwhile holds nothing.
        if (!result && platform::ProblemOf(result) != platform::FileProblem::Missing) m_look.whole = false;
        Take(path + kSeparator, WithTrailingSeparator(real), entries);
    }

    bool IsWanted(const std::string& name) const
    {
        if (IsTemporaryName(name)) return false;
        const std::string extension = Extension(name);
        return m_rules.extensions.empty() || std::ranges::any_of(m_rules.extensions, [&](const auto& wanted) {
                   return EqualsIgnoreCaseAscii(extension, wanted);
               });
    }

    void Add(const std::string& path)
    {
        const auto stamp = platform::StampOf(path);
        if (!stamp || !stamp->regular) return;
        m_look.files.push_back({path,
                                {.size = stamp->size,
                                 .modifiedNanoseconds = stamp->modifiedNanoseconds,
                                 .changedNanoseconds = stamp->changedNanoseconds,
                                 .inode = stamp->inode}});
    }

    const LookRules& m_rules;
    std::unordered_set<std::string> m_closed;  // without links: entered already, or not to be taken
    FolderLook m_look;
};

}  // namespace

FolderLook LookInto(const LookRules& rules) { return CLooker(rules).Look(); }

bool IsTemporaryName(const std::string& name)
{
    if (name.starts_with(".") || name.starts_with("~$") || name.ends_with("~")) return true;
    const std::string extension = Extension(name);
    return std::ranges::any_of(kUnfinishedEndings,
                               [&](const auto& ending) { return EqualsIgnoreCaseAscii(extension, ending); });
}

std::vector<std::string> ExtensionList(const std::string& typed)
{
    std::vector<std::string> list;
    if (EqualsIgnoreCaseAscii(Trim(typed), "all")) return list;
    for (const std::string& piece : Split(typed, ",;")) {
        std::string extension = Trim(piece);
        if (extension.starts_with(".")) extension.erase(0, 1);
        if (!extension.empty()) list.push_back(std::move(extension));
    }
    return list;
}
