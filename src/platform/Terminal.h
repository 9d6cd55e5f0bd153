#pragma once

namespace platform {

enum class StandardStream { Output, Error };

/// Whether somebody sees what is written there, on a terminal that understands control codes (cursor, colours). Lets
/// it do so where it has to be told.
bool TakesControlCodes(StandardStream stream);
/// Whether it is a terminal of any kind.
bool IsTerminal(StandardStream stream);
/// Its width in columns; 80 when it does not tell.
int TerminalWidth(StandardStream stream);

}  // namespace platform
