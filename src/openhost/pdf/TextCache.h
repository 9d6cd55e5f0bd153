// Words of documents that were read before, kept between runs.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "openhost/pdf/PageWords.h"
#include "platform/CacheFolder.h"
#include "protocol/TextCacheFolder.h"

namespace openhost {

/// Pages of one document in the form in which they are kept: without the places of single letters.
class CStoredWords {
public:
    /// Nothing when the page is not there or makes no sense.
    std::optional<CPageWords> Page(int page0) const;
    void AddPage(int page0, const CPageWords& words);
    /// Whether pages came to it since it was read.
    bool IsChanged() const { return m_changed; }

    std::string Bytes() const;
    /// Nothing when the bytes are not those of a whole entry.
    static std::optional<CStoredWords> From(std::string bytes);

private:
    struct Part {
        std::size_t begin = 0, length = 0;
    };

    std::string m_bytes;         // of the entry as it was read
    std::map<int, Part> m_read;  // in m_bytes
    std::map<int, std::string> m_added;
    std::size_t m_addedBytes = 0;
    bool m_changed = false;
};

/// The key of an entry is the content of the document, the engine with its version, and how words are made, so that
/// no entry is ever wrong: what changes one of them finds another entry or none. Only for documents that anybody may
/// read who may read the file: what is encrypted never comes here.
class CTextCache {
public:
    explicit CTextCache(const std::string& folder) : m_folder(folder, kTextCacheSuffix, kTextCacheBytes) {}

    /// Empty when there is none. `sha256`: of the document's file.
    CStoredWords Find(const std::string& sha256, const WordOptions& options) const;
    void Keep(const std::string& sha256, const WordOptions& options, const CStoredWords& words);
    const std::string& Problem() const { return m_folder.Problem(); }

private:
    platform::CCacheFolder m_folder;
};

}  // namespace openhost
