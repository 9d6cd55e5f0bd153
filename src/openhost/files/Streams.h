#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "hostapi/HostRecords.h"
#include "hostapi/HostTypes.h"
#include "openhost/core/Handles.h"
#include "openhost/files/Files.h"

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

/// Buffered bytes of a file from its position on; closing leaves the file's position behind what was read.
std::unique_ptr<CHostStream> FileReadStream(CHostFile& file, std::size_t bufferSize);
/// As above, for writing. The file is complete when the stream was closed without a raise.
std::unique_ptr<CHostStream> FileWriteStream(CHostFile& file, std::size_t bufferSize);
/// Bytes that the caller keeps alive.
std::unique_ptr<CHostStream> MemoryReadStream(const char* bytes, std::size_t count);

/// The procedures of a plug-in behind a stream; each but `transfer` may be null.
struct StreamProcedures {
    ASStmProc transfer;
    ASProcStmDestroyProc destroy;
    void* clientData;
};
/// Asks the procedure for exactly what is read.
std::unique_ptr<CHostStream> ProcedureReadStream(const StreamProcedures& procedures);
std::unique_ptr<CHostStream> ProcedureWriteStream(const StreamProcedures& procedures);

}  // namespace openhost
