#include <algorithm>

#include "base/Unicode.h"
#include "common/TextFile.h"
#include "platform/FileProblem.h"

CTextFileRead::CTextFileRead(const std::string& path)
{
    platform::FileResult result = platform::CheckReadable(path);
    if (result) m_file = platform::OpenStream(path, "rb", &result);
    m_errorNumber = result.errorNumber;
    if (!m_file) return;
    std::setvbuf(m_file.get(), nullptr, _IONBF, 0);  // the buffer is here
    DetectEncoding();
}

void CTextFileRead::DetectEncoding()
{
    const struct {
        std::string_view mark;
        TextEncoding encoding;
    } marks[] = {{"\xFF\xFE", TextEncoding::Utf16LittleEndian},
                 {"\xFE\xFF", TextEncoding::Utf16BigEndian},
                 {"\xEF\xBB\xBF", TextEncoding::Utf8}};
    for (const auto& [mark, encoding] : marks) {
        if (!Ahead(mark.size()).starts_with(mark)) continue;
        m_encoding = encoding;
        m_markLength = mark.size();
        m_position += mark.size();
        return;
    }
}

/// What the buffer holds from the current position: at least `wanted` bytes, unless the file ends before.
std::string_view CTextFileRead::Ahead(std::size_t wanted)
{
    if (m_filled - m_position < wanted && !m_endReached) {
        std::copy(m_buffer.begin() + static_cast<std::ptrdiff_t>(m_position),
                  m_buffer.begin() + static_cast<std::ptrdiff_t>(m_filled), m_buffer.begin());
        m_filled -= m_position;
        m_position = 0;
        m_filled += std::fread(m_buffer.data() + m_filled, 1, m_buffer.size() - m_filled, m_file.get());
        if (std::ferror(m_file.get()))
            throw CTextFileException("Cannot read the text file.", platform::StreamFailure().errorNumber);
        m_endReached = m_filled < m_buffer.size();
    }
    return {m_buffer.data() + m_position, m_filled - m_position};
}

/// The bytes of the next character, or of a malformed piece; empty at the end. Valid until the next read.
std::string_view CTextFileRead::NextRaw()
{
    constexpr std::size_t kLongest = 4;
    const auto ahead = Ahead(kLongest);
    if (ahead.empty()) return {};
    std::size_t length = 0;
    if (m_encoding == TextEncoding::Ansi || m_encoding == TextEncoding::Utf8) {
        NextUtf8(ahead, length);
    } else {
        const std::size_t highByte = m_encoding == TextEncoding::Utf16BigEndian ? 0 : 1;
        const auto isUnit = [&](std::size_t at, unsigned char kind) {
            return ahead.size() >= at + 2 && (static_cast<unsigned char>(ahead[at + highByte]) & 0xFC) == kind;
        };
        length = isUnit(0, 0xD8) && isUnit(2, 0xDC) ? 4 : std::min<std::size_t>(2, ahead.size());
    }
    m_position += length;
    return ahead.substr(0, length);
}

std::optional<char32_t> CTextFileRead::ReadCharacter()
{
    const auto raw = IsOpen() ? NextRaw() : std::string_view();
    if (raw.empty()) return std::nullopt;
    std::size_t position = 0;
    if (m_encoding == TextEncoding::Ansi || m_encoding == TextEncoding::Utf8) return NextUtf8(raw, position);
    const std::string utf8 = Utf16BytesToUtf8(raw, m_encoding == TextEncoding::Utf16BigEndian);
    return NextUtf8(utf8, position);
}

void CTextFileRead::SkipLineFeed()
{
    const auto ahead = Ahead(2);
    std::string_view lineFeed("\n");
    if (m_encoding == TextEncoding::Utf16BigEndian) lineFeed = std::string_view("\0\n", 2);
    if (m_encoding == TextEncoding::Utf16LittleEndian) lineFeed = std::string_view("\n\0", 2);
    if (ahead.starts_with(lineFeed)) m_position += lineFeed.size();
}

std::optional<std::string> CTextFileRead::ReadLine()
{
    if (!IsOpen() || Ahead(1).empty()) return std::nullopt;
    const bool wide = m_encoding == TextEncoding::Utf16BigEndian || m_encoding == TextEncoding::Utf16LittleEndian;
    std::string line;
    for (auto raw = NextRaw(); !raw.empty(); raw = NextRaw()) {
        std::string piece(raw);
        if (wide) piece = Utf16BytesToUtf8(raw, m_encoding == TextEncoding::Utf16BigEndian);
        if (piece == "\n") return line;
        if (piece == "\r") {
            SkipLineFeed();
            return line;
        }
        line += m_encoding == TextEncoding::Utf8 ? SanitizeUtf8(piece) : piece;
    }
    return line;
}
