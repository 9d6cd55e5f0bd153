#include <algorithm>

#include "openhost/core/Records.h"
#include "openhost/core/Tables.h"
#include "openhost/files/StreamKinds.h"

namespace openhost {

void OfferStreamSlots(CTables& tables);

namespace {

std::size_t BufferSize(ASSmallBufferSize wanted)
{
    return wanted == 0 ? 4096 : std::min<std::size_t>(wanted, 32 * 1024);
}

ASStm Add(std::unique_ptr<CHostStream> stream) { return Part<CStreams>().handles.Add(std::move(stream)); }

ASStm OpenFileReading(ASFile file, ASSmallBufferSize bufferSize)
{
    return Add(FileReadStream(FileAt(file), BufferSize(bufferSize)));
}

ASStm OpenFileWriting(ASFile file, ASSmallBufferSize bufferSize)
{
    return Add(FileWriteStream(FileAt(file), BufferSize(bufferSize)));
}

ASStm OpenMemoryReading(const char* bytes, ASArraySize count)
{
    Require(bytes != nullptr || count == 0, "no bytes were given");
    return Add(MemoryReadStream(bytes, count));
}

ASStm OpenProcedureReading(ASStmProc read, void* clientData)
{
    Require(read != nullptr, "no procedure to call");
    return Add(ProcedureReadStream({read, nullptr, clientData}));
}

/// Members behind the caller's size are absent.
ASStm OpenProcedureReadingWithRecord(ASProcStmRdExHandler handler, void* clientData)
{
    Require(handler && handler->size >= offsetof(ASProcStmRdExHandlerRec, destroyProc) && handler->readProc,
            "no procedure to call");
    const auto destroy = MemberOf(handler, &ASProcStmRdExHandlerRec::destroyProc);
    return Add(ProcedureReadStream({handler->readProc, destroy, clientData}));
}

ASStm OpenProcedureWriting(ASStmProc write, ASProcStmDestroyProc destroy, void* clientData)
{
    Require(write != nullptr, "no procedure to call");
    return Add(ProcedureWriteStream({write, destroy, clientData}));
}

std::size_t BytesIn(ASTArraySize itemSize, ASTCount items)
{
    Require(itemSize >= 0 && items >= 0, "a number of items or their size is negative");
    return static_cast<std::size_t>(itemSize) * static_cast<std::size_t>(items);
}

ASTCount Read(char* buffer, ASTArraySize itemSize, ASTCount items, ASStm stream)
{
    CHostStream& source = StreamAt(stream);
    const std::size_t wanted = BytesIn(itemSize, items);
    Require(buffer != nullptr || wanted == 0, "no room for the bytes");
    if (wanted == 0) return 0;
    return static_cast<ASTCount>(source.Read(buffer, wanted) / static_cast<std::size_t>(itemSize));
}

ASTCount Write(const char* bytes, ASTArraySize itemSize, ASTCount items, ASStm stream)
{
    CHostStream& target = StreamAt(stream);
    const std::size_t given = BytesIn(itemSize, items);
    Require(bytes != nullptr || given == 0, "no bytes were given");
    target.Write(bytes, given);
    return given == 0 ? 0 : items;
}

ASTCount Flush(ASStm stream)
{
    StreamAt(stream).Flush();
    return 0;
}

/// The stream is gone even when its last bytes cannot be written; the raise says that they are lost.
void Close(ASStm stream)
{
    const auto closing = Part<CStreams>().handles.Take(stream);
    Require(closing != nullptr, "not a living stream");
    closing->Close();
}

}  // namespace

void OfferStreamSlots(CTables& tables)
{
    OFFER(tables, AcroSupport, ASFileStmRdOpen, OpenFileReading);
    OFFER(tables, AcroSupport, ASFileStmWrOpen, OpenFileWriting);
    OFFER(tables, AcroSupport, ASMemStmRdOpen, OpenMemoryReading);
    OFFER(tables, AcroSupport, ASProcStmRdOpen, OpenProcedureReading);
    OFFER(tables, AcroSupport, ASProcStmRdOpenEx, OpenProcedureReadingWithRecord);
    OFFER(tables, AcroSupport, ASProcStmWrOpen, OpenProcedureWriting);
    OFFER(tables, AcroSupport, ASStmRead, Read);
    OFFER(tables, AcroSupport, ASStmWrite, Write);
    OFFER(tables, AcroSupport, ASStmFlush, Flush);
    OFFER(tables, AcroSupport, ASStmClose, Close);
}

}  // namespace openhost
