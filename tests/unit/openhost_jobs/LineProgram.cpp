// What the test of lines starts: does what a worker does to its standard streams, and answers the step that failed.
#ifdef _WIN32
#include <io.h>

#include "platform/Windows_win.h"
#else
#include <fcntl.h>
#include <unistd.h>
#endif

#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "openhost/jobs/WorkerLink.h"
#include "platform/ThisProcess.h"

namespace {

bool IsInherited(int descriptor)
{
#ifdef _WIN32
    DWORD flags = 0;
    const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(descriptor));
    return !GetHandleInformation(handle, &flags) || (flags & HANDLE_FLAG_INHERIT) != 0;
#else
    return (fcntl(descriptor, F_GETFD) & FD_CLOEXEC) == 0;
#endif
}

bool WriteBySystem(std::string_view text)
{
#ifdef _WIN32
    DWORD written = 0;
    return WriteFile(GetStdHandle(STD_OUTPUT_HANDLE), text.data(), static_cast<DWORD>(text.size()), &written,
                     nullptr);
#else
    return write(STDOUT_FILENO, text.data(), text.size()) > 0;
#endif
}

}  // namespace

int main()
{
    platform::PrepareProcess();
    const auto streams = openhost::CLineStream::TakeStandardStreams();
    if (!streams) return 1;
    if (IsInherited(streams->first) || IsInherited(streams->second)) return 2;
    openhost::CLineStream lines(streams->first, streams->second);
    lines.Put("a line");
    std::puts("stray by the library");
    std::fflush(stdout);
    if (!WriteBySystem("stray by the system\n")) return 3;
    if (std::system("echo stray by a program") != 0 || std::getchar() != EOF) return 4;
    if (lines.NextLine() != "first\r" || lines.NextLine() != "\xC3\xBC" || lines.NextLine()) return 5;
    return lines.Flush() ? 0 : 6;
}
