#include "platform/AtomicFile.h"

#include <algorithm>
#include <atomic>

#include "platform/FileSteps.h"
#include "platform/TemporaryFile.h"

namespace platform {
namespace {

constexpr std::size_t kBufferBytes = 256 * 1024;

}  // namespace

struct CAtomicFile::State {
    Existing existing = Existing::Fail;
    bool pretends = false;
    std::string target;
    CTemporaryFile file;
    bool replaces = false;
    bool complete = false;
    CFileRights rights;  // of the replaced file
    bool isLimited = false;
    CFileRights limit;
    std::string buffer;

    const CFileRights* Limit() const { return isLimited ? &limit : nullptr; }
};

CAtomicFile::CAtomicFile(const std::string& target, Existing existing, const std::string& source)
    : m_state(std::make_unique<State>())
{
    m_state->existing = existing;
    m_state->pretends = Pretending();
    m_state->target = target;
    m_state->isLimited = !source.empty() && !m_state->pretends;
    m_error = Prepare(source).errorNumber;
}

CAtomicFile::~CAtomicFile() = default;

FileResult CAtomicFile::Prepare(const std::string& source)
{
    State& state = *m_state;
    if (state.existing == Existing::Fail && NameExists(state.target)) return Failure(FileProblem::Exists);
    FileStatus status;
    bool isThere = false;
    if (const auto asked = StatusOfNameIfThere(state.target, status, isThere); !asked) return asked;
    if (isThere && status.kind == FileKind::Folder) return Failure(FileProblem::IsAFolder);
    if (isThere && status.kind == FileKind::Other) return Failure(FileProblem::NotARegularFile);
    // A link is replaced itself, so what it leads to has no say in the rights.
    state.replaces = isThere && status.kind == FileKind::Regular;
    if (state.replaces) {
        if (const auto writable = CheckWritable(state.target); !writable) return writable;
        if (const auto read = state.rights.ReadFrom(state.target); !read) return read;
    }
    // What was not there and is later on belongs to somebody else.
    if (!isThere) state.existing = Existing::Fail;
    if (state.pretends) return CheckFolderOf(state.target);
    if (state.isLimited) {
        if (const auto read = state.limit.ReadLimit(source); !read) return read;
    }
    // A replaced file may be private, so its successor is until it has the same rights.
    const Readers readers = state.replaces ? Readers::OwnerForNow : Readers::AsUsual;
    return state.file.CreateBeside(state.target, readers, state.Limit());
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
        if (const auto taken = state.file.TakeOver(state.rights, state.Limit()); !taken) return taken;
    }
    return state.file.Complete();
}

FileResult CAtomicFile::Commit()
{
    State& state = *m_state;
    if (const auto completed = Complete(); !completed) return completed;
    const auto answer = AskOverseer(COverseer::Act::Put, state.file.Path(), state.target);
    if (answer) {
        m_error = answer->errorNumber;
        return *answer;
    }
    const auto put = state.file.PutInPlace(state.target, state.existing);
    m_error = put.errorNumber;
    // The file is in place by now; a folder that cannot be flushed is no failure.
    if (put) (void)FlushFolderOf(state.target);
    return put;
}

namespace {

std::string temporaryTag;

}  // namespace

void SetTemporaryTag(const std::string& tag) { temporaryTag = tag; }

std::string TemporaryPrefix(const std::string& tag) { return tag.empty() ? ".ferrule-" : ".ferrule-" + tag + '-'; }

std::string NextTemporaryName(unsigned long processId)
{
    static std::atomic<unsigned> counter{0};
    return TemporaryPrefix(temporaryTag) + std::to_string(processId) + '-' + std::to_string(++counter) + ".tmp";
}

}  // namespace platform
