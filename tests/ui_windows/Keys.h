#pragma once

#include <wx/toplevel.h>

/// Whether this program can press keys as somebody at the keyboard does.
[[nodiscard]] bool CanPressKeys();
/// Gives the window the keyboard and presses the key, 0 for none, in the toolkit's codes.
void PressKey(wxTopLevelWindow& window, int key, int modifiers);
/// Whether what is typed now arrives there.
[[nodiscard]] bool HasKeyboard(const wxWindow& control);
