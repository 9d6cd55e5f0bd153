#include <algorithm>
#include <utility>

#include "base/Names.h"
#include "platform/FileHandles_win.h"
#include "platform/FileProblem.h"
#include "platform/Files.h"
#include "platform/WideText_win.h"

namespace platform {
namespace {

/// Owns a search through a folder, or none.
class CSearch {
public:
    explicit CSearch(HANDLE adopted) : m_search(adopted) {}
    CSearch(const CSearch&) = delete;
    CSearch& operator=(const CSearch&) = delete;
    ~CSearch()
    {
        if (Valid()) FindClose(m_search);
    }
    HANDLE Get() const { return m_search; }
    bool Valid() const { return m_search != INVALID_HANDLE_VALUE; }

private:
    HANDLE m_search;
};

struct Entry {
    std::string order;  // the name in UTF-8, whatever the narrow code page is: that decides its place
    FolderEntry listed;
};

std::string Utf8(std::wstring_view text)
{
    const int length = static_cast<int>(text.size());
    std::string bytes(text.size() * 3, '\0');
    const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), length, bytes.data(),
                                         static_cast<int>(bytes.size()), nullptr, nullptr);
    bytes.resize(static_cast<std::size_t>(std::max(size, 0)));
    return bytes;
}

bool CountsAsFolder(const std::wstring& prefix, const WIN32_FIND_DATAW& found)
{
    // Only links need a second look: where they lead decides.
    const bool link =
        (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 && IsReparseTagNameSurrogate(found.dwReserved0);
    if (!link) return (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    FileFacts facts;
    return FactsOf(prefix + found.cFileName, Links::Follow, facts) && facts.IsFolder();
}

Entry EntryOf(const std::wstring& prefix, const WIN32_FIND_DATAW& found)
{
    const std::wstring_view name = found.cFileName;
    const bool hidden = (found.dwFileAttributes & FILE_ATTRIBUTE_HIDDEN) != 0 || name.starts_with(L'.');
    const bool folder = CountsAsFolder(prefix, found);
    // A file that was replaced or moved by its short name would keep that name alone. What is in a folder keeps its
    // own.
    const std::wstring_view shortName = folder ? found.cAlternateFileName : L"";
    return {Utf8(name), {NarrowName(name, shortName), folder, hidden}};
}

FileResult ReadEntries(const CSearch& search, WIN32_FIND_DATAW& found, const std::wstring& prefix,
                       std::vector<Entry>& entries)
{
    do {
        const std::wstring_view name = found.cFileName;
        if (name != L"." && name != L"..") entries.push_back(EntryOf(prefix, found));
    } while (FindNextFileW(search.Get(), &found));
    return GetLastError() == ERROR_NO_MORE_FILES ? FileResult{} : LastFailure();
}

FileResult List(const std::string& path, std::vector<Entry>& entries)
{
    auto prefix = WidePath(path);
    if (prefix.empty()) return {ERROR_PATH_NOT_FOUND};
    if (!prefix.ends_with(L'\\')) prefix += L'\\';
    WIN32_FIND_DATAW found;
    const CSearch search(FindFirstFileExW((prefix + L'*').c_str(), FindExInfoStandard, &found, FindExSearchNameMatch,
                                          nullptr, FIND_FIRST_EX_LARGE_FETCH));
    if (search.Valid()) return ReadEntries(search, found, prefix, entries);
    const auto failure = LastFailure();
    prefix.pop_back();
    if (!IsFolder(prefix))
        return AttributesOf(prefix) == INVALID_FILE_ATTRIBUTES ? failure : FileResult{ERROR_DIRECTORY};
    // The root of an empty drive has not even ".".
    return failure.errorNumber == ERROR_FILE_NOT_FOUND ? FileResult{} : failure;
}

}  // namespace

std::vector<FolderEntry> ListFolder(const std::string& path, FileResult* result)
{
    std::vector<Entry> entries;
    const auto outcome = List(path, entries);
    if (result) *result = outcome;
    if (!outcome) return {};
    std::ranges::sort(entries, NameComesBefore, &Entry::order);
    std::vector<FolderEntry> listed;
    listed.reserve(entries.size());
    for (auto& entry : entries) listed.push_back(std::move(entry.listed));
    return listed;
}

}  // namespace platform
