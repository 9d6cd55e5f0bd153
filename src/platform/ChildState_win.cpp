#include "platform/ChildState_win.h"

#include <atomic>
#include <string>

#include "platform/Files.h"

namespace platform {
namespace {

constexpr DWORD kPipeBytes = 64 * 1024;
constexpr std::size_t kWriteTogether = 64 * 1024;

std::wstring FreshPipeName()
{
    static std::atomic<unsigned> counter{0};
    LARGE_INTEGER ticks;
    QueryPerformanceCounter(&ticks);
    return L"\\\\.\\pipe\\ferrule-" + std::to_wstring(GetCurrentProcessId()) + L'-' +
           std::to_wstring(ticks.QuadPart) + L'-' + std::to_wstring(++counter);
}

}  // namespace

HANDLE PipeWakeUp()
{
    static const HANDLE wakeUp = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    return wakeUp;
}

// Pipes without a name would do, but those always wait.
FileResult MakePipe(PipeEnds& ends, OurEnd ours)
{
    const auto name = FreshPipeName();
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    const bool weRead = ours == OurEnd::Reader;
    ends.reader = CHandle(CreateNamedPipeW(
        name.c_str(), PIPE_ACCESS_INBOUND | FILE_FLAG_FIRST_PIPE_INSTANCE | (weRead ? FILE_FLAG_OVERLAPPED : 0),
        PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT | PIPE_REJECT_REMOTE_CLIENTS, 1, kPipeBytes, kPipeBytes, 0,
        weRead ? nullptr : &inherited));
    if (!ends.reader.Valid()) return LastFailure();
    ends.writer = CHandle(
        CreateFileW(name.c_str(), GENERIC_WRITE, 0, weRead ? &inherited : nullptr, OPEN_EXISTING,
                    SECURITY_SQOS_PRESENT | SECURITY_ANONYMOUS | (weRead ? 0 : FILE_FLAG_OVERLAPPED), nullptr));
    return ends.writer.Valid() ? FileResult{} : LastFailure();
}

OVERLAPPED* CPipeEnd::Prepare()
{
    m_operation = {};
    m_operation.hEvent = PipeWakeUp();
    return &m_operation;
}

bool CPipeEnd::Started(BOOL answer)
{
    m_underWay = answer || GetLastError() == ERROR_IO_PENDING;
    return m_underWay;
}

CPipeEnd::Outcome CPipeEnd::Look(DWORD& count)
{
    if (GetOverlappedResult(m_pipe.Get(), &m_operation, &count, FALSE)) {
        m_underWay = false;
        return Outcome::Done;
    }
    if (GetLastError() == ERROR_IO_INCOMPLETE) return Outcome::UnderWay;
    m_underWay = false;
    return Outcome::Failed;
}

void CPipeEnd::Close()
{
    if (m_underWay) {
        // The memory belongs to the system until the operation has ended, one way or the other.
        CancelIoEx(m_pipe.Get(), &m_operation);
        for (DWORD count; !GetOverlappedResult(m_pipe.Get(), &m_operation, &count, FALSE);) {
            if (GetLastError() != ERROR_IO_INCOMPLETE) break;
            SwitchToThread();
        }
    }
    m_underWay = false;
    m_pipe = CHandle();
}

void CPipeReader::Begin()
{
    if (!IsOpen() || m_underWay) return;
    OVERLAPPED* const operation = Prepare();
    if (!Started(ReadFile(m_pipe.Get(), m_buffer.data(), static_cast<DWORD>(m_buffer.size()), nullptr, operation)))
        m_failed = true;
}

CPipeReader::Found CPipeReader::Take(std::string_view& bytes)
{
    if (!IsOpen()) return Found::Nothing;
    DWORD count = 0;
    const auto outcome = m_failed ? Outcome::Failed : m_underWay ? Look(count) : Outcome::UnderWay;
    if (outcome == Outcome::UnderWay) return Found::Nothing;
    if (outcome == Outcome::Failed) {
        Close();
        return Found::End;
    }
    // Nothing at all is what a writer of nothing sends; only an error is the end.
    bytes = {m_buffer.data(), count};
    return Found::Bytes;
}

std::size_t CPipeReader::Waiting() const
{
    DWORD waiting = 0;
    const bool told = IsOpen() && PeekNamedPipe(m_pipe.Get(), nullptr, 0, nullptr, &waiting, nullptr);
    return told ? waiting : 0;
}

void CPipeWriter::Put(std::string bytes)
{
    // The first one may be on its way, and must not move then.
    const bool joins = m_unsent.size() > 1 && m_unsent.back().size() + bytes.size() <= kWriteTogether;
    if (joins)
        m_unsent.back() += bytes;
    else
        m_unsent.push_back(std::move(bytes));
}

FileResult CPipeWriter::Begin()
{
    if (!IsOpen() || m_underWay || m_unsent.empty()) return {};
    const std::string& first = m_unsent.front();
    OVERLAPPED* const operation = Prepare();
    if (Started(WriteFile(m_pipe.Get(), first.data(), static_cast<DWORD>(first.size()), nullptr, operation)))
        return {};
    Close();
    return Failure(FileProblem::NobodyReads);
}

bool CPipeWriter::Take()
{
    if (!IsOpen() || !m_underWay) return false;
    DWORD count = 0;
    const auto outcome = Look(count);
    if (outcome == Outcome::UnderWay) return false;
    if (outcome == Outcome::Failed) {
        Close();
        return true;
    }
    m_unsent.pop_front();
    CloseWhenDone();
    return true;
}

void CPipeWriter::End()
{
    m_ends = true;
    CloseWhenDone();
}

void CPipeWriter::CloseWhenDone()
{
    if (m_ends && m_unsent.empty()) Close();
}

void CPipeWriter::Close()
{
    CPipeEnd::Close();
    m_unsent.clear();
}

}  // namespace platform
