#pragma once

#include <map>
#include <string>
#include <string_view>
#include <unordered_map>

#include "hostapi/HostRecords.h"
#include "hostapi/HostTypes.h"

namespace openhost {

/// Messages to a person. Each is said in the diagnostics; where the host has a window, its user is asked.
///
/// Where there is nobody, it is answered at once with what does no harm when nobody has read the question: a message
/// is taken note of (its first button, the default one), but what asks for a confirmation is not confirmed (Cancel,
/// No).
inline constexpr ASInt32 kFirstButton = 1;

/// Says an alert's text as one line.
void SayAlert(std::string_view text);

/// Answers to alerts that plug-ins remember under a name of theirs; 0 for a name without one.
struct AlertAnswers {
    std::map<std::string, ASInt32> byName;
};

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
