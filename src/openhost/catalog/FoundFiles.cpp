#include "openhost/catalog/FoundFiles.h"

#include <algorithm>
#include <map>
#include <set>

#include "base/Text.h"
#include "openhost/files/FilePaths.h"

namespace openhost {

namespace {

bool IsSeparator(char c)
{
#ifdef _WIN32
    return c == '/' || c == '\\';
#else
    return c == '/';
#endif
}

class CFinder {
public:
    CFinder(const IndexPlace& place, const IndexDescription& description) : m_place(place), m_description(description)
    {
    }

    FoundFiles Find()
    {
        for (const std::string& folder : m_description.folders) {
            const std::size_t before = m_found.unreadable.size();
            Enter(AbsoluteNative(PathOfKey(m_place, folder)));
            if (m_found.unreadable.size() == before) ++m_found.folders;
        }
        for (auto& [key, file] : m_byKey) m_found.files.push_back(std::move(file));
        return std::move(m_found);
    }

private:
    void Enter(const std::string& top)
    {
        std::vector<std::string> waiting{top};
        while (!waiting.empty()) {
            const std::string folder = std::move(waiting.back());
            waiting.pop_back();
            const std::string canonical = platform::CanonicalPath(folder);
            if (!canonical.empty() && !m_entered.insert(canonical).second) continue;
            platform::FileResult result;
            const auto entries = platform::ListFolder(folder, &result);
            if (!result) {
                m_found.unreadable.push_back(folder);
                continue;
            }
            for (const platform::FolderEntry& entry : entries) {
                if (entry.isHidden || entry.name.starts_with('.')) continue;
                const std::string path = JoinNative(folder, entry.name);
                entry.isFolder ? waiting.push_back(path) : Take(path, entry.name);
            }
        }
    }

    void Take(const std::string& path, const std::string& name)
    {
        const auto dot = name.rfind('.');
        const std::string extension = dot == std::string::npos ? std::string() : name.substr(dot + 1);
        const auto wanted = [&](const std::string& known) { return EqualsIgnoreCaseAscii(known, extension); };
        if (std::none_of(m_description.extensions.begin(), m_description.extensions.end(), wanted)) return;
        const auto stamp = platform::StampOf(path);
        if (!stamp || !stamp->regular) return;  // gone meanwhile, a link into nowhere, or no file
        const std::string key = KeyOfPath(m_place, path);
        m_byKey.insert({key, {key, path, *stamp}});
    }

    const IndexPlace& m_place;
    const IndexDescription& m_description;
    FoundFiles m_found;
    std::map<std::string, FoundFile> m_byKey;
    std::set<std::string> m_entered;
};

}  // namespace

FoundFiles FindFiles(const IndexPlace& place, const IndexDescription& description)
{
    return CFinder(place, description).Find();
}

bool LiesIn(const std::string& absolute, const std::string& folder)
{
    if (!absolute.starts_with(folder)) return false;
    return absolute.size() == folder.size() || (!folder.empty() && IsSeparator(folder.back())) ||
           IsSeparator(absolute[folder.size()]);
}

std::string KeyOfPath(const IndexPlace& place, const std::string& absolute)
{
    if (absolute == place.base) return ".";
    if (!LiesIn(absolute, place.base)) return absolute;
    const bool rooted = IsSeparator(place.base.back());
    return absolute.substr(place.base.size() + (rooted ? 0 : 1));
}

std::string PathOfKey(const IndexPlace& place, const std::string& key)
{
    if (key == ".") return place.base;
    return IsAbsoluteNative(key) ? key : JoinNative(place.base, key);
}

}  // namespace openhost
