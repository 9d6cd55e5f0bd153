#include "openhost/files/Slots.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "base/Overseer.h"
#include "openhost/core/Host.h"
#include "openhost/core/Tables.h"
#include "openhost/files/DiskFile.h"
#include "openhost/files/FilePaths.h"
#include "openhost/files/Files.h"
#include "openhost/files/PathSlots.h"
#include "platform/Files.h"

namespace openhost {

void OfferPathSlots(CTables& tables);
void OfferFileSlots(CTables& tables);
void OfferFolderSlots(CTables& tables);
void OfferStreamSlots(CTables& tables);
void OfferCabFileSlots(CTables& tables);

void OfferFilesSlots(CTables& tables)
{
    OfferPathSlots(tables);
    OfferFileSlots(tables);
    OfferFolderSlots(tables);
    OfferStreamSlots(tables);
    OfferCabFileSlots(tables);
}

void OfferFileSlots(CTables& tables);

namespace {

constexpr std::uint64_t kMax32 = std::numeric_limits<ASTFilePos>::max();
constexpr std::uint64_t kMax64 = std::numeric_limits<std::int64_t>::max();

void RaiseIf(ASErrorCode failed, const CHostFile& file)
{
    if (failed != 0) Raise(failed, file.path.Native() + ": " + ErrorText(failed));
}

ASErrorCode Open(ASFileSys fileSys, ASPathName path, ASFileMode mode, ASFile* file)
{
    return Answering([&]() -> ASErrorCode {
        RequireFileSys(fileSys);
        Require(file != nullptr, "no place for the file");
        return OpenFile(PathAt(path), mode, file);
    });
}

/// What one more opening would do, without counting it.
ASErrorCode Reopen(ASFile handle, ASFileMode mode)
{
    return Answering([&]() -> ASErrorCode {
        ASFile same = nullptr;
        const ASErrorCode failed = OpenFile(FileAt(handle).path, mode, &same);
        return failed != 0 ? failed : CloseFile(same);
    });
}

std::uint64_t LengthOf(ASFile handle)
{
    const CHostFile& file = FileAt(handle);
    std::uint64_t length = 0;
    RaiseIf(file.disk.Length(&length), file);
    return length;
}

ASTFilePos Within32(std::uint64_t number)
{
    if (number > kMax32) Raise(fileErrTooBig, "a position in the file needs more than 32 bits");
    return static_cast<ASTFilePos>(number);
}

void SetPosition64(ASFile handle, ASFilePos64 position)
{
    Require(position <= kMax64, "not a position in a file");
    FileAt(handle).position = position;
}

void SetPosition(ASFile handle, ASTFilePos position)
{
    Require(position >= 0, "not a position in a file");
    SetPosition64(handle, static_cast<ASFilePos64>(position));
}

ASFilePos64 Position64(ASFile handle) { return FileAt(handle).position; }
ASTFilePos Position(ASFile handle) { return Within32(FileAt(handle).position); }
ASFilePos64 Length64(ASFile handle) { return LengthOf(handle); }
ASTFilePos Length(ASFile handle) { return Within32(LengthOf(handle)); }

void SetLength64(ASFile handle, ASFilePos64 length)
{
    Require(length <= kMax64, "not a length of a file");
    CHostFile& file = FileAt(handle);
    RaiseIf(file.disk.SetLength(length), file);
}

void SetLength(ASFile handle, ASTFilePos length)
{
    Require(length >= 0, "not a length of a file");
    SetLength64(handle, static_cast<ASFilePos64>(length));
}

ASTArraySize Read(ASFile handle, char* bytes, ASTArraySize count)
{
    CHostFile& file = FileAt(handle);
    Require(count >= 0 && (bytes || count == 0), "no room for the bytes");
    std::size_t done = 0;
    RaiseIf(file.disk.ReadAt(file.position, bytes, static_cast<std::size_t>(count), &done), file);
    file.position += done;
    return static_cast<ASTArraySize>(done);
}

ASTArraySize Write(ASFile handle, const char* bytes, ASTArraySize count)
{
    CHostFile& file = FileAt(handle);
    Require(count >= 0 && (bytes || count == 0), "no bytes were given");
    std::size_t done = 0;
    const ASErrorCode failed = file.disk.WriteAt(file.position, bytes, static_cast<std::size_t>(count), &done);
    file.position += done;
    RaiseIf(failed, file);
    return static_cast<ASTArraySize>(done);
}

/// Files have no buffer of their own here.
void Flush(ASFile handle) { static_cast<void>(FileAt(handle)); }

ASErrorCode HardFlush(ASFile handle)
{
    return Answering([&]() -> ASErrorCode { return FileAt(handle).disk.FlushToDisk(); });
}

ASPathName AcquirePath(ASFile handle) { return NewPath(FileAt(handle).path.Native()); }

ASFileSys FileSysOf(ASFile handle)
{
    static_cast<void>(FileAt(handle));
    return DefaultFileSys();
}

ASFileMode OpenMode(ASFile handle) { return FileAt(handle).mode; }

ASBool IsSame(ASFile handle, ASPathName path, ASFileSys fileSys)
{
    RequireFileSys(fileSys);
    return FileAt(handle).disk.IsSame(PathAt(path).Native());
}

ASFilePos64 PositionLimit(ASFileSys fileSys)
{
    RequireFileSys(fileSys);
    return kMax64;
}

ASErrorCode FlushVolume(ASFileSys fileSys, ASPathName path)
{
    return Answering([&]() -> ASErrorCode {
        RequireFileSys(fileSys);
        return platform::NameExists(PathAt(path).Native()) ? 0 : static_cast<ASErrorCode>(fileErrFNF);
    });
}

}  // namespace

ASErrorCode RemoveFile(ASFileSys fileSys, ASPathName path)
{
    return Answering([&]() -> ASErrorCode {
        RequireFileSys(fileSys);
        const auto done = platform::DeleteFile(PathAt(path).Native());
        return done ? 0 : FileErrorFromSystem(done.errorNumber);
    });
}

ASDiskSpace64 FreeSpace(ASFileSys fileSys, ASPathName path)
{
    RequireFileSys(fileSys);
    const CFilePath& item = PathAt(path);
    if (const auto space = FreeSpaceIn(item.Native())) return *space;
    return FreeSpaceIn(item.Folder()).value_or(0);  // of a file, also one that is about to be made
}

void OfferFileSlots(CTables& tables)
{
    OFFER(tables, AcroSupport, ASFileSysOpenFile, Open);
    OFFER(tables, AcroSupport, ASFileSysOpenFile64, Open);
    OFFER(tables, AcroSupport, ASFileReopen, Reopen);
    OFFER(tables, AcroSupport, ASFileClose, CloseFile);
    OFFER(tables, AcroSupport, ASFileSysRemoveFile, RemoveFile);
    OFFER(tables, AcroSupport, ASFileSetPos, SetPosition);
    OFFER(tables, AcroSupport, ASFileSetPos64, SetPosition64);
    OFFER(tables, AcroSupport, ASFileGetPos, Position);
    OFFER(tables, AcroSupport, ASFileGetPos64, Position64);
    OFFER(tables, AcroSupport, ASFileSetEOF, SetLength);
    OFFER(tables, AcroSupport, ASFileSetEOF64, SetLength64);
    OFFER(tables, AcroSupport, ASFileGetEOF, Length);
    OFFER(tables, AcroSupport, ASFileGetEOF64, Length64);
    OFFER(tables, AcroSupport, ASFileRead, Read);
    OFFER(tables, AcroSupport, ASFileWrite, Write);
    OFFER(tables, AcroSupport, ASFileFlush, Flush);
    OFFER(tables, AcroSupport, ASFileHardFlush, HardFlush);
    OFFER(tables, AcroSupport, ASFileAcquirePathName, AcquirePath);
    OFFER(tables, AcroSupport, ASFileGetFileSys, FileSysOf);
    OFFER(tables, AcroSupport, ASFileGetOpenMode, OpenMode);
    OFFER(tables, AcroSupport, ASFileIsSame, IsSame);
    OFFER(tables, AcroSupport, ASFileSysGetFilePosLimit, PositionLimit);
    OFFER(tables, AcroSupport, ASFileSysFlushVolume, FlushVolume);
    OFFER(tables, AcroSupport, ASFileSysGetStorageFreeSpace64, FreeSpace);
}

void OfferFolderSlots(CTables& tables);

namespace {

/// The names of one folder as they were when the walk began.
struct CFolderWalk {
    std::string folder;
    std::vector<platform::FolderEntry> entries;
    std::size_t next = 0;
};

struct CFolderWalks {
    CHandles<CFolderWalk, ASFolderIterator> handles{"folder iterator"};
};

/// A trial run's acts show, as far as somebody asks whether a file is there.
void ApplyPretended(const std::string& native, ASFileSysItemPropsRec& record)
{
    const COverseer* const overseer = Overseer();
    const auto exists = overseer && overseer->Pretends() ? overseer->Exists(native) : std::nullopt;
    if (!exists || *exists == (record.isThere != 0)) return;
    record = {};
    record.type = *exists ? kASFileSysFile : kASFileSysUnknown;
    record.isThere = *exists;
}

/// Writes no more than the caller's record holds.
void Deliver(const std::string& native, ASFileSysItemProps props)
{
    if (!props) return;
    ASFileSysItemPropsRec record = ItemProperties(native);
    ApplyPretended(native, record);
    record.size = props->size;
    std::memcpy(props, &record, std::min<std::size_t>(props->size, sizeof record));
}

ASBool Step(CFolderWalk& walk, ASFileSysItemProps props, ASPathName* itemPath)
{
    if (walk.next == walk.entries.size()) return 0;
    const std::string native = JoinNative(walk.folder, walk.entries[walk.next++].name);
    Deliver(native, props);
    if (itemPath) *itemPath = NewPath(native);
    return 1;
}

ASFolderIterator FirstItem(ASFileSys fileSys, ASPathName folder, ASFileSysItemProps props, ASPathName* itemPath)
{
    RequireFileSys(fileSys);
    auto walk = std::make_unique<CFolderWalk>();
    walk->folder = PathAt(folder).Native();
    platform::FileResult result;
    walk->entries = platform::ListFolder(walk->folder, &result);
    if (!result) Raise(FileErrorFromSystem(result.errorNumber), walk->folder + ": the folder cannot be read");
    if (!Step(*walk, props, itemPath)) return nullptr;
    return Part<CFolderWalks>().handles.Add(std::move(walk));
}

ASBool NextItem(ASFileSys fileSys, ASFolderIterator iterator, ASFileSysItemProps props, ASPathName* itemPath)
{
    RequireFileSys(fileSys);
    return Step(Part<CFolderWalks>().handles.At(iterator), props, itemPath);
}

void DestroyIterator(ASFileSys fileSys, ASFolderIterator iterator)
{
    RequireFileSys(fileSys);
    Require(Part<CFolderWalks>().handles.Take(iterator) != nullptr, "not a living folder iterator");
}

bool IsTrialRun(const std::string& native)
{
    const COverseer* const overseer = Overseer();
    if (!overseer || !overseer->Pretends()) return false;
    Diagnose(native + ": the folder is neither made nor removed, because this is a trial run");
    return true;
}

ASErrorCode CreateFolder(ASFileSys fileSys, ASPathName path, ASBool recurse)
{
    return Answering([&]() -> ASErrorCode {
        RequireFileSys(fileSys);
        const std::string& native = PathAt(path).Native();
        if (platform::NameExists(native)) return fileErrExists;
        if (IsTrialRun(native)) return fileErrWrPerm;
        if (!recurse) return MakeFolder(native);
        const auto made = platform::CreateFolders(native);
        return made ? 0 : FileErrorFromSystem(made.errorNumber);
    });
}

ASErrorCode RemoveFolder(ASFileSys fileSys, ASPathName path)
{
    return Answering([&]() -> ASErrorCode {
        RequireFileSys(fileSys);
        const std::string& native = PathAt(path).Native();
        if (!platform::NameExists(native)) return fileErrFNF;
        if (!platform::FolderExists(native)) return fileErrNotADir;
        if (IsTrialRun(native)) return fileErrWrPerm;
        return RemoveEmptyFolder(native);
    });
}

}  // namespace

ASErrorCode ItemProps(ASFileSys fileSys, ASPathName path, ASFileSysItemProps props)
{
    return Answering([&]() -> ASErrorCode {
        RequireFileSys(fileSys);
        Require(props != nullptr, "no record for the properties");
        Deliver(PathAt(path).Native(), props);
        return 0;
    });
}

void OfferFolderSlots(CTables& tables)
{
    OFFER(tables, AcroSupport, ASFileSysGetItemProps, ItemProps);
    OFFER(tables, AcroSupport, ASFileSysFirstFolderItem, FirstItem);
    OFFER(tables, AcroSupport, ASFileSysNextFolderItem, NextItem);
    OFFER(tables, AcroSupport, ASFileSysDestroyFolderIterator, DestroyIterator);
    OFFER(tables, AcroSupport, ASFileSysCreateFolder, CreateFolder);
    OFFER(tables, AcroSupport, ASFileSysRemoveFolder, RemoveFolder);
}

}  // namespace openhost
