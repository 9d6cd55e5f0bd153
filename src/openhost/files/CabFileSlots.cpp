#include "openhost/core/Atoms.h"
#include "openhost/core/Tables.h"
#include "openhost/files/FilePaths.h"
#include "openhost/files/PathSyntax.h"
#include "openhost/files/Streams.h"
#include "openhost/values/CabStream.h"
#include "openhost/values/Encoding.h"
#include "platform/Files.h"

namespace openhost {

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
