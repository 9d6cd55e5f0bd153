// The files that a document is read from and written to.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>

#include <qpdf/Buffer.hh>
#include <qpdf/InputSource.hh>
#include <qpdf/Pipeline.hh>

#include "platform/AtomicFile.h"
#include "platform/Files.h"

namespace openhost {

/// Opens a regular file for reading; never waits, whatever the path names.
/// Fails: CPdfError NotFound, NoAccess, NotAFile, CannotRead.
platform::Stream OpenForReading(const std::string& path);

/// From the beginning, in bytes.
bool SeekTo(std::FILE* file, std::uint64_t position);

/// In bytes; nothing when the system does not say. The file stands at its beginning after it.
std::optional<std::uint64_t> SizeOf(std::FILE* file);

/// The whole file. Fails: as OpenForReading, and CannotRead when it holds more than `maxBytes`.
std::string ReadAll(const std::string& path, std::uint64_t maxBytes);

/// A file that the library reads in pieces. It can be let go of, for the moment in which another one takes its name.
/// Fails: what cannot be read is a QPDFExc, what cannot be opened again a CPdfError.
class CFileSource final : public InputSource {
public:
    /// `file` is that path, open for reading.
    CFileSource(std::string path, platform::Stream file) : m_path(std::move(path)), m_file(std::move(file)) {}

    /// Closes the file; the next read opens it again.
    void LetGo() { m_file.reset(); }
    /// The same, for good: what has the name now is another file. Reading fails from here on.
    void LetGoForEver();
    /// Reads all into memory and closes the file.
    void Swallow();

    qpdf_offset_t findAndSkipNextEOL() override;
    const std::string& getName() const override { return m_path; }
    qpdf_offset_t tell() override { return m_position; }
    void seek(qpdf_offset_t offset, int whence) override;
    void rewind() override { m_position = 0; }
    std::size_t read(char* bytes, std::size_t count) override;
    void unreadCh(char) override { --m_position; }

private:
    std::FILE* File();
    qpdf_offset_t Size();
    std::size_t ReadHere(char* bytes, std::size_t count);

    std::string m_path;
    platform::Stream m_file;
    std::unique_ptr<Buffer> m_content;  // when swallowed
    bool m_isGone = false;
    qpdf_offset_t m_position = 0;
};

/// The file that a document or its text is written to: complete or not at all, see platform::CAtomicFile. What goes
/// wrong is a CPdfError about the target.
class COutputFile {
public:
    /// Creates the temporary file. Fails: CPdfError Exists, NoAccess, NotAFile, DiskFull, CannotWrite.
    /// `source`: the file that the content comes from, whose access rights bound those of the new one.
    COutputFile(const std::string& target, platform::Existing existing, const std::string& source);

    /// Does not throw: the first failure is kept, later writes do nothing, and Commit reports it.
    void Write(const char* bytes, std::size_t length) noexcept { m_file.Write(bytes, length); }
    /// Throws when a write failed.
    void Check() const;
    /// Flushes all to disk, and answers the path at which it can be read until Commit; empty during a trial run.
    /// Fails: CPdfError.
    const std::string& Complete();
    /// Puts the file in place. Fails: CPdfError, also Cancelled; the target is then as it was.
    void Commit();

private:
    std::string m_target;
    platform::CAtomicFile m_file;
};

/// Carries what the library writes into a file. Never throws: the library pops its pipelines in destructors, where an
/// exception ends the process. The caller asks the file for the failure.
class CFilePipeline final : public Pipeline {
public:
    explicit CFilePipeline(COutputFile& file) : Pipeline("file", nullptr), m_file(file) {}
    void write(unsigned char const* data, size_t length) override
    {
        m_file.Write(reinterpret_cast<const char*>(data), length);
    }
    void finish() override {}

private:
    COutputFile& m_file;
};

}  // namespace openhost
