#pragma once

#include <cstddef>
#include <string>

#include <qpdf/Pipeline.hh>

#include "platform/AtomicFile.h"

namespace openhost {

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
