#include "platform/AtomicFile.h"

#include <algorithm>

#include "platform/FileProblem.h"
#include "platform/FileSteps.h"
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
    bool complete = false;
    CFileRights rights;  // of the replaced file
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
    if (state.existing == Existing::Fail && NameExists(target)) return Failure(FileProblem::Exists);
    if (const auto followed = FollowLinks(target, state.final); !followed) return followed;
    FileStatus status;
    if (const auto asked = StatusIfThere(state.final, status, state.replaces); !asked) return asked;
    if (state.replaces) {
        if (status.kind == FileKind::Folder) return Failure(FileProblem::IsAFolder);
        if (status.kind != FileKind::Regular) return Failure(FileProblem::NotARegularFile);
        if (const auto writable = CheckWritable(state.final); !writable) return writable;
        if (const auto read = state.rights.ReadFrom(state.final); !read) return read;
    }
    if (state.pretends) return CheckFolderOf(state.final);
    // A replaced file may be private, so its successor is until it has the same rights.
    return state.file.CreateBeside(state.final, state.replaces ? Readers::OwnerForNow : Readers::AsUsual);
}

void CAtomicFile::Write(const char* bytes, std::size_t length) noexcept
{
    if (m_state->pretends) return;
    std::string& buffer = m_state->buffer;
    while (length > 0 && m_error == 0) {
        try {
            if (buffer.capacity() < kBufferBytes) buffer.reserve(kBufferBytes);
        } catch (...) {
            m_error = Failure(FileProblem::OutOfMemory).errorNumber;
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
    if (m_error == 0) m_error = m_state->file.Write(m_state->buffer).errorNumber;
    m_state->buffer.clear();
}

const std::string& CAtomicFile::TemporaryPath() const { return m_state->file.Path(); }

FileResult CAtomicFile::Complete()
{
    if (m_error == 0 && !m_state->pretends && !m_state->complete) m_error = Flush().errorNumber;
    m_state->complete = true;
    return {m_error};
}

FileResult CAtomicFile::Flush()
{
    State& state = *m_state;
    FlushBuffer();
    if (m_error != 0) return {m_error};
    if (state.replaces) {
        if (const auto taken = state.file.TakeOver(state.rights); !taken) return taken;
    }
    return state.file.Complete();
}

FileResult CAtomicFile::Commit()
{
    State& state = *m_state;
    if (const auto completed = Complete(); !completed) return completed;
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
