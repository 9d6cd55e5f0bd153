// This process: what it needs from the system, requests to end it, and the terminal that it may have.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

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
void PrepareProcess();

/// Does the work where calls may nest very deep, as libraries do that follow a document's own nesting: a chain of
/// 100000 bookmarks must not end the process. Answers what the work answers; whatever it throws ends the program. The
/// stack is address space and takes memory only as far as it is used; where the process may not have that much, it is
/// as large as can be had.
///
/// On Windows a program's own stack is made so large when it is linked, and this just does the work.
int OnDeepStack(const std::function<int()>& work);

/// From now on requests to end this process (keyboard interrupt, termination, hang-up) are counted instead of ending
/// it. Waiting for children ends early at each.
void CountInterrupts();
/// How many there were so far.
int Interrupts();

/// Who runs this process, and on which machine; UTF-8, empty when the system does not tell.
std::string UserName();
std::string ComputerName();

/// The machine's memory in bytes.
struct MemoryStatus {
    std::uint64_t totalPhysical = 0, availablePhysical = 0;
    std::uint64_t totalVirtual = 0, availableVirtual = 0;    ///< address space of this process
    std::uint64_t totalPageFile = 0, availablePageFile = 0;  ///< physical memory and swap together
    unsigned loadPercent = 0;                                ///< used part of the physical memory, 0 to 100
};

std::optional<MemoryStatus> GlobalMemoryStatus();

/// How many files this process may have open at a time, after it was tried to make room for `wanted`; started
/// programs get the same room.
std::uint64_t MakeRoomForOpenFiles(std::uint64_t wanted);

enum class StandardStream { Output, Error };

/// Whether somebody sees what is written there, on a terminal that understands control codes (cursor, colours). Lets
/// it do so where it has to be told.
bool TakesControlCodes(StandardStream stream);
/// Whether it is a terminal of any kind.
bool IsTerminal(StandardStream stream);
/// Its width in columns; 80 when it does not tell.
int TerminalWidth(StandardStream stream);

}  // namespace platform
