#pragma once

#include <optional>
#include <string>
#include <vector>

#include "ui/Windows.h"

class wxWindow;
class wxString;

// The system's windows for files and folders.

[[nodiscard]] std::vector<std::string> AskFiles(wxWindow* parent, const FileChoice& choice, bool several);
[[nodiscard]] std::optional<std::string> AskTarget(wxWindow* parent, const FileChoice& choice);
[[nodiscard]] std::optional<std::string> AskFolder(wxWindow* parent, const std::string& title,
                                                   const std::string& initial);

/// The filter in the toolkit's form, in which patterns find names in capitals, too, and "*.*" every name.
[[nodiscard]] std::string ToolkitFilter(const std::string& filter);
/// The path, with the extension when its name has none.
[[nodiscard]] std::string WithExtension(const std::string& path, const std::string& extension);
