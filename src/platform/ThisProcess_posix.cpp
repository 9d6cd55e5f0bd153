#include <fcntl.h>
#include <pthread.h>
#include <pwd.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <fstream>
#include <initializer_list>
#include <string>
#include <unordered_map>

#include "base/Unicode.h"
#include "platform/Paths.h"
#include "platform/Processes_posix.h"
#include "platform/ThisProcess.h"

namespace platform {
namespace {

bool IsClosed(int descriptor) { return ::fcntl(descriptor, F_GETFD) < 0 && errno == EBADF; }

/// The lowest free number is the one that is closed, because they are filled in order.
void FillStandardStreams()
{
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (IsClosed(descriptor) && ::open("/dev/null", O_RDWR) != descriptor) std::_Exit(1);
    }
}

// A handler rather than SIG_IGN, which started programs would inherit.
void DoNothing(int) {}

void TakeAsError(int signalNumber)
{
    struct sigaction present = {};
    if (::sigaction(signalNumber, nullptr, &present) == 0 && present.sa_handler == SIG_IGN) return;
    struct sigaction action = {};
    action.sa_handler = &DoNothing;
    action.sa_flags = SA_RESTART;
    ::sigaction(signalNumber, &action, nullptr);
}

}  // namespace

void PrepareProcess()
{
    FillStandardStreams();
    TakeAsError(SIGPIPE);
    TakeAsError(SIGXFSZ);
}

namespace {

constexpr std::size_t kMegabyte = std::size_t{1} << 20;
constexpr std::size_t kDeepest = 1024 * kMegabyte, kShallowest = 16 * kMegabyte;

struct Task {
    const std::function<int()>& work;
    int answer = 0;
};

void* Do(void* task)
{
    Task& mine = *static_cast<Task*>(task);
    mine.answer = mine.work();
    return nullptr;
}

/// Whoever limits the address space means it for documents: no more than a quarter of it is for the stack.
std::size_t LargestStack()
{
    rlimit limit;
    if (getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) return kDeepest;
    return static_cast<std::size_t>(std::min<rlim_t>(limit.rlim_cur / 4, kDeepest));
}

bool RunsThrough(Task& task, std::size_t stackBytes)
{
    pthread_attr_t attributes;
    pthread_t thread;
    if (pthread_attr_init(&attributes) != 0) return false;
    const bool started = pthread_attr_setstacksize(&attributes, stackBytes) == 0 &&
                         pthread_create(&thread, &attributes, &Do, &task) == 0;
    pthread_attr_destroy(&attributes);
    if (started) pthread_join(thread, nullptr);
    return started;
}

}  // namespace

int OnDeepStack(const std::function<int()>& work)
{
    Task task{work};
    for (std::size_t bytes = LargestStack() / kMegabyte * kMegabyte; bytes >= kShallowest; bytes /= 2)
        if (RunsThrough(task, bytes)) return task.answer;
    return work();
}

namespace {

std::atomic<int> count{0};
static_assert(std::atomic<int>::is_always_lock_free, "counted inside a signal handler");
// Written by the handler, so that a wait that is just about to begin ends too. Never closed.
int wakeUps[2] = {-1, -1};

void Count(int)
{
    const int error = errno;
    ++count;
    if (wakeUps[1] >= 0) (void)!write(wakeUps[1], "", 1);  // full means that it is readable already
    errno = error;
}

void CountOne(int signalNumber)
{
    struct sigaction present = {};
    // Whoever started this process wants it to outlive the terminal, or not to be interrupted in the background.
    if (sigaction(signalNumber, nullptr, &present) == 0 && present.sa_handler == SIG_IGN) return;
    struct sigaction action = {};
    action.sa_handler = &Count;
    action.sa_flags = SA_RESTART;  // a file operation under way is completed
    sigfillset(&action.sa_mask);
    sigaction(signalNumber, &action, nullptr);
}

}  // namespace

