#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

#include "platform/AccessRights_posix.h"
#include "platform/AtomicFile.h"
#include "platform/FileCalls_posix.h"
#include "platform/FileHandles_posix.h"
#include "platform/FileSteps.h"
#include "platform/TemporaryFile.h"

namespace platform {
namespace {

constexpr mode_t kUsualMode = 0666, kOwnersFileMode = 0600;

}  // namespace

struct CFileRights::State {
    CAccessRights access;
    CExtendedAttributes attributes;
};

CFileRights::CFileRights() = default;
CFileRights::~CFileRights() = default;

FileResult CFileRights::ReadFrom(const std::string& path)
{
    auto state = std::make_unique<State>();
    if (const auto read = state->access.ReadFrom(path); !read) return read;
    state->attributes.ReadFrom(path);
    m_state = std::move(state);
    return {};
}

FileResult CFileRights::ReadLimit(const std::string& path)
{
    auto state = std::make_unique<State>();
    const auto read = state->access.ReadFrom(path);
    // Of a file that is gone nobody knows who might read it.
    if (!read && ProblemOf(read) != FileProblem::Missing) return read;
    m_state = std::move(state);
    return {};
}

CTemporaryFile::~CTemporaryFile()
{
    m_file.Close();
    if (!m_path.empty()) calls::Unlink(m_path);
}

FileResult CTemporaryFile::CreateNew(const std::string& target, unsigned mode)
{
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

// Only the file system knows what a new file gets: from the folder's own list or group, or from what the user masks.
// Where that is too much, the file is made once more, for its owner alone: who has opened the first one has nothing.
FileResult CTemporaryFile::CreateBeside(const std::string& target, Readers readers, const CFileRights* limit)
{
    if (readers != Readers::AsUsual) return CreateNew(target, kOwnersFileMode);
    if (!limit) return CreateNew(target, kUsualMode);
    const CAccessRights& most = limit->m_state->access;
    if (const auto created = CreateNew(target, kUsualMode & (kOwnersFileMode | most.Mode())); !created)
        return created;
    CAccessRights given;
    if (const auto read = given.ReadFrom(static_cast<int>(m_file.Get())); !read) return read;
    const CAccessRights left = given.LimitedBy(most).WithOwner();
    if (left == given) return {};
    m_file.Close();
    if (calls::Unlink(m_path) != 0) return {errno};
    m_path.clear();
    m_rights.m_state = std::make_unique<CFileRights::State>(CFileRights::State{left, {}});
    return CreateNew(target, kOwnersFileMode);
}

FileResult CTemporaryFile::Write(std::string_view bytes) { return WriteAll(static_cast<int>(m_file.Get()), bytes); }

namespace {

/// Only the superuser may give files away, and others to groups of their own; else the file stays whose it is.
void GiveTo(int file, uid_t owner, gid_t group)
{
    struct stat status;
    if (calls::StatusOf(file, status) != 0 || (status.st_uid == owner && status.st_gid == group)) return;
    constexpr auto kSameOwner = static_cast<uid_t>(-1);
    if (calls::SetOwner(file, owner, group) != 0) (void)calls::SetOwner(file, kSameOwner, group);
}

/// A file system that cannot keep the rights is good enough where its own are no wider.
FileResult SetRights(int file, const CAccessRights& wanted)
{
    const auto set = wanted.SetOn(file);
    CAccessRights present;
    if (set || !present.ReadFrom(file)) return set;
    return present.LimitedBy(wanted) == present ? FileResult{} : set;
}

/// What is left of the rights of `old` for a file that may belong to somebody else.
FileResult TakeRights(int file, const CAccessRights& old, bool complete, const CAccessRights* limit)
{
    CAccessRights present;
    if (const auto read = present.ReadFrom(file); !read) return read;
    CAccessRights wanted = old.For(present.Owner(), present.Group()).LimitedBy(old);
    if (limit) wanted = wanted.LimitedBy(*limit);
    return SetRights(file, complete ? wanted : wanted.OwnersOnly());
}

}  // namespace

FileResult CTemporaryFile::TakeOver(const CFileRights& rights, const CFileRights* limit)
{
    const int file = static_cast<int>(m_file.Get());
    const CAccessRights& old = rights.m_state->access;
    const CAccessRights* const most = limit ? &limit->m_state->access : nullptr;
    const uid_t owner = !most || most->LetsRead(old.Owner()) ? old.Owner() : geteuid();
    GiveTo(file, owner, old.Group());
    const bool complete = rights.m_state->attributes.SetOn(file);
    return TakeRights(file, old, complete, most);
}

FileResult CTemporaryFile::Complete()
{
    if (m_rights.m_state) {
        const auto given = SetRights(static_cast<int>(m_file.Get()), m_rights.m_state->access);
        if (!given) return given;
    }
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

FileResult CloneBytes(int from, int to) { return {calls::CloneRange(from, to) == 0 ? 0 : errno}; }

}  // namespace

FileResult CTemporaryFile::CopyBeside(const std::string& from, const std::string& target, const CopyRights& rights)
{
    CDescriptor source;
    struct stat status;
    if (const auto opened = OpenRegular(from, source, status); !opened) return opened;
    if (const auto created = CreateBeside(target, Readers::OwnerForNow); !created) return created;
    const int copy = static_cast<int>(m_file.Get());
    const auto copied = rights.clone ? CloneBytes(source.Get(), copy) : CopyBytes(source.Get(), copy);
    if (!copied) return copied;
    CFileRights old;
    if (const auto read = old.ReadFrom(from); !read) return read;
    const CAccessRights& access = old.m_state->access;
    if (rights.withOwner) GiveTo(copy, access.Owner(), access.Group());
    const bool complete = old.m_state->attributes.SetOn(copy);
    const auto taken = TakeRights(copy, access, complete, rights.limit ? &rights.limit->m_state->access : nullptr);
    if (!taken) return taken;
    const timespec times[] = {status.st_atim, status.st_mtim};
    (void)calls::SetTimes(copy, times);  // the copy is good without them
    return Complete();
}

}  // namespace platform
