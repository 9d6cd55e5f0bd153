#include <fcntl.h>
#include <linux/close_range.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>

#include "platform/ChildState_posix.h"
#include "platform/Processes_posix.h"

namespace platform {
namespace {

#ifdef __SANITIZE_ADDRESS__
constexpr bool kLimitsAddressSpace = false;
#else
constexpr bool kLimitsAddressSpace = true;
#endif

struct Pipe {
    CDescriptor reader, writer;
};

FileResult Make(Pipe& pipe)
{
    int ends[2];
    if (!MakePipe(ends)) return {errno};
    pipe.reader = CDescriptor(ends[0]);
    pipe.writer = CDescriptor(ends[1]);
    return {};
}

struct Pipes {
    Pipe input, output, errors, report;
};

FileResult MakeAll(Pipes& pipes)
{
    for (Pipe* pipe : {&pipes.input, &pipes.output, &pipes.errors, &pipes.report}) {
        if (const auto made = Make(*pipe); !made) return made;
    }
    for (const Pipe* read : {&pipes.output, &pipes.errors}) fcntl(read->reader.Get(), F_SETFL, O_NONBLOCK);
    fcntl(pipes.input.writer.Get(), F_SETFL, O_NONBLOCK);
    return {};
}

// "NAME=value" and "NAME" name the same variable.
std::string_view NameOf(std::string_view entry) { return entry.substr(0, entry.find('=')); }

std::vector<const char*> Environment(const ChildOptions& options)
{
    std::vector<const char*> entries;
    for (char** own = environ; own && *own; ++own) {
        const auto replaces = [&](const std::string& entry) { return NameOf(entry) == NameOf(*own); };
        if (std::ranges::none_of(options.environment, replaces)) entries.push_back(*own);
    }
    for (const auto& entry : options.environment) {
        if (entry.find('=') != std::string::npos) entries.push_back(entry.c_str());
    }
    entries.push_back(nullptr);
    return entries;
}

std::vector<const char*> Arguments(const ChildOptions& options)
{
    std::vector<const char*> arguments{options.program.c_str()};
    for (const auto& argument : options.arguments) arguments.push_back(argument.c_str());
    arguments.push_back(nullptr);
    return arguments;
}

// Everything that the child needs, made before the fork: after it only calls that need no locks are safe.
struct Launch {
    const char* program;
    const char* const* arguments;
    const char* const* environment;
    const std::vector<long long>& inherited;
    std::uint64_t addressSpaceBytes;
    pid_t parent;
    const Pipes& pipes;
};

bool LimitMemory(std::uint64_t bytes)
{
    if (bytes == 0 || !kLimitsAddressSpace) return true;
    rlimit limit;
    if (getrlimit(RLIMIT_AS, &limit) != 0) return false;
    if (limit.rlim_max == RLIM_INFINITY || limit.rlim_max > bytes) limit.rlim_max = bytes;
    limit.rlim_cur = limit.rlim_max;
    return setrlimit(RLIMIT_AS, &limit) == 0;
}

bool TakeStreams(const Launch& launch)
{
    const int ends[] = {launch.pipes.input.reader.Get(), launch.pipes.output.writer.Get(),
                        launch.pipes.errors.writer.Get()};
    for (int stream = 0; stream < 3; ++stream) {
        if (dup2(ends[stream], stream) < 0) return false;
    }
    close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC);
    for (const long long inherited : launch.inherited) {
        const int descriptor = static_cast<int>(inherited);
        if (descriptor > STDERR_FILENO && fcntl(descriptor, F_SETFD, 0) < 0) return false;
    }
    return true;
}

// In the child: becomes the program, or answers why not.
int Become(const Launch& launch)
{
    setpgid(0, 0);
    if (prctl(PR_SET_PDEATHSIG, SIGKILL) != 0) return errno;
    if (getppid() != launch.parent) _exit(127);  // gone before the system was asked to tell of it
    if (!TakeStreams(launch) || !LimitMemory(launch.addressSpaceBytes)) return errno;
    ResetSignals();
    execve(launch.program, const_cast<char**>(launch.arguments), const_cast<char**>(launch.environment));
    return errno;
}

[[noreturn]] void RunChild(const Launch& launch)
{
    const int error = Become(launch);
    (void)!write(launch.pipes.report.writer.Get(), &error, sizeof error);
    _exit(127);
}

// 0 when the pipe was closed by the successful start.
int ReportedError(int report)
{
    int error = 0;
    while (read(report, &error, sizeof error) < 0 && errno == EINTR) {
    }
    return error;
}

}  // namespace

FileResult StartChild(const ChildOptions& options, ChildState& state)
{
    Pipes pipes;
    if (const auto made = MakeAll(pipes); !made) return made;
    const auto arguments = Arguments(options);
    const auto environment = Environment(options);
    const Launch launch{options.program.c_str(),
                        arguments.data(),
                        environment.data(),
                        options.inheritedDescriptors,
                        options.addressSpaceBytes,
                        getpid(),
                        pipes};
    pid_t child;
    {
        // A handler of this process must not run in the child.
        const CSignalsBlocked blocked;
        child = fork();
        if (child == 0) RunChild(launch);
        if (child < 0) return {errno};
    }
    for (Pipe* pipe : {&pipes.output, &pipes.errors, &pipes.report}) pipe->writer = CDescriptor();
    if (const int error = ReportedError(pipes.report.reader.Get()); error != 0) {
        while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
        }
        return {error};
    }
    state.processId = child;
    state.end = CDescriptor(AboveStandardStreams(static_cast<int>(syscall(SYS_pidfd_open, child, 0))));
    state.input = std::move(pipes.input.writer);
    state.output.pipe = std::move(pipes.output.reader);
    state.errors.pipe = std::move(pipes.errors.reader);
    return {};
}

bool MayStartLater(FileResult failed)
{
    const int error = failed.errorNumber;
    return error == EAGAIN || error == ENOMEM || error == ENFILE || error == ETXTBSY;
}

}  // namespace platform
