#ifndef FERRULE_OPENHOST_FILES_STREAMS_H
#define FERRULE_OPENHOST_FILES_STREAMS_H

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "hostapi/HostTypes.h"
#include "openhost/core/Handles.h"

namespace openhost {

/// A sequence of bytes to read or to write, held by plug-ins as ASStm.
class CHostStream {
public:
    virtual ~CHostStream() = default;
    /// Fewer than `count` only at the end. Raises genErrBadParm for a writing stream, or a file error.
    std::size_t Read(char* bytes, std::size_t count);
    /// The next read gives these bytes first.
    void PushBack(std::string_view bytes) { m_pushedBack.insert(0, bytes); }

    /// Takes all bytes. Raises genErrBadParm for a reading stream, or a file error, perhaps about earlier bytes.
    virtual void Write(const char* bytes, std::size_t count);
    /// Hands everything on to file or procedure. Raises a file error when that fails.
    virtual void Flush() {}
    /// The last call: flushes and lets go of file or procedure. Raises a file error; the stream is done all the same.
    virtual void Close() {}

protected:
    virtual std::size_t ReadMore(char* bytes, std::size_t count);
    std::size_t PushedBack() const { return m_pushedBack.size(); }

private:
    std::string m_pushedBack;
};

class CStreams {
public:
    CHandles<CHostStream, ASStm> handles{"stream"};
};

/// Raises genErrBadParm unless `stream` is a living stream.
CHostStream& StreamAt(ASStm stream);
std::size_t LiveStreams();

}  // namespace openhost

#endif
