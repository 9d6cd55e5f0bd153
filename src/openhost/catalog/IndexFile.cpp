#include "openhost/catalog/IndexFile.h"

#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <cstdio>

#include "openhost/catalog/Tokenizer.h"
#include "platform/Files.h"

namespace openhost {

namespace {

constexpr std::uint32_t kApplication = 0x46724978;  // "FrIx"
constexpr std::uint32_t kIndexVersion = 1;

// The header of the file: numbers have their highest byte first.
constexpr std::string_view kMagic("SQLite format 3\0", 16);
constexpr std::size_t kHeader = 100, kPageSizeAt = 16, kPageCountAt = 28, kVersionAt = 60, kApplicationAt = 68;

constexpr char kMakeTables[] =
    "CREATE TABLE documents(id INTEGER PRIMARY KEY, path BLOB NOT NULL UNIQUE, size INTEGER, modified INTEGER,"
    " changed INTEGER, sha256 TEXT, state INTEGER, encrypted INTEGER, pages INTEGER, message TEXT);"
    "CREATE VIRTUAL TABLE pages USING fts5(text, tokenize='ferrule');";

#ifdef _WIN32
constexpr char kWithoutLocks[] = "win32-none";
#else
constexpr char kWithoutLocks[] = "unix-none";
#endif

std::uint32_t NumberAt(std::string_view bytes, std::size_t at, std::size_t length)
{
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < length; ++i) number = number << 8 | static_cast<unsigned char>(bytes[at + i]);
    return number;
}

[[noreturn]] void FailWith(sqlite3* database)
{
    const int code = database ? sqlite3_errcode(database) : SQLITE_NOMEM;
    const bool damaged = code == SQLITE_CORRUPT || code == SQLITE_NOTADB || code == SQLITE_ERROR;
    throw CIndexError(database ? sqlite3_errmsg(database) : "out of memory", damaged);
}

/// Only our own code asks our own tables; nothing that stands in a file makes it do anything.
std::unique_ptr<sqlite3, CloseDatabase> OpenDatabase(const std::string& path, int flags)
{
    const char* const system = sqlite3_vfs_find(kWithoutLocks) ? kWithoutLocks : nullptr;
    sqlite3* opened = nullptr;
    const int code = sqlite3_open_v2(path.c_str(), &opened, flags | SQLITE_OPEN_NOMUTEX, system);
    std::unique_ptr<sqlite3, CloseDatabase> database(opened);
    if (code != SQLITE_OK) FailWith(opened);
    sqlite3_db_config(opened, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    if (!RegisterWordTokenizer(opened)) throw CIndexError("the SQLite library has no full-text search", false);
    return database;
}

Statement Prepared(sqlite3* database, const char* text)
{
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(database, text, -1, &statement, nullptr) != SQLITE_OK) FailWith(database);
    return Statement(statement);
}

/// False at the end.
bool NextRow(sqlite3* database, sqlite3_stmt* statement)
{
    const int code = sqlite3_step(statement);
    if (code != SQLITE_ROW && code != SQLITE_DONE) FailWith(database);
    return code == SQLITE_ROW;
}

void Bind(sqlite3_stmt* statement, int at, std::string_view text)
{
    sqlite3_bind_text(statement, at, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
}

void BindBytes(sqlite3_stmt* statement, int at, std::string_view bytes)
{
    sqlite3_bind_blob(statement, at, bytes.data(), static_cast<int>(bytes.size()), SQLITE_TRANSIENT);
}

std::string ColumnBytes(sqlite3_stmt* statement, int at)
{
    const auto* const bytes = static_cast<const char*>(sqlite3_column_blob(statement, at));
    return bytes ? std::string(bytes, static_cast<std::size_t>(sqlite3_column_bytes(statement, at))) : std::string();
}

void Execute(sqlite3* database, const char* statements)
{
    if (sqlite3_exec(database, statements, nullptr, nullptr, nullptr) != SQLITE_OK) FailWith(database);
}

std::int64_t OneNumber(sqlite3* database, const char* question)
{
    const Statement statement = Prepared(database, question);
    return NextRow(database, statement.get()) ? sqlite3_column_int64(statement.get(), 0) : 0;
}

}  // namespace

void CloseDatabase::operator()(sqlite3* database) const { sqlite3_close_v2(database); }
void CloseStatement::operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }

