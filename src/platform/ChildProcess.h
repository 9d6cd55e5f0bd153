#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Files.h"

namespace platform {

struct ChildOptions {
    std::string program;                      ///< path
    std::vector<std::string> arguments = {};  ///< without the program's name
    /// "NAME=value" in place of, or beside, this process's own; "NAME" alone removes it.
    std::vector<std::string> environment = {};
    /// Lets the child's memory grow to so many bytes of address space at most, on Windows to so many bytes that are
    /// committed; 0: no limit. Not applied in a build with the address sanitizer, which reserves more than any
    /// machine has.
    std::uint64_t addressSpaceBytes = 0;
    /// Descriptors, or handles, that stay open in the child under the same numbers; descriptors above those of the
    /// standard streams.
    std::vector<long long> inheritedDescriptors = {};
    /// What it opens through the shell (Programs.h) goes on when it ends. On Windows, then, the same is true of
    /// everything that it does not start as a CChildProcess; elsewhere such programs leave its process group by
    /// themselves.
    bool openedProgramsGoOn = false;
};

enum class ChildEvent {
    Line,   ///< a whole line of its standard output, without the line end
    Error,  ///< a whole line of its standard error
    Ended   ///< it is gone, and everything it wrote has been delivered; what it left in its process group, or job, is
            ///< ended
};

struct ChildEnding {
    int exitCode = 0;  ///< meaningless when killed
    /// The signal that killed it, 0 for none. On Windows 9 after Kill, otherwise the exception (0xC0000005).
    std::uint32_t signal = 0;
};

/// A started program of ours that we talk to in lines over its standard streams.
///
/// It ends together with the thread that started it (on Windows: with the process), however that ends, and keyboard
/// interrupts of the terminal do not reach it. It finds no descriptors but its standard streams and those it was to
/// inherit, and the signals' defaults. The destructor kills it and waits for its end.
class CChildProcess {
public:
    /// Fails: nothing, with the reason in `result`; also when the program cannot be executed. Where the system is
    /// short of memory or processes it is tried again for 1.5 s.
    static std::optional<CChildProcess> Start(const ChildOptions& options, FileResult* result = nullptr);
    CChildProcess(CChildProcess&&) noexcept;
    CChildProcess& operator=(CChildProcess&&) noexcept;
    ~CChildProcess();

    /// Writes the line and a line end to its standard input. Never waits: what the pipe does not take at once is kept
    /// and written by CChildWatch::Wait, so a child that does not read cannot hold up its sender.
    /// Fails: FileProblem::NobodyReads when the child has closed its input or is gone.
    FileResult Send(std::string_view line);
    /// Lets its standard input end, behind what was sent.
    void CloseInput();
    /// Ends it at once, and what it has started unless that left its process group; Ended is still delivered.
    void Kill();
    int ProcessId() const;
    /// Physical memory it uses, in bytes; 0 when unknown.
    std::uint64_t ResidentBytes() const;
    /// Valid after Ended.
    ChildEnding Ending() const;

private:
    friend class CChildWatch;
    struct State;
    explicit CChildProcess(State* state);
    State* m_state;  // owned
};

struct ChildNews {
    CChildProcess* child;
    ChildEvent event;
    std::string text;  ///< of Line and Error
};

/// Waits for several children at once. One thread.
class CChildWatch {
public:
    /// The next news of any of them, in the order in which each child wrote; nothing after `milliseconds`, or at once
    /// when a stop was asked for meanwhile (see ThisProcess.h). Lines are at most `kLongestLine` bytes; a longer one
    /// is cut.
    static constexpr std::size_t kLongestLine = 64 << 20;
    std::optional<ChildNews> Wait(const std::vector<CChildProcess*>& children, int milliseconds);
};

}  // namespace platform
