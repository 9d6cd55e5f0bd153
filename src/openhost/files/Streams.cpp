#include "openhost/files/Streams.h"

#include <algorithm>
#include <cstring>

#include "openhost/core/Host.h"

namespace openhost {

std::size_t CHostStream::Read(char* bytes, std::size_t count)
{
    const std::size_t first = std::min(count, m_pushedBack.size());
    if (first > 0) std::memcpy(bytes, m_pushedBack.data(), first);
    m_pushedBack.erase(0, first);
    return first == count && count > 0 ? count : first + ReadMore(bytes + first, count - first);
}

std::size_t CHostStream::ReadMore(char*, std::size_t) { Raise(genErrBadParm, "the stream is for writing"); }

void CHostStream::Write(const char*, std::size_t) { Raise(genErrBadParm, "the stream is for reading"); }

CHostStream& StreamAt(ASStm stream) { return Part<CStreams>().handles.At(stream); }

std::size_t LiveStreams() { return Part<CStreams>().handles.Live(); }

}  // namespace openhost
