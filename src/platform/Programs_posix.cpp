#include <fcntl.h>
#include <linux/close_range.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "platform/FileCalls_posix.h"
#include "platform/FileHandles_posix.h"
#include "platform/FileSteps.h"
#include "platform/Files.h"
#include "platform/Paths.h"
#include "platform/Processes_posix.h"
#include "platform/Programs.h"

namespace platform {
namespace {

std::string WithoutQuotes(const std::string& program)
{
    const bool quoted = program.size() > 2 && program.front() == '"' && program.back() == '"';
    return quoted ? program.substr(1, program.size() - 2) : program;
}

bool IsExecutable(const std::string& path) { return FileExists(path) && calls::Access(path, X_OK) == 0; }

// Looked up before the fork: afterwards only calls that need no locks are safe.
std::string FindProgram(const std::string& program)
{
    if (program.find('/') != std::string::npos) return program;
    std::string folders = EnvironmentText("PATH");
    if (folders.empty()) folders = "/usr/local/bin:/usr/bin:/bin";
    for (std::size_t start = 0; start <= folders.size();) {
        const std::size_t end = std::min(folders.find(':', start), folders.size());
        const std::string folder = folders.substr(start, end - start);
        std::string candidate = (folder.empty() ? "." : folder) + '/' + program;
        if (IsExecutable(candidate)) return candidate;
        start = end + 1;
    }
    return {};
}

// In the child: becomes the program, or answers why not.
int Become(const char* path, const char* argument)
{
    setsid();
    ResetSignals();
    // Not our own streams: whoever reads what we write would wait for the program's end as well.
    const int nowhere = open("/dev/null", O_RDWR);
    if (nowhere < 0) return errno;
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (dup2(nowhere, stream) < 0) return errno;
    }
    // Documents that the libraries hold open do not concern the program.
    close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC);
    const char* direct[] = {path, argument, nullptr};
    execv(path, const_cast<char**>(direct));
    if (errno != ENOEXEC) return errno;
    const char* script[] = {"/bin/sh", path, argument,
                            nullptr};  // a script without a first line that names its shell
    execv(script[0], const_cast<char**>(script));
    return errno;
}

// The program is a grandchild: its parent ends at once, so that the system and not this process collects it.
[[noreturn]] void StartDetached(const char* path, const char* argument, int report)
{
    const pid_t program = fork();
    if (program > 0) _exit(0);
    const int error = program < 0 ? errno : Become(path, argument);
    (void)!write(report, &error, sizeof error);
    _exit(127);
}

bool StartedWithoutReport(int report)
{
    int error = 0;
    ssize_t count;
    do count = read(report, &error, sizeof error);
    while (count < 0 && errno == EINTR);
    return count == 0;  // closed by the successful start
}

}  // namespace

bool ProgramMayExist(const std::string& program)
{
    const std::string path = FindProgram(WithoutQuotes(program));
    return !path.empty() && IsExecutable(path);
}

bool OpenWithShell(const std::string& program, const std::string& argument, ShellArgument)
{
    const std::string path = FindProgram(WithoutQuotes(program));
    int ends[2];
    if (path.empty() || !IsExecutable(path)) return false;
    if (const auto answer = AskOverseer(COverseer::Act::Start, argument, path)) return answer->Ok();
    if (!MakePipe(ends)) return false;
    const CDescriptor reader(ends[0]);
    CDescriptor writer(ends[1]);
    const pid_t middle = fork();
    if (middle == 0) StartDetached(path.c_str(), argument.c_str(), writer.Get());
    writer = CDescriptor();
    if (middle < 0) return false;
    while (waitpid(middle, nullptr, 0) < 0 && errno == EINTR) {
    }
    return StartedWithoutReport(reader.Get());
}

bool OpenDocument(const std::string& pathOrAddress) { return OpenWithShell("xdg-open", pathOrAddress); }

}  // namespace platform
