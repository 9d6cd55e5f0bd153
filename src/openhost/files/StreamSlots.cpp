#include <algorithm>

#include "openhost/core/Atoms.h"
#include "openhost/core/Memory.h"
#include "openhost/core/Tables.h"
#include "openhost/files/FilePaths.h"
#include "openhost/files/Streams.h"
#include "openhost/values/CabStream.h"
#include "openhost/values/Text.h"
#include "platform/Files.h"

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

ASTCount ReadStream(char* buffer, ASTArraySize itemSize, ASTCount items, ASStm stream)
{
    CHostStream& source = StreamAt(stream);
    const std::size_t wanted = BytesIn(itemSize, items);
    Require(buffer != nullptr || wanted == 0, "no room for the bytes");
    if (wanted == 0) return 0;
    return static_cast<ASTCount>(source.Read(buffer, wanted) / static_cast<std::size_t>(itemSize));
}

ASTCount WriteStream(const char* bytes, ASTArraySize itemSize, ASTCount items, ASStm stream)
{
    CHostStream& target = StreamAt(stream);
    const std::size_t given = BytesIn(itemSize, items);
    Require(bytes != nullptr || given == 0, "no bytes were given");
    target.Write(bytes, given);
    return given == 0 ? 0 : items;
}

ASTCount FlushStream(ASStm stream)
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
    OFFER(tables, AcroSupport, ASStmRead, ReadStream);
    OFFER(tables, AcroSupport, ASStmWrite, WriteStream);
    OFFER(tables, AcroSupport, ASStmFlush, FlushStream);
    OFFER(tables, AcroSupport, ASStmClose, Close);
}

void OfferCabFileSlots(CTables& tables);

namespace {

constexpr std::string_view kFileSysKey = "FS";
constexpr std::string_view kPathKey = "DI";
constexpr std::string_view kPathTextKey = "DIText";

// ---- paths in cabs

/// A path is a nested cab: the file system by name and the device-independent path as a string and as a text.
ASCab CabOfPath(const CFilePath& path)
{
    COwnedCab stored = COwnedCab::New();
    stored->PutAtom(kFileSysKey, AtomFromText(kFileSysName));
    stored->PutString(kPathKey, path.DeviceIndependent());
    CHostText& text = TextAt(NewTextUtf16(Utf16FromHost(path.DeviceIndependent())));
    stored->Put(kPathTextKey, &text);
    return stored.Release();
}

/// Files of the machine only; their paths are stored under the names of several systems.
bool IsMachineFileSys(const std::string& name)
{
    return name.empty() || name == kFileSysName || name == "DOS" || name == "Win" || name == "Mac" || name == "Unix";
}

std::string StoredPath(const CCabinet& stored)
{
    if (const CHostText* const text = stored.GetText(kPathTextKey)) return text->HostBytes();
    if (const CHostText* const text = stored.GetText(kPathKey)) return text->HostBytes();
    const char* const string = stored.GetString(kPathKey);
    return string ? string : "";
}

/// The path under the key when its file exists, else null.
ASPathName ExistingPathIn(const CCabinet& cab, std::string_view key)
{
    const CCabinet* const stored = cab.GetCab(key);
    if (!stored || !IsMachineFileSys(AtomText(stored->GetAtom(kFileSysKey)))) return nullptr;
    const std::string path = StoredPath(*stored);
    if (path.empty()) return nullptr;
    const std::string native = NativeFromDeviceIndependent(path, nullptr);
    return platform::NameExists(native) ? NewPath(native) : nullptr;
}

std::string_view KeyOf(const char* key)
{
    Require(key != nullptr, "no key was given");
    return key;
}

void PutPathName(ASCab cab, const char* key, ASFileSys fileSys, ASPathName path)
{
    CCabinet& target = CabAt(cab);
    if (!path) {
        if (key) target.Remove(key);
        return;
    }
    RequireFileSys(fileSys);
    COwnedCab stored(CabOfPath(PathAt(path)));
    if (key)
        target.Put(key, &*stored);
    else
        target.PutUnderFreeNumber(&*stored);
    stored.Release();
    ReleasePath(path);
}

void GetPathNameCopy(ASConstCab cab, const char* key, ASFileSys* fileSys, ASPathName* path)
{
    Require(fileSys && path, "no place for the path");
    *path = nullptr;
    *fileSys = nullptr;
    *path = ExistingPathIn(CabAt(cab), KeyOf(key));
    if (*path) *fileSys = DefaultFileSys();
}

void DetachPathName(ASCab cab, const char* key, ASFileSys* fileSys, ASPathName* path)
{
    GetPathNameCopy(cab, key, fileSys, path);
    if (*path) CabAt(cab).Remove(key);
}

// ---- cabs in streams

void WriteToStream(ASConstCab cab, ASStm stream)
{
    CHostStream& target = StreamAt(stream);
    const std::string bytes = BytesOfCab(CabAt(cab));
    target.Write(bytes.data(), bytes.size());
}

/// Bytes that are no cab stay in the stream, so that another reader can try.
ASCab ReadFromStream(ASStm stream)
{
    CHostStream& source = StreamAt(stream);
    std::string seen;
    COwnedCab cab = ReadCab([&](char* buffer, std::size_t count) {
        const std::size_t done = source.Read(buffer, count);
        seen.append(buffer, done);
        return done;
    });
    if (!cab) source.PushBack(seen);
    return cab.Release();
}

}  // namespace

void OfferCabFileSlots(CTables& tables)
{
    OFFER(tables, ASExtra, ASCabPutPathName, PutPathName);
    OFFER(tables, ASExtra, ASCabGetPathNameCopy, GetPathNameCopy);
    OFFER(tables, ASExtra, ASCabDetachPathName, DetachPathName);
    OFFER(tables, ASExtra, ASCabWriteToStream, WriteToStream);
    OFFER(tables, ASExtra, ASCabReadFromStream, ReadFromStream);
}

}  // namespace openhost
