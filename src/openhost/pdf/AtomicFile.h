#ifndef FERRULE_OPENHOST_PDF_ATOMIC_FILE_H
#define FERRULE_OPENHOST_PDF_ATOMIC_FILE_H

#include <cstddef>
#include <string>

namespace openhost {

/// A file that appears under its name complete or not at all: written under a temporary name in the target's folder,
/// flushed, then put in its place at once, with the access rights and, as far as the system lets us, the owner of the
/// file it replaces. A target that is a symbolic link stays one; the file it leads to is replaced.
/// Without Commit nothing but the temporary file was touched, and the destructor removes that.
class CAtomicFile {
public:
    enum class Existing { Fail, Replace };

    /// Creates the temporary file. Fails: CPdfError Exists, NoAccess, DiskFull, CannotWrite.
    CAtomicFile(const std::string& target, Existing existing);
    CAtomicFile(const CAtomicFile&) = delete;
    CAtomicFile& operator=(const CAtomicFile&) = delete;
    ~CAtomicFile();

    /// Does not throw: the first failure is kept, later writes do nothing, and Commit reports it.
    void Write(const char* bytes, std::size_t length) noexcept;
    bool Failed() const noexcept { return m_error != 0; }
    /// Throws when a write failed.
    void Check() const;
    /// Flushes file and folder and puts the file in place. Fails: CPdfError; the target is then as it was.
    void Commit();

private:
    void FlushBuffer() noexcept;
    void FinishAttributes() noexcept;
    void CloseTemporary() noexcept;
    void PutInPlace();
    [[noreturn]] void Throw(int errorNumber) const;

    std::string m_target;     // as the caller named it, for messages
    std::string m_final;      // where the links lead
    std::string m_temporary;  // empty once it is gone
    Existing m_existing;
    bool m_replaces = false;
    unsigned m_mode = 0, m_owner = 0, m_group = 0;  // of the replaced file
    std::string m_buffer;
    int m_descriptor = -1;
    int m_error = 0;
};

}  // namespace openhost

#endif
