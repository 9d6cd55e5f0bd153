#include "common/SeparatedText.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "base/Text.h"
#include "base/Unicode.h"
#include "platform/Files.h"
#include "platform/NarrowText.h"

namespace {

constexpr std::uint64_t kMostBytes = std::uint64_t{512} << 20;

/// Takes a text apart, a stretch without special characters at a time.
class CSeparatedParser {
public:
    CSeparatedParser(std::string_view text, SeparatedForm form, const TakeRecord& take)
        : m_text(text), m_form(form), m_take(take), m_ends{form.separator, '\n', '\r'}
    {
    }

    std::string Parse()
    {
        while (m_at < m_text.size() && m_problem.empty()) {
            m_record.line = m_line;
            if (!TakeValue()) return FormatText("Line %d: a quote is never closed.", static_cast<int>(m_line));
            if (m_at == m_text.size() || m_text[m_at] != m_form.separator)
                EndRecord();
            else if (++m_at == m_text.size()) {  // a separator at the very end opens an empty value
                m_record.values.emplace_back();
                EndRecord();
            }
        }
        return std::move(m_problem);
    }

private:
    /// Up to the separator or line end that follows. False, with m_line at its begin, for a quote without end.
    bool TakeValue()
    {
        std::string value;
        if (m_form.quotes && m_text[m_at] == '"' && !TakeQuoted(value)) return false;
        const std::size_t end = std::min(m_text.find_first_of(m_ends, m_at), m_text.size());
        value += m_text.substr(m_at, end - m_at);  // what stands behind a closing quote belongs to the value
        m_at = end;
        m_record.values.push_back(std::move(value));
        return true;
    }

    bool TakeQuoted(std::string& value)
    {
        const std::size_t begin = m_line;
        for (++m_at;;) {
            const std::size_t quote = m_text.find('"', m_at);
            const bool closed = quote != std::string_view::npos;
            if (!closed) return m_line = begin, false;
            const auto piece = m_text.substr(m_at, quote - m_at);
            m_line += LinesIn(piece);
            value += piece;
            m_at = quote + 1;
            if (m_at == m_text.size() || m_text[m_at] != '"') return true;
            value += '"';
            ++m_at;
        }
    }

    static std::size_t LinesIn(std::string_view piece)
    {
        std::size_t lines = 0;
        for (std::size_t at = 0; (at = piece.find_first_of("\r\n", at)) != std::string_view::npos; ++at) {
            if (piece.substr(at, 2) == "\r\n") ++at;
            ++lines;
        }
        return lines;
    }

    void EndRecord()
    {
        if (m_at < m_text.size()) m_at += m_text.substr(m_at).starts_with("\r\n") ? 2U : 1U;
        ++m_line;
        m_problem = m_take(std::move(m_record));
        m_record = {};
    }

    std::string_view m_text;
    SeparatedForm m_form;
    const TakeRecord& m_take;
    std::string m_problem;
    const std::string m_ends;
    std::size_t m_at = 0;
    std::size_t m_line = 1;
    SeparatedRecord m_record;
};

/// Windows-1252, whose bytes 80 to 9F stand for these; those without a meaning are control characters.
std::string Utf8FromWindows1252(std::string_view bytes)
{
    constexpr char32_t kHigh[] = {0x20AC, 0x81,   0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                  0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x8D,   0x017D, 0x8F,
                                  0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                  0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D,   0x017E, 0x0178};
    std::string utf8;
    utf8.reserve(bytes.size());
    for (const char byte : bytes) {
        const auto code = static_cast<unsigned char>(byte);
        AppendUtf8(utf8, code >= 0x80 && code < 0xA0 ? kHigh[code - 0x80] : code);
    }
    return utf8;
}

DecodedText FromCodePage(std::string_view bytes)
{
    std::string text = platform::Utf8FromNarrow(bytes);
    if (IsValidUtf8(text) && text.find("\xEF\xBF\xBD") == std::string::npos)
        return {std::move(text), "the code page of this computer"};
    return {Utf8FromWindows1252(bytes), "Windows-1252"};
}

/// The set that a mark names and the length of the mark; no mark: as asked for.
std::pair<CharacterSet, std::size_t> MarkedSet(std::string_view bytes, CharacterSet asked)
{
    if (bytes.starts_with("\xEF\xBB\xBF")) return {CharacterSet::Utf8, 3};
    if (bytes.starts_with("\xFF\xFE")) return {CharacterSet::Utf16LittleEndian, 2};
    if (bytes.starts_with("\xFE\xFF")) return {CharacterSet::Utf16BigEndian, 2};
    return {asked, 0};
}

// A text that begins with a character of ASCII, as tables do, shows its form by the other byte of it.
CharacterSet Detected(std::string_view bytes)
{
    if (bytes.size() >= 2 && bytes[0] != 0 && bytes[1] == 0) return CharacterSet::Utf16LittleEndian;
    if (bytes.size() >= 2 && bytes[0] == 0 && bytes[1] != 0) return CharacterSet::Utf16BigEndian;
    return IsValidUtf8(bytes) ? CharacterSet::Utf8 : CharacterSet::CodePage;
}

}  // namespace

std::string SeparatedValue(std::string_view text, char separator)
{
    const char special[] = {separator, '"', '\r', '\n'};
    if (text.find_first_of(std::string_view(special, sizeof special)) == std::string_view::npos)
        return std::string(text);
    return '"' + ReplaceAll(text, "\"", "\"\"") + '"';
}

Expected<std::vector<SeparatedRecord>> ParseSeparated(std::string_view utf8, SeparatedForm form)
{
    std::vector<SeparatedRecord> records;
    std::string problem = ForEachSeparated(utf8, form, [&](SeparatedRecord record) {
        records.push_back(std::move(record));
        return std::string();
    });
    if (!problem.empty()) return Failure(std::move(problem));
    return records;
}

std::string ForEachSeparated(std::string_view utf8, SeparatedForm form, const TakeRecord& take)
{
    return CSeparatedParser(utf8, form, take).Parse();
}

DecodedText DecodeText(std::string bytes, CharacterSet asked)
{
    auto [set, mark] = MarkedSet(bytes, asked);
    if (set == CharacterSet::Detect) set = Detected(bytes);
    if (mark > 0) bytes.erase(0, mark);
    switch (set) {
        case CharacterSet::Utf16LittleEndian:
            return {Utf16BytesToUtf8(bytes, false), "UTF-16, little-endian"};
        case CharacterSet::Utf16BigEndian:
            return {Utf16BytesToUtf8(bytes, true), "UTF-16, big-endian"};
        case CharacterSet::CodePage:
            return FromCodePage(bytes);
        default:
            return {IsValidUtf8(bytes) ? std::move(bytes) : SanitizeUtf8(bytes), "UTF-8"};
    }
}

Expected<DecodedText> ReadDecodedText(const std::string& path, CharacterSet set)
{
    platform::FileResult result;
    auto bytes = platform::ReadWholeFile(path, kMostBytes, &result);
    if (!bytes) return Failure(platform::ErrorText(result.errorNumber));
    return DecodeText(*std::move(bytes), set);
}
