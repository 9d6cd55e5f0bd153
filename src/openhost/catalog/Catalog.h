// The catalog: what can be done with a full-text index that is named by its description file.
#pragma once

#include <string>
#include <vector>

#include "hostapi/HostConstants.h"
#include "hostapi/HostTypes.h"
#include "openhost/catalog/IndexBuild.h"

namespace openhost {

/// How something that was asked of the catalog has ended: the host's status code, and a sentence when it went wrong.
struct CatalogAnswer {
    IndexStatus status = IndexInvalid;
    std::string message = {};
};

struct SearchOptions {
    bool onOnePage = false;  ///< the query holds for each page by itself, else for a document
    bool withSnippets = true;
    std::size_t most = 0;  ///< places; 0: all
};

struct IndexHit {
    std::string path;  ///< absolute
    int page = 0;      ///< from 1
    std::string snippet;
};

struct IndexContents {
    bool built = false;
    bool empty = true;             ///< nothing is built, or it was purged
    int documents = 0, pages = 0;  ///< with text
    std::uint64_t bytes = 0;
    std::int64_t builtAt = 0;  ///< nanoseconds since 1970
    std::vector<IndexProblem> problems = {};
};

/// Does one thing at a time; another process that is at the same index is told by CatalogBusy. Never fails otherwise
/// than by its answer.
class CCatalog {
public:
    /// How documents are read when nobody says otherwise.
    ReaderSettings readers;

    CatalogAnswer Create(const std::string& path, const IndexDescription& description);
    /// Loaded when description and index can be used.
    CatalogAnswer Load(const std::string& path);
    CatalogAnswer Build(const std::string& path, const ReaderSettings& how, BuildSummary& summary,
                        const BuildProgress& progress = {});
    CatalogAnswer Purge(const std::string& path);
    CatalogAnswer Contents(const std::string& path, IndexContents& contents);
    CatalogAnswer Search(const std::string& path, const std::string& query, const SearchOptions& options,
                         const std::function<void(const IndexHit&)>& take);

    CatalogStatus Status() const { return m_status; }

private:
    CatalogStatus m_status = CatalogIdle;
};

}  // namespace openhost
