#include "common/TextFile.h"

#include <algorithm>

#include "base/Unicode.h"

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

namespace {

std::string_view MarkOf(TextEncoding encoding)
{
    switch (encoding) {
        case TextEncoding::Utf16BigEndian:
            return "\xFE\xFF";
        case TextEncoding::Utf16LittleEndian:
            return "\xFF\xFE";
        case TextEncoding::Utf8:
            return "\xEF\xBB\xBF";
        case TextEncoding::Ansi:
            break;
    }
    return {};
}

}  // namespace

CTextFileWrite::~CTextFileWrite()
{
    try {
        Close();
    } catch (const CTextFileException&) {
        // Whoever needs to know has called Close.
    }
}

bool CTextFileWrite::Open(const std::string& path, TextEncoding encoding, bool append)
{
    Close();
    m_encoding = encoding;
    platform::FileResult result;
    m_file = platform::OpenStream(path, append ? "ab" : "wb", &result);
    m_errorNumber = result.errorNumber;
    if (!m_file) return false;
    std::setvbuf(m_file.get(), nullptr, _IONBF, 0);  // the buffer is here
    const bool startsEmpty = !append || platform::FileSize(path).value_or(0) == 0;
    if (startsEmpty) Put(MarkOf(encoding));
    return true;
}

void CTextFileWrite::Write(std::string_view text)
{
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t start = i;
        const char32_t character = NextUtf8(text, i);
        if (m_encoding == TextEncoding::Ansi)
            Put(text.substr(start, i - start));
        else
            WriteCharacter(character);
    }
}

void CTextFileWrite::WriteCharacter(char32_t character)
{
    std::string encoded;
    AppendUtf8(encoded, character);
    if (m_encoding == TextEncoding::Utf16BigEndian) encoded = Utf8ToUtf16Bytes(encoded, true);
    if (m_encoding == TextEncoding::Utf16LittleEndian) encoded = Utf8ToUtf16Bytes(encoded, false);
    Put(encoded);
}

void CTextFileWrite::Put(std::string_view encodedCharacter)
{
    if (!IsOpen())
        throw CTextFileException("The text file is not open.",
                                 platform::Failure(platform::FileProblem::Other).errorNumber);
    if (m_used + encodedCharacter.size() > m_buffer.size()) FlushBuffer();
    std::copy(encodedCharacter.begin(), encodedCharacter.end(),
              m_buffer.begin() + static_cast<std::ptrdiff_t>(m_used));
    m_used += encodedCharacter.size();
}

void CTextFileWrite::FlushBuffer()
{
    const std::size_t wanted = m_used;
    m_used = 0;
    if (std::fwrite(m_buffer.data(), 1, wanted, m_file.get()) != wanted) {
        throw CTextFileException("Cannot write the text file.", platform::StreamFailure().errorNumber);
    }
}

void CTextFileWrite::Close()
{
    if (!IsOpen()) return;
    const platform::Stream closing = std::move(m_file);
    const std::size_t wanted = m_used;
    m_used = 0;
    if (std::fwrite(m_buffer.data(), 1, wanted, closing.get()) != wanted || std::fflush(closing.get()) != 0) {
        throw CTextFileException("Cannot write the text file.", platform::StreamFailure().errorNumber);
    }
}
