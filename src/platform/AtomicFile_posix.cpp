#include "platform/AtomicFile.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "platform/FileCalls_posix.h"
#include "platform/FileHandles_posix.h"
#include "platform/Oversight.h"

namespace platform {
namespace {

constexpr std::size_t kBufferBytes = 256 * 1024;

}  // namespace

struct CAtomicFile::State {
    Existing existing = Existing::Fail;
    bool pretends = false;
    std::string final;  // where the links lead
    CTemporaryFile file;
    bool replaces = false;
    mode_t mode = 0;  // of the replaced file, like the two below
    uid_t owner = 0;
    gid_t group = 0;
    std::string buffer;
};

CAtomicFile::CAtomicFile(const std::string& target, Existing existing) : m_state(std::make_unique<State>())
{
    m_state->existing = existing;
    m_state->pretends = Pretending();
    m_error = Prepare(target).errorNumber;
}

CAtomicFile::~CAtomicFile() = default;

FileResult CAtomicFile::Prepare(const std::string& target)
{
    State& state = *m_state;
    if (state.existing == Existing::Fail && NameExists(target)) return {EEXIST};
    if (const auto followed = FollowLinks(target, state.final); !followed) return followed;
    struct stat status;
    if (const auto asked = StatusIfThere(state.final, status, state.replaces); !asked) return asked;
    if (state.replaces) {
        if (S_ISDIR(status.st_mode)) return {EISDIR};
        if (!S_ISREG(status.st_mode)) return {EINVAL};
        if (calls::Access(state.final, W_OK) != 0) return {errno};
        state.mode = status.st_mode & 07777U;
        state.owner = status.st_uid;
        state.group = status.st_gid;
    }
    if (state.pretends) return CheckFolderOf(state.final);
    // A replaced file may be private, so its successor is until it has the same rights.
    return state.file.CreateBeside(state.final, state.replaces ? 0600 : 0666);
}

void CAtomicFile::Write(const char* bytes, std::size_t length) noexcept
{
    if (m_state->pretends) return;
    std::string& buffer = m_state->buffer;
    while (length > 0 && m_error == 0) {
        try {
            if (buffer.capacity() < kBufferBytes) buffer.reserve(kBufferBytes);
        } catch (...) {
            m_error = ENOMEM;
            return;
        }
        const std::size_t part = std::min(length, kBufferBytes - buffer.size());
        buffer.append(bytes, part);
        bytes += part;
        length -= part;
        if (buffer.size() == kBufferBytes) FlushBuffer();
    }
}

void CAtomicFile::FlushBuffer() noexcept
{
    if (m_error == 0) m_error = WriteAll(m_state->file.Descriptor(), m_state->buffer).errorNumber;
    m_state->buffer.clear();
}

namespace {

FileResult TakeOver(int descriptor, mode_t mode, uid_t owner, gid_t group)
{
    // Only the superuser may give files away; anyone else keeps the new file as his own.
    const bool foreign = owner != geteuid() || group != getegid();
    if (foreign && calls::SetOwner(descriptor, owner, group) != 0) mode &= 01777U;
    return {calls::SetMode(descriptor, mode) == 0 ? 0 : errno};
}

}  // namespace

FileResult CAtomicFile::Complete()
{
    State& state = *m_state;
    FlushBuffer();
    if (m_error != 0) return {m_error};
    if (state.replaces) {
        const auto taken = TakeOver(state.file.Descriptor(), state.mode, state.owner, state.group);
        if (!taken) return taken;
    }
    return state.file.Complete();
}

FileResult CAtomicFile::Commit()
{
    State& state = *m_state;
    if (m_error == 0 && !state.pretends) m_error = Complete().errorNumber;
    if (m_error != 0) return {m_error};
    const auto answer = AskOverseer(COverseer::Act::Put, state.file.Path(), state.final);
    if (answer) {
        m_error = answer->errorNumber;
        return *answer;
    }
    const auto put = state.file.PutInPlace(state.final, state.existing);
    m_error = put.errorNumber;
    // The file is in place by now; a folder that cannot be flushed is no failure.
    if (put) (void)FlushFolderOf(state.final);
    return put;
}

}  // namespace platform
