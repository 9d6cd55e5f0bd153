#pragma once

#include <array>
#include <deque>
#include <string>
#include <string_view>

#include "base/Text.h"
#include "platform/ChildProcess.h"
#include "platform/Handle_win.h"

// The pipes to children. Ours are the ends that never wait; not for callers outside.
namespace platform {

/// Signalled when an operation of one of these pipes ends. Starting any operation takes the signal back, so whoever
/// is going to wait starts what is to be started on all pipes, then looks at all of them, and only then waits.
HANDLE PipeWakeUp();

struct PipeEnds {
    CHandle reader, writer;
};
enum class OurEnd { Reader, Writer };
/// Makes a pipe. Our end does not wait; the other one is an ordinary handle that a child inherits.
FileResult MakePipe(PipeEnds& ends, OurEnd ours);

/// One end of ours, with one operation on it at a time. Stays where it is: the system writes into it.
class CPipeEnd {
public:
    CPipeEnd() = default;
    CPipeEnd(const CPipeEnd&) = delete;
    CPipeEnd& operator=(const CPipeEnd&) = delete;
    ~CPipeEnd() { Close(); }

    void Open(CHandle pipe) { m_pipe = std::move(pipe); }
    bool IsOpen() const { return m_pipe.Valid(); }
    /// Calls off what is under way.
    void Close();

protected:
    enum class Outcome { UnderWay, Done, Failed };
    /// Before an operation is started with what this answers.
    OVERLAPPED* Prepare();
    /// `answer`: of the call that started it. False when it has failed at once.
    bool Started(BOOL answer);
    Outcome Look(DWORD& count);

    CHandle m_pipe;
    bool m_underWay = false;

private:
    OVERLAPPED m_operation{};
};

class CPipeReader : public CPipeEnd {
public:
    enum class Found { Nothing, Bytes, End };

    /// Reading begins, unless it is under way.
    void Begin();
    /// What was read; `bytes` are valid until the next Begin. Closed after End.
    Found Take(std::string_view& bytes);
    /// How many bytes lie in the pipe, without those that are being read.
    std::size_t Waiting() const;

private:
    std::array<char, 64 * 1024> m_buffer;
    bool m_failed = false;  // reading could not begin
};

class CPipeWriter : public CPipeEnd {
public:
    /// Keeps the bytes, to be written behind what is kept already.
    void Put(std::string bytes);
    /// Writing begins, unless it is under way. Fails: nobody reads; it is closed then.
    FileResult Begin();
    /// Whether something has been written, or has failed, since the last time. Closed after a failure.
    bool Take();
    /// Closed as soon as everything is written.
    void End();
    bool Ends() const { return m_ends; }
    void Close();

private:
    void CloseWhenDone();

    std::deque<std::string> m_unsent;  // the first one is being written while an operation is under way
    bool m_ends = false;
};

// What starting, talking to and watching a child share; not for callers outside.

/// One of the child's output streams as this process reads it.
struct ChildStream {
    CPipeReader pipe;
    CLineSplitter lines{CChildWatch::kLongestLine};
};

struct ChildState {
    struct News {
        ChildEvent event;
        std::string text;
    };

    CHandle process;
    int processId = 0;
    CHandle family;  // the job with the child and what it has started; its processes end when it is closed
    CPipeWriter input;
    ChildStream output, errors;
    std::deque<News> news;
    bool collected = false;  // gone, and known how
    ChildEnding ending;

    /// The child has ended, or is made to; takes note how.
    void Collect();
    /// Collect when it has ended by itself.
    bool CollectIfEnded();
    void KillFamily() const;
};

/// Starts the program and fills `state`. Fails: nothing is running.
FileResult StartChild(const ChildOptions& options, ChildState& state);
/// The system was short of something that other programs may give back.
bool MayStartLater(FileResult failed);

struct CChildProcess::State : ChildState {};

}  // namespace platform
