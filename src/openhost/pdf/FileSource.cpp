#include "openhost/pdf/FileSource.h"

#include <algorithm>
#include <cstring>
#include <qpdf/QPDFExc.hh>
#include <stdexcept>

#include "platform/FileProblem.h"

namespace openhost {
namespace {

constexpr std::size_t kLookAhead = 1024;

/// The kind of failure that the library knows of its own sources.
QPDFExc ReadError(const std::string& path, qpdf_offset_t position, const std::string& reason)
{
    return {qpdf_e_system, path, "", position, reason};
}

bool EndsLine(char character) { return character == '\r' || character == '\n'; }

}  // namespace

void CFileSource::LetGoForEver()
{
    m_file.reset();
    m_isGone = true;
}

void CFileSource::Swallow()
{
    if (m_content) return;
    auto content = std::make_unique<Buffer>(static_cast<std::size_t>(Size()));
    const qpdf_offset_t position = m_position;
    m_position = 0;
    const std::size_t got = ReadHere(reinterpret_cast<char*>(content->getBuffer()), content->getSize());
    m_position = position;
    if (got != content->getSize()) throw ReadError(m_path, m_position, "the file became shorter");
    m_content = std::move(content);
    m_file.reset();
}

std::FILE* CFileSource::File()
{
    if (m_isGone) throw ReadError(m_path, m_position, "the file was replaced");
    if (!m_file) m_file = OpenForReading(m_path);
    return m_file.get();
}

qpdf_offset_t CFileSource::Size()
{
    if (m_content) return static_cast<qpdf_offset_t>(m_content->getSize());
    const auto size = SizeOf(File());
    if (!size) throw ReadError(m_path, m_position, "the file has no known size");
    return static_cast<qpdf_offset_t>(*size);
}

void CFileSource::seek(qpdf_offset_t offset, int whence)
{
    const qpdf_offset_t from = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? m_position : Size();
    if (from + offset < 0) throw std::runtime_error(m_path + ": seek before the beginning");
    m_position = from + offset;
}

std::size_t CFileSource::ReadHere(char* bytes, std::size_t count)
{
    std::size_t got = 0;
    if (m_content) {
        const auto begin = static_cast<std::size_t>(std::min(m_position, Size()));
        got = std::min(count, m_content->getSize() - begin);
        std::memcpy(bytes, m_content->getBuffer() + begin, got);
    } else {
        std::FILE* const file = File();
        const bool placed = SeekTo(file, static_cast<std::uint64_t>(m_position));
        got = placed ? std::fread(bytes, 1, count, file) : 0;
        if (!placed || (got < count && std::ferror(file))) {
            const auto failed = platform::StreamFailure();
            std::clearerr(file);
            throw ReadError(m_path, m_position, "cannot read: " + platform::ErrorText(failed.errorNumber));
        }
    }
    m_position += static_cast<qpdf_offset_t>(got);
    return got;
}

std::size_t CFileSource::read(char* bytes, std::size_t count)
{
    last_offset = m_position;
    const std::size_t got = ReadHere(bytes, count);
    if (got == 0 && count > 0) last_offset = m_position = Size();
    return got;
}

qpdf_offset_t CFileSource::findAndSkipNextEOL()
{
    char chunk[kLookAhead];
    const char* end = chunk;
    qpdf_offset_t start = 0;
    std::size_t got = 0;
    do {
        start = m_position;
        got = read(chunk, sizeof chunk);
        if (got == 0) return m_position;
        end = std::find_if(chunk, chunk + got, EndsLine);
    } while (end == chunk + got);
    const qpdf_offset_t result = m_position = start + (end - chunk);
    for (char next = '\n'; EndsLine(next);) {
        if (read(&next, 1) == 0) return result;
    }
    --m_position;
    return result;
}

}  // namespace openhost
