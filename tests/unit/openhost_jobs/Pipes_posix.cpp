#include <fcntl.h>

#include "Pipes.h"

bool MakePipe(int (&ends)[2]) { return pipe(ends) == 0; }

std::string ReadWaiting(int reader)
{
    fcntl(reader, F_SETFL, O_NONBLOCK);
    std::string text;
    char part[4096];
    for (ssize_t length; (length = read(reader, part, sizeof part)) > 0;)
        text.append(part, static_cast<std::size_t>(length));
    return text;
}
