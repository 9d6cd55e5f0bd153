#include "openhost/pdf/DocumentFiles.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

#include <qpdf/QPDFExc.hh>

#include "openhost/pdf/PdfError.h"

namespace openhost {
namespace {

using platform::FileProblem;

CPdfError OpenError(const std::string& path, platform::FileResult failed)
{
    switch (platform::ProblemOf(failed)) {
        case FileProblem::IsAFolder:
            return {PdfProblem::NotAFile, path + ": is a folder"};
        case FileProblem::NotARegularFile:
            return {PdfProblem::NotAFile, path + ": is not a regular file"};
        case FileProblem::Missing:
            return SystemError(path, "cannot open", failed.errorNumber, PdfProblem::NotFound);
        default:
            return SystemError(path, "cannot open", failed.errorNumber, PdfProblem::CannotRead);
    }
}

}  // namespace

platform::Stream OpenForReading(const std::string& path)
{
    platform::FileResult opened;
    platform::Stream file = platform::OpenRegularStream(path, opened);
    if (!file) throw OpenError(path, opened);
    return file;
}

bool SeekTo(std::FILE* file, std::uint64_t position)
{
    return fseeko64(file, static_cast<off64_t>(position), SEEK_SET) == 0;
}

std::optional<std::uint64_t> SizeOf(std::FILE* file)
{
    const off64_t end = fseeko64(file, 0, SEEK_END) == 0 ? ftello64(file) : -1;
    if (end < 0 || !SeekTo(file, 0)) return std::nullopt;
    return static_cast<std::uint64_t>(end);
}

std::string ReadAll(const std::string& path, std::uint64_t maxBytes)
{
    const platform::Stream file = OpenForReading(path);
    std::string bytes;
    char chunk[64 * 1024];
    while (const std::size_t got = std::fread(chunk, 1, sizeof chunk, file.get())) {
        if (bytes.size() + got > maxBytes) throw CPdfError(PdfProblem::CannotRead, path, "is too large");
        bytes.append(chunk, got);
    }
    if (std::ferror(file.get())) {
        throw SystemError(path, "cannot read", platform::StreamFailure().errorNumber, PdfProblem::CannotRead);
    }
    return bytes;
}

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

namespace {

[[noreturn]] void Throw(const std::string& target, int errorNumber)
{
    // The overseer's refusal costs this file; it is nobody's wish to end the run.
    if (platform::ProblemOf({errorNumber}) == platform::FileProblem::Cancelled)
        throw CPdfError(PdfProblem::CannotWrite, target, "writing was refused");
    throw SystemError(target, "cannot write", errorNumber, PdfProblem::CannotWrite);
}

}  // namespace

COutputFile::COutputFile(const std::string& target, platform::Existing existing, const std::string& source)
    : m_target(target), m_file(target, existing, source)
{
    if (platform::ProblemOf(m_file.Result()) == platform::FileProblem::NotARegularFile) {
        throw CPdfError(PdfProblem::NotAFile, target, "cannot write: is not a regular file");
    }
    Check();
}

void COutputFile::Check() const
{
    if (const auto result = m_file.Result(); !result) Throw(m_target, result.errorNumber);
}

const std::string& COutputFile::Complete()
{
    if (const auto completed = m_file.Complete(); !completed) Throw(m_target, completed.errorNumber);
    return m_file.TemporaryPath();
}

void COutputFile::Commit()
{
    if (const auto committed = m_file.Commit(); !committed) Throw(m_target, committed.errorNumber);
}

}  // namespace openhost
