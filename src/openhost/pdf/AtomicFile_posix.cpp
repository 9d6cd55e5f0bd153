#include <fcntl.h>
#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>
#include <random>

#include "openhost/pdf/AtomicFile.h"
#include "openhost/pdf/PdfGuard.h"

namespace openhost {
namespace {

constexpr std::size_t kBufferBytes = 256 * 1024;
constexpr int kNameAttempts = 100;

std::string FolderOf(const std::string& path)
{
    const auto slash = path.rfind('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

/// Where a chain of symbolic links ends, whether or not something is there.
std::string FollowLinks(std::string path)
{
    for (int links = 0; links < 40; ++links) {
        std::array<char, PATH_MAX> text;
        const ssize_t length = ::readlink(path.c_str(), text.data(), text.size());
        if (length < 0) return path;
        const std::string next(text.data(), static_cast<std::size_t>(length));
        path = next.starts_with('/') ? next : FolderOf(path) + next;
    }
    errno = ELOOP;
    return {};
}

std::string TemporaryName(const std::string& folder)
{
    static constexpr char kLetters[] = "abcdefghijklmnopqrstuvwxyz0123456789";
    std::random_device source;
    std::string name = folder + ".ferrule-";
    for (int i = 0; i < 12; ++i) name += kLetters[source() % (sizeof kLetters - 1)];
    return name;
}

/// Moves without replacing; on file systems that cannot, by a second name.
int RenameIfAbsent(const std::string& from, const std::string& to)
{
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return 0;
    if (errno != EINVAL && errno != ENOSYS) return errno;
    if (::link(from.c_str(), to.c_str()) != 0) return errno;
    ::unlink(from.c_str());
    return 0;
}

void FlushFolder(const std::string& folder)
{
    const int descriptor = ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) return;
    // The file is in place by now; a folder that cannot be flushed is no failure of the save.
    static_cast<void>(::fsync(descriptor));
    ::close(descriptor);
}

}  // namespace

CAtomicFile::CAtomicFile(const std::string& target, Existing existing) : m_target(target), m_existing(existing)
{
    struct stat status = {};
    if (existing == Existing::Fail && ::lstat(target.c_str(), &status) == 0) Throw(EEXIST);
    m_final = FollowLinks(target);
    if (m_final.empty()) Throw(errno);
    m_replaces = ::stat(m_final.c_str(), &status) == 0;
    if (m_replaces) {
        if (S_ISDIR(status.st_mode)) Throw(EISDIR);
        if (!S_ISREG(status.st_mode)) {
            throw CPdfError(PdfProblem::NotAFile, target + ": cannot write: is not a regular file");
        }
        if (::faccessat(AT_FDCWD, m_final.c_str(), W_OK, AT_EACCESS) != 0) Throw(errno);
        m_mode = status.st_mode & 07777u;
        m_owner = status.st_uid;
        m_group = status.st_gid;
    }
    // A replaced file may be private, so its successor is until it has the same rights.
    const mode_t mode = m_replaces ? 0600 : 0666;
    for (int attempt = 0; m_descriptor < 0 && attempt < kNameAttempts; ++attempt) {
        m_temporary = TemporaryName(FolderOf(m_final));
        m_descriptor = ::open(m_temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
        if (m_descriptor < 0 && errno != EEXIST) break;
    }
    if (m_descriptor < 0) {
        m_temporary.clear();
        Throw(errno);
    }
}

CAtomicFile::~CAtomicFile()
{
    CloseTemporary();
    if (!m_temporary.empty()) ::unlink(m_temporary.c_str());
}

void CAtomicFile::CloseTemporary() noexcept
{
    if (m_descriptor < 0) return;
    if (::close(m_descriptor) != 0 && m_error == 0) m_error = errno;
    m_descriptor = -1;
}

void CAtomicFile::Throw(int errorNumber) const
{
    throw SystemError(m_target, "cannot write", errorNumber, PdfProblem::CannotWrite);
}

void CAtomicFile::Check() const
{
    if (m_error != 0) Throw(m_error);
}

void CAtomicFile::Write(const char* bytes, std::size_t length) noexcept
{
    while (length > 0 && m_error == 0) {
        try {
            if (m_buffer.capacity() < kBufferBytes) m_buffer.reserve(kBufferBytes);
        } catch (...) {
            m_error = ENOMEM;
            return;
        }
        const std::size_t part = std::min(length, kBufferBytes - m_buffer.size());
        m_buffer.append(bytes, part);
        bytes += part;
        length -= part;
        if (m_buffer.size() == kBufferBytes) FlushBuffer();
    }
}

void CAtomicFile::FlushBuffer() noexcept
{
    const char* next = m_buffer.data();
    std::size_t left = m_buffer.size();
    while (left > 0 && m_error == 0) {
        const ssize_t written = ::write(m_descriptor, next, left);
        if (written < 0) {
            if (errno != EINTR) m_error = errno;
            continue;
        }
        next += written;
        left -= static_cast<std::size_t>(written);
    }
    m_buffer.clear();
}

void CAtomicFile::FinishAttributes() noexcept
{
    if (!m_replaces) return;
    // Only the superuser may give files away; anyone else keeps the new file as his own.
    if (m_owner != ::geteuid() || m_group != ::getegid()) {
        if (::fchown(m_descriptor, m_owner, m_group) != 0) m_mode &= 01777u;
    }
    if (::fchmod(m_descriptor, m_mode) != 0 && m_error == 0) m_error = errno;
}

void CAtomicFile::PutInPlace()
{
    if (m_existing == Existing::Fail) {
        if (const int error = RenameIfAbsent(m_temporary, m_final); error != 0) Throw(error);
    } else if (::rename(m_temporary.c_str(), m_final.c_str()) != 0) {
        Throw(errno);
    }
    m_temporary.clear();
}

void CAtomicFile::Commit()
{
    FlushBuffer();
    if (m_error == 0) FinishAttributes();
    if (m_error == 0 && ::fsync(m_descriptor) != 0) m_error = errno;
    CloseTemporary();
    Check();
    PutInPlace();
    FlushFolder(FolderOf(m_final));
}

}  // namespace openhost
