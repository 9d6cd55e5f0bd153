#include "Keys.h"

bool CanPressKeys() { return false; }

void PressKey(wxTopLevelWindow&, int, int) {}

bool HasKeyboard(const wxWindow& control) { return control.HasFocus(); }
