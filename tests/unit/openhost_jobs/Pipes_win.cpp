#include "Pipes.h"

#include <fcntl.h>
#include <io.h>

#include "platform/Windows_win.h"

bool MakePipe(int (&ends)[2])
{
    constexpr unsigned kPipeBytes = 64 * 1024;
    return _pipe(ends, kPipeBytes, _O_BINARY | _O_NOINHERIT) == 0;
}

std::string ReadWaiting(int reader)
{
    DWORD waiting = 0;
    if (!PeekNamedPipe(reinterpret_cast<HANDLE>(_get_osfhandle(reader)), nullptr, 0, nullptr, &waiting, nullptr))
        return {};
    std::string text(waiting, '\0');
    const int length = waiting > 0 ? _read(reader, text.data(), waiting) : 0;
    text.resize(static_cast<std::size_t>(length > 0 ? length : 0));
    return text;
}
