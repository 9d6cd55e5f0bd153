#ifndef FERRULE_OPENHOST_FILES_STREAM_KINDS_H
#define FERRULE_OPENHOST_FILES_STREAM_KINDS_H

#include <memory>
#include <optional>

#include "hostapi/HostRecords.h"
#include "openhost/files/Files.h"
#include "openhost/files/Streams.h"

namespace openhost {

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

#endif
