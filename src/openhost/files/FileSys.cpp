#include "openhost/files/FileSys.h"

#include "openhost/core/Atoms.h"
#include "openhost/files/PathSlots.h"
#include "openhost/files/PathSyntax.h"

namespace openhost {

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
