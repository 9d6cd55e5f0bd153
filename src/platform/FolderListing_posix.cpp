#include <dirent.h>
#include <locale.h>
#include <sys/stat.h>
#include <wctype.h>

#include <algorithm>
#include <cerrno>
#include <cwchar>
#include <memory>

#include "platform/FileCalls_posix.h"
#include "platform/Files.h"

namespace platform {
namespace {

// The order must not depend on the user's language, so the conversion has a locale of its own.
class CUtf8Locale {
public:
    CUtf8Locale() : m_locale(newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr)), m_before(uselocale(m_locale)) {}
    CUtf8Locale(const CUtf8Locale&) = delete;
    CUtf8Locale& operator=(const CUtf8Locale&) = delete;
    ~CUtf8Locale()
    {
        uselocale(m_before);
        if (m_locale) freelocale(m_locale);
    }

private:
    locale_t m_locale;  // none on a system without it: then only ASCII letters are folded
    locale_t m_before;
};

struct Listed {
    FolderEntry entry;
    std::wstring sortKey;
};

std::wstring UpperCased(const std::string& name)
{
    std::wstring upper;
    for (std::size_t i = 0; i < name.size();) {
        wchar_t character = 0;
        std::mbstate_t state{};
        const std::size_t length = std::mbrtowc(&character, name.data() + i, name.size() - i, &state);
        const bool valid = length > 0 && length <= name.size() - i;
        upper += valid ? static_cast<wchar_t>(towupper(static_cast<wint_t>(character)))
                       : static_cast<wchar_t>(static_cast<unsigned char>(name[i]));
        i += valid ? length : 1;
    }
    return upper;
}

bool IsFolder(const std::string& prefix, const dirent& found)
{
    if (found.d_type == DT_DIR) return true;
    if (found.d_type != DT_LNK && found.d_type != DT_UNKNOWN) return false;
    return FolderExists(prefix + found.d_name);
}

FileResult ReadEntries(DIR* folder, const std::string& prefix, std::vector<Listed>& listed)
{
    const CUtf8Locale locale;
    for (;;) {
        const dirent* found = calls::ReadFolder(folder);
        if (!found) return {errno};
        std::string name = found->d_name;
        if (name == "." || name == "..") continue;
        std::wstring key = UpperCased(name);
        const bool hidden = name[0] == '.';
        listed.push_back({{std::move(name), IsFolder(prefix, *found), hidden}, std::move(key)});
    }
}

FileResult List(const std::string& path, std::vector<Listed>& listed)
{
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(calls::OpenFolder(path),
                                                     [](DIR* open) { return closedir(open); });
    if (!folder) return {errno};
    return ReadEntries(folder.get(), path.ends_with('/') ? path : path + '/', listed);
}

}  // namespace

std::vector<FolderEntry> ListFolder(const std::string& path, FileResult* result)
{
    std::vector<Listed> listed;
    const auto outcome = List(path, listed);
    if (result) *result = outcome;
    if (!outcome) return {};
    std::sort(listed.begin(), listed.end(), [](const Listed& a, const Listed& b) {
        return a.sortKey != b.sortKey ? a.sortKey < b.sortKey : a.entry.name < b.entry.name;
    });
    std::vector<FolderEntry> entries;
    entries.reserve(listed.size());
    for (auto& item : listed) entries.push_back(std::move(item.entry));
    return entries;
}

}  // namespace platform
