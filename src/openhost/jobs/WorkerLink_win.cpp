#include <fcntl.h>
#include <io.h>

#include <cstdio>

#include "openhost/jobs/WorkerLink.h"
#include "platform/Handle_win.h"

namespace openhost {

namespace {

/// A descriptor of our own for the same stream, which started programs do not inherit; -1 when the system refuses.
int PrivateCopy(DWORD standardName)
{
    HANDLE copy = nullptr;
    if (!DuplicateHandle(GetCurrentProcess(), GetStdHandle(standardName), GetCurrentProcess(), &copy, 0, FALSE,
                         DUPLICATE_SAME_ACCESS))
        return -1;
    platform::CHandle owned(copy);
    const int descriptor = _open_osfhandle(reinterpret_cast<intptr_t>(copy), _O_BINARY | _O_NOINHERIT);
    if (descriptor >= 0) owned.Release();
    return descriptor;
}

bool Redirect(std::FILE* stream, int descriptor, DWORD standardName)
{
    const int number = _fileno(stream);
    return _dup2(descriptor, number) == 0 &&
           SetStdHandle(standardName, reinterpret_cast<HANDLE>(_get_osfhandle(number)));
}

}  // namespace

std::optional<std::pair<int, int>> CLineStream::TakeStandardStreams()
{
    const int input = PrivateCopy(STD_INPUT_HANDLE), output = PrivateCopy(STD_OUTPUT_HANDLE);
    const int nothing = _open("NUL", _O_RDONLY | _O_BINARY);
    const bool taken = input >= 0 && output >= 0 && nothing >= 0 && Redirect(stdin, nothing, STD_INPUT_HANDLE) &&
                       Redirect(stdout, _fileno(stderr), STD_OUTPUT_HANDLE);
    if (nothing >= 0) _close(nothing);
    if (taken) return std::pair(input, output);
    if (input >= 0) _close(input);
    if (output >= 0) _close(output);
    return std::nullopt;
}

}  // namespace openhost
