// The slots on paths; some stand both in a table and in the record of the file system.
#pragma once

#include "openhost/core/Raise.h"
#include "openhost/core/Tables.h"

namespace openhost {

/// For the functions that answer an error code instead of raising it.
template <class Work>
ASErrorCode Answering(Work work)
{
    try {
        return work();
    } catch (const CHostRaise& raise) {
        return raise.Code() != 0 ? raise.Code() : static_cast<ASErrorCode>(genErrGeneral);
    }
}

// The functions that stand both in a table and in the record of the file system.
ASPathName CreatePathName(const ASFileSys fileSys, ASAtom type, const void* spec, const void* extra);
ASPathName CopyPath(ASFileSys fileSys, ASPathName path);
void ReleasePathName(ASFileSys fileSys, ASPathName path);
ASPathName AcquireParent(ASFileSys fileSys, ASPathName path);
char* DIPathFromPath(ASFileSys fileSys, ASPathName path, ASPathName relativeTo);
ASPathName PathFromDIPath(ASFileSys fileSys, const char* diPath, ASPathName relativeTo);
ASErrorCode NameFromPath(ASFileSys fileSys, ASPathName path, char* buffer, ASTArraySize size);
ASErrorCode NameFromPathToText(ASFileSys fileSys, ASPathName path, ASText name);
char* DisplayString(ASFileSys fileSys, ASPathName path);
ASErrorCode DisplayText(ASFileSys fileSys, ASPathName path, ASText text);
ASErrorCode RemoveFile(ASFileSys fileSys, ASPathName path);
ASErrorCode ItemProps(ASFileSys fileSys, ASPathName path, ASFileSysItemProps props);
ASDiskSpace64 FreeSpace(ASFileSys fileSys, ASPathName path);

std::size_t LivePlatformPaths();

}  // namespace openhost
