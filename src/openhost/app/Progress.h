#ifndef FERRULE_OPENHOST_APP_PROGRESS_H
#define FERRULE_OPENHOST_APP_PROGRESS_H

#include <string>
#include <unordered_map>

#include "hostapi/HostRecords.h"

namespace openhost {

/// How far an operation is that somebody follows with the host's monitor. Nobody watches; plug-ins may ask back.
struct OperationProgress {
    ASDuration duration = 0;
    ASDuration value = 0;
    std::string text;
};

/// The operations under way, by the client data that came with the monitor.
struct Operations {
    std::unordered_map<void*, OperationProgress> running;
};

/// The host's monitor: any client data serves.
ASProgressMonitor HostMonitor();
/// Says true when somebody wants everything to stop; any client data serves.
ASCancelProc HostCancelProc();
/// Says reports in the diagnostics and destroys the objects passed; any client data serves.
ASReportProc HostReportProc();

}  // namespace openhost

#endif
