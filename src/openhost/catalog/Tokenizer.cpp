#include "openhost/catalog/Tokenizer.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>

#include "base/Unicode.h"

namespace openhost {

namespace {

struct CharacterRange {
    char32_t first, last;
};

/// In the order of the characters.
constexpr CharacterRange kWithoutSpaces[] = {
    {0x0E00, 0x0EFF},    // Thai, Lao
    {0x1000, 0x109F},    // Myanmar
    {0x1780, 0x17FF},    // Khmer
    {0x2E80, 0x2FDF},    // radicals
    {0x3005, 0x3007},    // marks of iteration
    {0x3021, 0x3029},    // numerals
    {0x3040, 0x312F},    // Hiragana, Katakana, Bopomofo
    {0x31A0, 0x31FF},    // more of them
    {0x3400, 0x4DBF},    // Han
    {0x4E00, 0x9FFF},    //
    {0xF900, 0xFAFF},    //
    {0xFF66, 0xFF9D},    // Katakana of half width
    {0x1B000, 0x1B16F},  // historic Kana
    {0x20000, 0x3FFFF},  // Han
};

bool StandsAlone(char32_t character)
{
    const auto* const range =
        std::find_if(std::begin(kWithoutSpaces), std::end(kWithoutSpaces),
                     [&](const CharacterRange& candidate) { return character <= candidate.last; });
    return range != std::end(kWithoutSpaces) && character >= range->first;
}

using TokenSink = int (*)(void*, int, const char*, int, int, int);

/// Hands one word after the other to the library.
class CWordCutter {
public:
    CWordCutter(std::string_view text, void* context, TokenSink sink) : m_text(text), m_context(context), m_sink(sink)
    {
    }

    int Cut()
    {
        for (std::size_t at = 0; at < m_text.size() && m_status == SQLITE_OK;) {
            const std::size_t begin = at;
            const auto byte = static_cast<unsigned char>(m_text[at]);
            if (byte < 0x80)
                ++at, TakeAscii(byte, begin);
            else
                Take(NextUtf8(m_text, at), begin, at);
        }
        EndWord();
        return m_status;
    }

private:
    void TakeAscii(unsigned char byte, std::size_t begin)
    {
        const bool capital = byte >= 'A' && byte <= 'Z';
        if (!capital && !(byte >= 'a' && byte <= 'z') && !(byte >= '0' && byte <= '9')) return EndWord();
        if (m_word.empty()) m_begin = begin;
        m_word += static_cast<char>(capital ? byte - 'A' + 'a' : byte);
        m_end = begin + 1;
    }

    void Take(char32_t character, std::size_t begin, std::size_t end)
    {
        if (!IsPartOfWord(character)) {
            // A soft hyphen and its like are not seen, and so do not divide a word.
            if (!FoldedForSearch(character).empty()) EndWord();
            return;
        }
        const bool alone = StandsAlone(character);
        if (alone) EndWord();
        const std::u32string folded = FoldedForSearch(character);
        if (m_word.empty()) m_begin = begin;
        for (const char32_t letter : folded) AppendUtf8(m_word, letter);
        m_end = end;
        if (alone) EndWord();
    }

    void EndWord()
    {
        if (!m_word.empty() && m_status == SQLITE_OK)
            m_status = m_sink(m_context, 0, m_word.data(), static_cast<int>(m_word.size()), static_cast<int>(m_begin),
                              static_cast<int>(m_end));
        m_word.clear();
    }

    std::string_view m_text;
    void* m_context;
    TokenSink m_sink;
    std::string m_word;
    std::size_t m_begin = 0, m_end = 0;
    int m_status = SQLITE_OK;
};

int Create(void*, const char**, int, Fts5Tokenizer** tokenizer)
{
    static char nothing;  // it has no state, but a null pointer would be an error
    *tokenizer = reinterpret_cast<Fts5Tokenizer*>(&nothing);
    return SQLITE_OK;
}

void Delete(Fts5Tokenizer*) {}

int Tokenize(Fts5Tokenizer*, void* context, int, const char* text, int length, TokenSink sink)
{
    try {
        return CWordCutter({text, static_cast<std::size_t>(length)}, context, sink).Cut();
    } catch (...) {  // memory ran out
        return SQLITE_NOMEM;
    }
}

fts5_api* FullTextInterface(sqlite3* database)
{
    fts5_api* found = nullptr;
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(database, "SELECT fts5(?1)", -1, &statement, nullptr) != SQLITE_OK) return nullptr;
    sqlite3_bind_pointer(statement, 1, &found, "fts5_api_ptr", nullptr);
    (void)sqlite3_step(statement);
    sqlite3_finalize(statement);
    return found;
}

}  // namespace

bool RegisterWordTokenizer(sqlite3* database)
{
    fts5_api* const interface = FullTextInterface(database);
    fts5_tokenizer tokenizer = {Create, Delete, Tokenize};
    return interface &&
           interface->xCreateTokenizer(interface, kWordTokenizer, nullptr, &tokenizer, nullptr) == SQLITE_OK;
}

}  // namespace openhost
