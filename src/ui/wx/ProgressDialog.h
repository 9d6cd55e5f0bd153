#pragma once

#include <memory>

#include "common/Progress.h"

class wxWindow;

/// Hidden at first. Its button, Escape and closing it hide it. It belongs to the parent or, without one, to the
/// host's window; neither is kept waiting, and both may be null.
[[nodiscard]] std::unique_ptr<CProgressWindow> MakeProgressDialog(wxWindow* parent, void* hostWindow);
