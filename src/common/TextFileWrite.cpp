#include <algorithm>

#include "base/Unicode.h"
#include "common/TextFile.h"
#include "platform/FileProblem.h"

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
