#ifndef FERRULE_OPENHOST_FILES_FILE_SYS_H
#define FERRULE_OPENHOST_FILES_FILE_SYS_H

#include "hostapi/HostRecords.h"

namespace openhost {

/// The record of the machine's file system. Plug-ins pass it on; the procedures about paths can be called through it,
/// those about open files and everything asynchronous are null.
struct CFileSys {
    CFileSys();
    ASFileSysRec record;
};

}  // namespace openhost

#endif
