// The file that holds an index: documents, and the text of their pages, searchable.
#pragma once

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace openhost {

/// What became of a document in the index. Stored as these numbers.
enum class DocumentState {
    Indexed = 0,
    NoText = 1,   ///< no page has any
    LeftOut = 2,  ///< encrypted, and the description leaves such documents out
    NeedsPassword = 3,
    NotPermitted = 4,  ///< taking text out is not
    Failed = 5,        ///< damaged, or it took too much time or memory
    Unreadable = 6     ///< not for good: it is tried again whenever the index is built
};

struct IndexedDocument {
    std::int64_t id = 0;
    std::string path = {};  ///< bytes; relative to the folder of the description where it lies below
    std::uint64_t size = 0;
    std::int64_t modified = 0, changed = 0;  ///< nanoseconds since 1970; 0: not known for sure
    std::string sha256 = {};
    DocumentState state = DocumentState::Indexed;
    bool encrypted = false;
    int pages = 0;
    std::string message = {};  ///< why there is no text, or not all of it
};

/// A page of a document: the upper bits are the document's number.
using PageKey = std::int64_t;
inline constexpr int kPageBits = 24;
inline std::int64_t DocumentOf(PageKey key) { return key >> kPageBits; }
/// From 1.
inline int PageOf(PageKey key) { return static_cast<int>(key & ((PageKey{1} << kPageBits) - 1)); }
inline PageKey KeyOf(std::int64_t document, int page) { return (document << kPageBits) | page; }

/// The library failed. what() is its sentence.
class CIndexError : public std::runtime_error {
public:
    CIndexError(const std::string& text, bool damaged) : std::runtime_error(text), m_damaged(damaged) {}
    /// The file is broken; otherwise the disk is full or something of that kind.
    bool Damaged() const { return m_damaged; }

private:
    bool m_damaged;
};

enum class IndexFileState { Missing, Foreign, OtherVersion, Truncated, Fine };
/// What the first bytes and the size of the file tell.
IndexFileState StateOfIndexFile(const std::string& path);
/// Half a sentence about a state that is not fine.
std::string TextOfState(IndexFileState state);

struct CloseDatabase {
    void operator()(sqlite3* database) const;
};
struct CloseStatement {
    void operator()(sqlite3_stmt* statement) const;
};
using Statement = std::unique_ptr<sqlite3_stmt, CloseStatement>;

/// Reads an index whose state is fine. Takes no lock and writes nothing: a finished index is never changed, a new one
/// takes its place. Fails: CIndexError.
class CIndexReader {
public:
    explicit CIndexReader(const std::string& path);

    /// In the order of their paths.
    std::vector<IndexedDocument> Documents();
    /// The pages on which this expression of the library matches, in ascending order.
    std::vector<PageKey> PagesWith(const std::string& expression);
    /// What stands around the first place on the page; UTF-8.
    std::string Snippet(const std::string& expression, PageKey page);
    /// Reads all of the file; false when something is wrong with it.
    bool IsSound();

private:
    std::unique_ptr<sqlite3, CloseDatabase> m_database;
    Statement m_snippet;  // null until it is needed
};

/// Writes an index file that nobody reads yet. Fails: CIndexError.
class CIndexWriter {
public:
    /// The file is there already: empty for a new index, or a copy of the former one.
    explicit CIndexWriter(const std::string& path);

    /// Of a document that was encrypted nothing stays in the file either.
    void Remove(const IndexedDocument& document);
    /// The same content with other times.
    void Restamp(const IndexedDocument& document);
    /// Gives the document a number.
    void Add(const IndexedDocument& document, const std::vector<std::string>& pageTexts);
    /// All is on the disk when it comes back. Once.
    void Finish();

private:
    void Run(const char* statement);
    void Step(sqlite3_stmt* statement);

    std::unique_ptr<sqlite3, CloseDatabase> m_database;
    Statement m_addDocument, m_addPage, m_removeDocument, m_removePages, m_restamp;
    std::int64_t m_next = 1;
    bool m_removedSecret = false;
};

}  // namespace openhost