void CountInterrupts()
{
    // Without a pipe the requests still count; only the waits do not end early.
    if (wakeUps[0] < 0 && MakePipe(wakeUps)) {
        for (const int end : wakeUps) fcntl(end, F_SETFL, O_NONBLOCK);
    }
    for (const int signalNumber : {SIGINT, SIGTERM, SIGHUP}) CountOne(signalNumber);
}

int Interrupts() { return count; }

int InterruptDescriptor() { return wakeUps[0]; }

void ForgetInterruptWakeUps()
{
    char buffer[64];
    while (wakeUps[0] >= 0 && read(wakeUps[0], buffer, sizeof buffer) > 0) {
    }
}

namespace {

std::unordered_map<std::string, std::uint64_t> ReadMemoryFigures()
{
    std::unordered_map<std::string, std::uint64_t> bytesByName;
    std::ifstream file("/proc/meminfo");
    std::string name, rest;
    std::uint64_t kibibytes = 0;
    while (file >> name >> kibibytes && std::getline(file, rest)) bytesByName[name] = kibibytes * 1024;
    return bytesByName;
}

std::uint64_t AddressSpaceLimit()
{
    constexpr std::uint64_t kUserSpace = (std::uint64_t{1} << 47) - 4096;
    rlimit limit;
    if (getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) return kUserSpace;
    return std::min<std::uint64_t>(limit.rlim_cur, kUserSpace);
}

std::uint64_t AddressSpaceUsed()
{
    std::uint64_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    return pages * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

}  // namespace

std::optional<MemoryStatus> GlobalMemoryStatus()
{
    auto figures = ReadMemoryFigures();
    MemoryStatus status;
    status.totalPhysical = figures["MemTotal:"];
    if (status.totalPhysical == 0) return std::nullopt;
    status.availablePhysical = std::min(figures["MemAvailable:"], status.totalPhysical);
    status.totalPageFile = status.totalPhysical + figures["SwapTotal:"];
    status.availablePageFile = status.availablePhysical + figures["SwapFree:"];
    status.totalVirtual = AddressSpaceLimit();
    status.availableVirtual = status.totalVirtual - std::min(AddressSpaceUsed(), status.totalVirtual);
    const std::uint64_t used = status.totalPhysical - status.availablePhysical;
    status.loadPercent = static_cast<unsigned>(used * 100 / status.totalPhysical);
    return status;
}

std::uint64_t MakeRoomForOpenFiles(std::uint64_t wanted)
{
    rlimit limit = {};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return wanted;
    if (limit.rlim_cur >= wanted) return limit.rlim_cur;
    rlimit raised = limit;
    raised.rlim_cur = std::min<rlim_t>(wanted, limit.rlim_max);
    return ::setrlimit(RLIMIT_NOFILE, &raised) == 0 ? raised.rlim_cur : limit.rlim_cur;
}

namespace {

constexpr int kUsualWidth = 80;

int DescriptorOf(StandardStream stream) { return stream == StandardStream::Output ? STDOUT_FILENO : STDERR_FILENO; }

}  // namespace

bool TakesControlCodes(StandardStream stream)
{
    const std::string kind = EnvironmentText("TERM");
    return isatty(DescriptorOf(stream)) == 1 && !kind.empty() && kind != "dumb";
}

bool IsTerminal(StandardStream stream) { return isatty(DescriptorOf(stream)) == 1; }

int TerminalWidth(StandardStream stream)
{
    winsize size{};
    if (ioctl(DescriptorOf(stream), TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return kUsualWidth;
    return size.ws_col;
}

std::string UserName()
{
    const passwd* const user = getpwuid(getuid());
    return user && user->pw_name ? SanitizeUtf8(user->pw_name) : std::string();
}

std::string ComputerName()
{
    char name[256] = {};
    return gethostname(name, sizeof name - 1) == 0 ? SanitizeUtf8(name) : std::string();
}

}  // namespace platform