IndexFileState StateOfIndexFile(const std::string& path)
{
    if (!platform::NameExists(path)) return IndexFileState::Missing;
    std::string header;
    const auto result = platform::ReadPieces(path, [&](std::string_view bytes) {
        header += bytes.substr(0, kHeader - header.size());
        return header.size() < kHeader;
    });
    if (platform::NameIsLink(path) || !result || !std::string_view(header).starts_with(kMagic))
        return IndexFileState::Foreign;
    if (header.size() < kHeader) return IndexFileState::Truncated;
    if (NumberAt(header, kApplicationAt, 4) != kApplication) return IndexFileState::Foreign;
    if (NumberAt(header, kVersionAt, 4) != kIndexVersion) return IndexFileState::OtherVersion;
    const std::uint32_t stored = NumberAt(header, kPageSizeAt, 2);
    const std::uint64_t pageSize = stored == 1 ? 0x10000 : stored;
    const bool whole = platform::FileSize(path) == pageSize * NumberAt(header, kPageCountAt, 4);
    return whole ? IndexFileState::Fine : IndexFileState::Truncated;
}

std::string TextOfState(IndexFileState state)
{
    switch (state) {
        case IndexFileState::Missing:
            return "has not been built, or was purged";
        case IndexFileState::Foreign:
            return "is no index of Ferrule";
        case IndexFileState::OtherVersion:
            return "was made by another version of Ferrule";
        case IndexFileState::Truncated:
            return "is cut off";
        case IndexFileState::Fine:
            break;
    }
    return {};
}

CIndexReader::CIndexReader(const std::string& path) : m_database(OpenDatabase(path, SQLITE_OPEN_READONLY)) {}

std::vector<IndexedDocument> CIndexReader::Documents()
{
    const Statement statement =
        Prepared(m_database.get(),
                 "SELECT id, path, size, modified, changed, sha256, state, encrypted, pages, message FROM documents");
    std::vector<IndexedDocument> documents;
    while (NextRow(m_database.get(), statement.get())) {
        sqlite3_stmt* const row = statement.get();
        documents.push_back({.id = sqlite3_column_int64(row, 0),
                             .path = ColumnBytes(row, 1),
                             .size = static_cast<std::uint64_t>(sqlite3_column_int64(row, 2)),
                             .modified = sqlite3_column_int64(row, 3),
                             .changed = sqlite3_column_int64(row, 4),
                             .sha256 = ColumnBytes(row, 5),
                             .state = static_cast<DocumentState>(sqlite3_column_int(row, 6)),
                             .encrypted = sqlite3_column_int(row, 7) != 0,
                             .pages = sqlite3_column_int(row, 8),
                             .message = ColumnBytes(row, 9)});
    }
    std::sort(documents.begin(), documents.end(),
              [](const IndexedDocument& a, const IndexedDocument& b) { return a.path < b.path; });
    return documents;
}

std::vector<PageKey> CIndexReader::PagesWith(const std::string& expression)
{
    const Statement statement =
        Prepared(m_database.get(), "SELECT rowid FROM pages WHERE pages MATCH ?1 ORDER BY rowid");
    Bind(statement.get(), 1, expression);
    std::vector<PageKey> pages;
    while (NextRow(m_database.get(), statement.get())) pages.push_back(sqlite3_column_int64(statement.get(), 0));
    return pages;
}

std::string CIndexReader::Snippet(const std::string& expression, PageKey page)
{
    constexpr int kWords = 16;
    if (!m_snippet)
        m_snippet = Prepared(
            m_database.get(),
            "SELECT snippet(pages, 0, '', '', '\xE2\x80\xA6', ?2) FROM pages WHERE pages MATCH ?1 AND rowid = ?3");
    sqlite3_stmt* const statement = m_snippet.get();
    Bind(statement, 1, expression);
    sqlite3_bind_int(statement, 2, kWords);
    sqlite3_bind_int64(statement, 3, page);
    std::string text = NextRow(m_database.get(), statement) ? ColumnBytes(statement, 0) : std::string();
    sqlite3_reset(statement);
    return text;
}

bool CIndexReader::IsSound()
{
    try {
        const Statement statement = Prepared(m_database.get(), "PRAGMA quick_check(1)");
        return NextRow(m_database.get(), statement.get()) && ColumnBytes(statement.get(), 0) == "ok";
    } catch (const CIndexError&) {
        return false;
    }
}

