// What the test of lines starts: does what a worker does to its standard streams, and answers the step that failed.
#include <io.h>

#include <cstdio>
#include <cstdlib>

#include "openhost/jobs/LineStream.h"
#include "platform/ThisProcess.h"
#include "platform/Windows_win.h"

namespace {

bool IsInherited(int descriptor)
{
    DWORD flags = 0;
    const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(descriptor));
    return !GetHandleInformation(handle, &flags) || (flags & HANDLE_FLAG_INHERIT) != 0;
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
    DWORD written = 0;
    WriteFile(GetStdHandle(STD_OUTPUT_HANDLE), "stray by the system\n", 20, &written, nullptr);
    if (std::system("echo stray by a program") != 0 || std::getchar() != EOF) return 3;
    if (lines.NextLine() != "first\r" || lines.NextLine() != "\xC3\xBC" || lines.NextLine()) return 4;
    return lines.Flush() ? 0 : 5;
}
