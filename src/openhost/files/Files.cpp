#include "openhost/files/Files.h"

#include "base/Overseer.h"
#include "openhost/core/Atoms.h"
#include "openhost/core/Host.h"
#include "openhost/files/PathSlots.h"

namespace openhost {

namespace {

DiskFileMode DiskMode(ASFileMode mode)
{
    return {(mode & ASFILE_READ) != 0, (mode & ASFILE_WRITE) != 0, (mode & ASFILE_CREATE) != 0};
}

CHostFile* FindOpen(const std::string& nativePath)
{
    CHostFile* found = nullptr;
    Part<CFiles>().handles.ForEach([&](CHostFile& file) {
        if (file.opened > 0 && file.disk.IsSame(nativePath)) found = &file;
    });
    return found;
}

/// Opens the same file once more when it needs rights that it does not have yet.
ASErrorCode Widen(CHostFile& file, ASFileMode mode)
{
    constexpr ASFileMode kRights = ASFILE_READ | ASFILE_WRITE;
    if ((mode & kRights & ~file.mode) == 0) return 0;
    const auto wider = static_cast<ASFileMode>((file.mode | mode) & kRights);
    CDiskFile disk;
    if (const ASErrorCode failed = disk.Open(file.path.Native(), DiskMode(wider))) return failed;
    file.disk = std::move(disk);
    file.mode = static_cast<ASFileMode>(file.mode | wider);
    return 0;
}

/// What would be written here goes into the file at once, so a trial run cannot pretend it.
bool IsRefused(const CFilePath& path, ASFileMode mode)
{
    const COverseer* const overseer = Overseer();
    if ((mode & (ASFILE_WRITE | ASFILE_CREATE)) == 0 || !overseer || !overseer->Pretends()) return false;
    Diagnose(path.Native() + ": not opened for writing, because this is a trial run");
    return true;
}

}  // namespace

ASErrorCode OpenFile(const CFilePath& path, ASFileMode mode, ASFile* file)
{
    if ((mode & (ASFILE_READ | ASFILE_WRITE)) == 0) return genErrBadParm;
    if (IsRefused(path, mode)) return fileErrWrPerm;
    if (CHostFile* const open = FindOpen(path.Native())) {
        if (const ASErrorCode failed = Widen(*open, mode)) return failed;
        ++open->opened;
        *file = CHandles<CHostFile, ASFile>::HandleOf(*open);
        return 0;
    }
    CDiskFile disk;
    if (const ASErrorCode failed = disk.Open(path.Native(), DiskMode(mode))) return failed;
    const bool startsEmpty = (mode & ASFILE_CREATE) && (mode & ASFILE_WRITE) && !(mode & ASFILE_READ);
    std::uint64_t length = 0;
    if (startsEmpty && disk.Length(&length) == 0 && length > 0)
        if (const ASErrorCode failed = disk.SetLength(0)) return failed;
    *file = Part<CFiles>().handles.Add(std::make_unique<CHostFile>(CHostFile{path, std::move(disk), mode}));
    return 0;
}

ASErrorCode OpenStandIn(const CFilePath& path, const std::string& content, ASFile* file)
{
    CDiskFile disk;
    if (const ASErrorCode failed = disk.Open(content, DiskMode(ASFILE_READ))) return failed;
    *file = Part<CFiles>().handles.Add(std::make_unique<CHostFile>(CHostFile{path, std::move(disk), ASFILE_READ}));
    return 0;
}

ASErrorCode CloseFile(ASFile handle)
{
    CHostFile* const file = Part<CFiles>().handles.Find(handle);
    if (!file || file->opened == 0) return genErrBadParm;
    if (--file->opened > 0 || file->streams > 0) return 0;
    return Part<CFiles>().handles.Take(handle)->disk.Close();
}

void LetGoOfFile(ASFile handle)
{
    if (CHostFile* const file = Part<CFiles>().handles.Find(handle)) static_cast<void>(file->disk.Close());
}

void TakeUpFile(ASFile handle)
{
    CHostFile* const file = Part<CFiles>().handles.Find(handle);
    if (!file) return;
    DiskFileMode mode = DiskMode(file->mode);
    mode.create = false;
    if (file->disk.Open(file->path.Native(), mode) != 0)
        Diagnose(file->path.Native() + ": cannot be opened again after another file was to take its place");
}

void AddStream(CHostFile& file) { ++file.streams; }

ASErrorCode RemoveStream(CHostFile& file)
{
    if (--file.streams > 0 || file.opened > 0) return 0;
    return Part<CFiles>().handles.Take(CHandles<CHostFile, ASFile>::HandleOf(file))->disk.Close();
}

CHostFile& FileAt(ASFile handle)
{
    CHostFile& file = Part<CFiles>().handles.At(handle);
    Require(file.opened > 0, "the file is closed");
    return file;
}

std::size_t LiveFiles() { return Part<CFiles>().handles.Live(); }

namespace {

ASPathName RecordCopyPath(ASPathName path) { return CopyPath(nullptr, path); }
void RecordDisposePath(ASPathName path) { ReleasePathName(nullptr, path); }
ASPathName RecordParent(ASPathName path) { return AcquireParent(nullptr, path); }
char* RecordDIPath(ASPathName path, ASPathName relativeTo) { return DIPathFromPath(nullptr, path, relativeTo); }
ASPathName RecordFromDIPath(const char* text, ASPathName relativeTo)
{
    return PathFromDIPath(nullptr, text, relativeTo);
}
ASPathName RecordCreatePath(ASAtom type, const void* spec, const void* extra)
{
    return CreatePathName(nullptr, type, spec, extra);
}
ASErrorCode RecordName(ASPathName path, char* buffer, ASTArraySize size)
{
    return NameFromPath(nullptr, path, buffer, size);
}
ASErrorCode RecordNameText(ASPathName path, ASText name) { return NameFromPathToText(nullptr, path, name); }
char* RecordDisplayString(ASPathName path) { return DisplayString(nullptr, path); }
ASErrorCode RecordDisplayText(ASPathName path, ASText text) { return DisplayText(nullptr, path, text); }
ASAtom RecordFileSysName() { return AtomFromText(kFileSysName); }
ASErrorCode RecordRemove(ASPathName path) { return RemoveFile(nullptr, path); }
ASErrorCode RecordItemProps(ASPathName path, ASFileSysItemProps props) { return ItemProps(nullptr, path, props); }
ASDiskSpace64 RecordFreeSpace(ASPathName path) { return FreeSpace(nullptr, path); }

}  // namespace

CFileSys::CFileSys() : record{}
{
    record.size = sizeof record;
    record.copyPathName = &CSlot<&RecordCopyPath>::Entry;
    record.disposePathName = &CSlot<&RecordDisposePath>::Entry;
    record.getParent = &CSlot<&RecordParent>::Entry;
    record.diPathFromPath = &CSlot<&RecordDIPath>::Entry;
    record.pathFromDIPath = &CSlot<&RecordFromDIPath>::Entry;
    record.createPathName = &CSlot<&RecordCreatePath>::Entry;
    record.getName = &CSlot<&RecordName>::Entry;
    record.getNameAsASText = &CSlot<&RecordNameText>::Entry;
    record.displayStringFromPath = &CSlot<&RecordDisplayString>::Entry;
    record.displayASTextFromPath = &CSlot<&RecordDisplayText>::Entry;
    record.getFileSysName = &CSlot<&RecordFileSysName>::Entry;
    record.remove = &CSlot<&RecordRemove>::Entry;
    record.getItemProps = &CSlot<&RecordItemProps>::Entry;
    record.getStorageFreeSpace64 = &CSlot<&RecordFreeSpace>::Entry;
}

}  // namespace openhost
