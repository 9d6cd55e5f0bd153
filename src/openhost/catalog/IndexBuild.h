// Builds an index, or brings it up to date.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "openhost/catalog/Description.h"
#include "openhost/catalog/TextReaders.h"

namespace openhost {

struct IndexProblem {
    std::string path;  ///< absolute
    DocumentState state;
    std::string message;
};

/// What a build has done, and what the index holds now.
struct BuildSummary {
    int documents = 0, pages = 0;  ///< with text
    int read = 0;                  ///< in this build
    int unchanged = 0;
    int removed = 0;                          ///< vanished
    std::vector<IndexProblem> problems = {};  ///< documents without text or not with all of it, folders
};

/// Why there is no new index; the former one, if any, is as it was.
class CBuildFailure : public std::runtime_error {
public:
    enum class Kind { NothingToIndex, CannotSave };
    CBuildFailure(Kind kind, const std::string& text) : std::runtime_error(text), m_kind(kind) {}
    Kind Why() const { return m_kind; }

private:
    Kind m_kind;
};

using BuildProgress = std::function<void(std::size_t done, std::size_t total)>;

/// The caller holds the lock of the index. Reads what is new or changed, takes out what has vanished; the new index
/// takes the former one's place when it is complete. Nothing is written when nothing has changed. Documents in
/// folders that cannot be read stay. Fails: CBuildFailure.
BuildSummary BuildIndex(const IndexPlace& place, const IndexDescription& description, const ReaderSettings& readers,
                        const BuildProgress& progress);

/// What is known of documents whose text is not in the index, or not all of it.
std::vector<IndexProblem> ProblemsOf(const IndexPlace& place, const std::vector<IndexedDocument>& documents);

}  // namespace openhost
