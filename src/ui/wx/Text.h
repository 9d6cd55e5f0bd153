#pragma once

#include <wx/string.h>

#include <string>

#include "base/Unicode.h"

// Texts of the toolkit and ours, which are UTF-8. Bytes that are no text become U+FFFD.

inline wxString Shown(const std::string& text) { return wxString::FromUTF8(SanitizeUtf8(text)); }

inline std::string Typed(const wxString& text) { return text.utf8_string(); }

/// A path as platform/ takes it.
std::string TypedPath(const wxString& path);
wxString ShownPath(const std::string& path);
