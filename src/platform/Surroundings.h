#pragma once

namespace platform {

/// Makes the process independent of how it was started; called first of all, before any file is opened.
///
/// Standard streams that are closed lead nowhere: else the first files opened would take their numbers, and a
/// message to standard error would be written into a document. A reader that left and a limit on the size of files
/// are errors of the one write instead of the end of the process. Programs started by this one get the system's
/// defaults back.
void SettleSurroundings();

}  // namespace platform
