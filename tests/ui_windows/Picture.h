#pragma once

#include <wx/gdicmn.h>

#include <string>

/// Writes what the screen shows in that place to a file of that path, with the extension of its kind added: PNG, on
/// Windows BMP.
[[nodiscard]] bool TakePicture(const wxRect& place, const std::string& path);
