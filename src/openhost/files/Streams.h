#ifndef FERRULE_OPENHOST_FILES_STREAMS_H
#define FERRULE_OPENHOST_FILES_STREAMS_H

#include <cstddef>
#include <memory>

#include "hostapi/HostTypes.h"
#include "openhost/core/Handles.h"

namespace openhost {

/// A sequence of bytes to read or to write, held by plug-ins as ASStm.
class CHostStream {
public:
    virtual ~CHostStream() = default;
    /// Fewer than `count` only at the end. Raises genErrBadParm for a writing stream, or a file error.
    virtual std::size_t Read(char* bytes, std::size_t count);
    /// Raises genErrBadParm for a reading stream, or a file error: what this answers has been taken.
    virtual std::size_t Write(const char* bytes, std::size_t count);
    /// Hands everything on to file or procedure. Raises a file error when that fails.
    virtual void Flush() {}
    /// The last call: flushes and lets go of file or procedure.
    virtual void Close() {}
    /// Goes back by `count` bytes that were just read; false when the stream cannot.
    virtual bool GoBack(std::size_t count);
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