CIndexWriter::CIndexWriter(const std::string& path) : m_database(OpenDatabase(path, SQLITE_OPEN_READWRITE))
{
    // Nobody sees the file before it is complete, so that nothing has to be taken back.
    Run("PRAGMA journal_mode=OFF; PRAGMA synchronous=OFF; PRAGMA cache_size=-65536; PRAGMA temp_store=MEMORY; BEGIN");
    if (OneNumber(m_database.get(), "SELECT count(*) FROM sqlite_schema") == 0) {
        Run(kMakeTables);
        Run(("PRAGMA application_id=" + std::to_string(kApplication)).c_str());
        Run(("PRAGMA user_version=" + std::to_string(kIndexVersion)).c_str());
    }
    m_next = OneNumber(m_database.get(), "SELECT coalesce(max(id), 0) + 1 FROM documents");
    m_addDocument =
        Prepared(m_database.get(), "INSERT INTO documents VALUES(?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10)");
    m_addPage = Prepared(m_database.get(), "INSERT INTO pages(rowid, text) VALUES(?1, ?2)");
    m_removeDocument = Prepared(m_database.get(), "DELETE FROM documents WHERE id = ?1");
    m_removePages = Prepared(m_database.get(), "DELETE FROM pages WHERE rowid BETWEEN ?1 AND ?2");
    m_restamp =
        Prepared(m_database.get(), "UPDATE documents SET size = ?2, modified = ?3, changed = ?4 WHERE id = ?1");
}

void CIndexWriter::Run(const char* statement) { Execute(m_database.get(), statement); }

void CIndexWriter::Step(sqlite3_stmt* statement)
{
    (void)NextRow(m_database.get(), statement);
    sqlite3_reset(statement);
}

void CIndexWriter::Remove(const IndexedDocument& document)
{
    sqlite3_bind_int64(m_removePages.get(), 1, KeyOf(document.id, 0));
    sqlite3_bind_int64(m_removePages.get(), 2, KeyOf(document.id + 1, 0) - 1);
    Step(m_removePages.get());
    sqlite3_bind_int64(m_removeDocument.get(), 1, document.id);
    Step(m_removeDocument.get());
    m_removedSecret = m_removedSecret || document.encrypted;
}

void CIndexWriter::Restamp(const IndexedDocument& document)
{
    sqlite3_bind_int64(m_restamp.get(), 1, document.id);
    sqlite3_bind_int64(m_restamp.get(), 2, static_cast<std::int64_t>(document.size));
    sqlite3_bind_int64(m_restamp.get(), 3, document.modified);
    sqlite3_bind_int64(m_restamp.get(), 4, document.changed);
    Step(m_restamp.get());
}

void CIndexWriter::Add(const IndexedDocument& document, const std::vector<std::string>& pageTexts)
{
    const std::int64_t id = m_next++;
    sqlite3_stmt* const row = m_addDocument.get();
    sqlite3_bind_int64(row, 1, id);
    BindBytes(row, 2, document.path);
    sqlite3_bind_int64(row, 3, static_cast<std::int64_t>(document.size));
    sqlite3_bind_int64(row, 4, document.modified);
    sqlite3_bind_int64(row, 5, document.changed);
    Bind(row, 6, document.sha256);
    sqlite3_bind_int(row, 7, static_cast<int>(document.state));
    sqlite3_bind_int(row, 8, document.encrypted ? 1 : 0);
    sqlite3_bind_int(row, 9, document.pages);
    Bind(row, 10, document.message);
    Step(row);
    for (std::size_t i = 0; i < pageTexts.size(); ++i) {
        if (pageTexts[i].empty()) continue;
        sqlite3_bind_int64(m_addPage.get(), 1, KeyOf(id, static_cast<int>(i) + 1));
        sqlite3_bind_text(m_addPage.get(), 2, pageTexts[i].data(), static_cast<int>(pageTexts[i].size()),
                          SQLITE_STATIC);
        Step(m_addPage.get());
    }
}

void CIndexWriter::Finish()
{
    // Else what was removed stays in parts of the file that are not used any more.
    if (m_removedSecret) Run("INSERT INTO pages(pages) VALUES('optimize')");
    Run("COMMIT");
    Run("PRAGMA synchronous=FULL");
    for (Statement* statement : {&m_addDocument, &m_addPage, &m_removeDocument, &m_removePages, &m_restamp})
        statement->reset();
    const std::int64_t pages = OneNumber(m_database.get(), "PRAGMA page_count");
    const bool roomy = OneNumber(m_database.get(), "PRAGMA freelist_count") > pages / 3;
    if (roomy || m_removedSecret) Run("VACUUM");
    m_database.reset();
}

}  // namespace openhost
