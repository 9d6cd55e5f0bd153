#pragma once

namespace platform {

enum class StandardStream { Output, Error };

/// Whether somebody sees what is written there, on a terminal.
bool IsTerminal(StandardStream stream);
/// Its width in columns; 80 when it does not tell.
int TerminalWidth(StandardStream stream);

}  // namespace platform
