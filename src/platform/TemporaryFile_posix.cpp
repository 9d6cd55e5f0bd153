#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

#include "platform/FileCalls_posix.h"
#include "platform/FileHandles_posix.h"
#include "platform/FileSteps.h"
#include "platform/Oversight.h"

namespace platform {

struct CFileRights::State {
    mode_t mode;
    uid_t owner;
    gid_t group;
};

CFileRights::CFileRights() = default;
CFileRights::~CFileRights() = default;

FileResult CFileRights::ReadFrom(const std::string& path)
{
    struct stat status;
    if (calls::Status(path, status) != 0) return {errno};
    m_state = std::make_unique<State>(State{status.st_mode & 07777U, status.st_uid, status.st_gid});
    return {};
}

CTemporaryFile::~CTemporaryFile()
{
    m_file.Close();
    if (!m_path.empty()) calls::Unlink(m_path);
}

FileResult CTemporaryFile::CreateBeside(const std::string& target, Readers readers)
{
    const mode_t mode = readers == Readers::AsUsual ? 0666 : 0600;
    constexpr int kAttempts = 1000;  // names of a dead process may be in the way
    const std::string folder = FolderPrefix(target);
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        std::string path = folder + NextTemporaryName(static_cast<unsigned long>(getpid()));
        CDescriptor file(calls::Open(path, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, mode));
        if (file.Valid()) {
            m_file = COpenFile(file.Release());
            m_path = std::move(path);
            return {};
        }
        if (errno != EEXIST) return {errno};
    }
    return {EEXIST};
}

FileResult CTemporaryFile::Write(std::string_view bytes) { return WriteAll(static_cast<int>(m_file.Get()), bytes); }

FileResult CTemporaryFile::TakeOver(const CFileRights& rights)
{
    const auto& [mode, owner, group] = *rights.m_state;
    const int file = static_cast<int>(m_file.Get());
    // Only the superuser may give files away; anyone else keeps the new file as his own.
    const bool foreign = owner != geteuid() || group != getegid();
    const bool given = !foreign || calls::SetOwner(file, owner, group) == 0;
    return {calls::SetMode(file, given ? mode : mode & 01777U) == 0 ? 0 : errno};
}

FileResult CTemporaryFile::Complete()
{
    if (const auto flushed = FlushDescriptor(static_cast<int>(m_file.Get())); !flushed) return flushed;
    // Some file systems tell only now that the disk was full.
    if (calls::Close(static_cast<int>(m_file.Release())) == 0 || errno == EINTR) return {};
    return {errno};
}

FileResult CTemporaryFile::PutInPlace(const std::string& target, Existing existing)
{
    const auto renamed =
        existing == Existing::Fail ? RenameExclusively(m_path, target) : RenameReplacing(m_path, target);
    if (renamed) m_path.clear();
    return renamed;
}

namespace {

constexpr mode_t kPermissionBits = 0777;

FileResult CopyBytes(int from, int to)
{
    constexpr std::size_t kAtOnce = 1U << 30;
    while (calls::CopyRange(from, to, kAtOnce) > 0) {
    }
    // Where the kernel cannot copy by itself, or stopped early, the rest is copied here; at the end nothing is left.
    std::vector<char> buffer(1U << 18);
    for (;;) {
        const ssize_t count = calls::Read(from, buffer.data(), buffer.size());
        if (count == 0) return {};
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return {errno};
        const auto written = WriteAll(to, {buffer.data(), static_cast<std::size_t>(count)});
        if (!written) return written;
    }
}

// File systems without owners and modes refuse these; the copy is good without them.
void CopyAttributes(const struct stat& source, int to)
{
    (void)calls::SetMode(to, source.st_mode & kPermissionBits);
    const timespec times[] = {source.st_atim, source.st_mtim};
    (void)calls::SetTimes(to, times);
}

}  // namespace

FileResult CTemporaryFile::CopyBeside(const std::string& from, const std::string& target)
{
    CDescriptor source;
    struct stat status;
    if (const auto opened = OpenRegular(from, source, status); !opened) return opened;
    if (const auto created = CreateBeside(target, Readers::OwnerForNow); !created) return created;
    if (const auto copied = CopyBytes(source.Get(), static_cast<int>(m_file.Get())); !copied) return copied;
    CopyAttributes(status, static_cast<int>(m_file.Get()));
    return Complete();
}

}  // namespace platform
