#include <dirent.h>
#include <locale.h>
#include <sys/stat.h>
#include <wctype.h>

#include <algorithm>
#include <cerrno>
#include <cwchar>
#include <memory>
#include <string_view>
#include <utility>

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

/// Takes the next character from a name, in upper case; a byte that is part of none stands for itself.
wchar_t NextUpperCased(std::string_view& rest)
{
    const auto byte = static_cast<unsigned char>(rest.front());
    std::size_t length = 1;
    wchar_t upper = byte >= 'a' && byte <= 'z' ? byte - 'a' + 'A' : byte;
    if (byte >= 0x80) {
        wchar_t character = 0;
        std::mbstate_t state{};
        const std::size_t read = std::mbrtowc(&character, rest.data(), rest.size(), &state);
        if (read > 0 && read <= rest.size()) {
            length = read;
            upper = static_cast<wchar_t>(towupper(static_cast<wint_t>(character)));
        }
    }
    rest.remove_prefix(length);
    return upper;
}

/// By upper-cased name, then by bytes. Nothing is kept for it: a folder may hold a million names.
bool ComesBefore(const FolderEntry& a, const FolderEntry& b)
{
    std::string_view restOfA = a.name, restOfB = b.name;
    while (!restOfA.empty() && !restOfB.empty()) {
        const wchar_t ofA = NextUpperCased(restOfA), ofB = NextUpperCased(restOfB);
        if (ofA != ofB) return ofA < ofB;
    }
    if (restOfA.empty() != restOfB.empty()) return restOfA.empty();
    return a.name < b.name;
}

bool IsFolder(const std::string& prefix, const dirent& found)
{
    if (found.d_type == DT_DIR) return true;
    if (found.d_type != DT_LNK && found.d_type != DT_UNKNOWN) return false;
    return FolderExists(prefix + found.d_name);
}

FileResult ReadEntries(DIR* folder, const std::string& prefix, std::vector<FolderEntry>& listed)
{
    for (;;) {
        const dirent* found = calls::ReadFolder(folder);
        if (!found) return {errno};
        std::string name = found->d_name;
        if (name == "." || name == "..") continue;
        const bool hidden = name[0] == '.';
        listed.push_back({std::move(name), IsFolder(prefix, *found), hidden});
    }
}

FileResult List(const std::string& path, std::vector<FolderEntry>& listed)
{
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(calls::OpenFolder(path),
                                                     [](DIR* open) { return closedir(open); });
    if (!folder) return {errno};
    return ReadEntries(folder.get(), path.ends_with('/') ? path : path + '/', listed);
}

}  // namespace

std::vector<FolderEntry> ListFolder(const std::string& path, FileResult* result)
{
    std::vector<FolderEntry> listed;
    const auto outcome = List(path, listed);
    if (result) *result = outcome;
    if (!outcome) return {};
    const CUtf8Locale locale;
    std::sort(listed.begin(), listed.end(), ComesBefore);
    return listed;
}

}  // namespace platform
