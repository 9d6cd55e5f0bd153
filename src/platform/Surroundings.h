#pragma once

namespace platform {

/// Makes the process independent of how it was started; called first of all, before any file is opened.
///
/// Standard streams that are closed lead nowhere: else the first files opened would take their numbers, and a
/// message to standard error would be written into a document. A reader that left and a limit on the size of files
/// are errors of the one write instead of the end of the process. Programs started by this one get the system's
/// defaults back.
///
/// On Windows as well: the standard streams carry bytes as they are, consoles show UTF-8 until this process ends, and
/// no failure opens a dialog that nobody would answer (programs started by this one inherit that); abort() ends the
/// process like any other crash. Never called in somebody else's process.
void SettleSurroundings();

}  // namespace platform
