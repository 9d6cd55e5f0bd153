#pragma once

#include <optional>
#include <string>

#include "pdflib/AcrobatDoc.h"
#include "platform/Files.h"

// Whether an input file is still what was opened, and whether two paths lead to one file.

/// Behind "because".
inline constexpr char kInputChanged[] = "the input changed while it was processed";

/// Whether another file, or another version of it, stands at the path than at the time of the stamp. A file that is
/// gone counts as unchanged: nothing of it can be lost any more. So does one that nobody has taken the stamp of.
[[nodiscard]] bool HasChanged(const std::string& path, const std::optional<platform::FileStamp>& known);

/// Also when one of them is reached over links; by text alone when there is no such file yet.
[[nodiscard]] bool IsSameFile(const std::string& path, const std::string& otherPath);
/// An empty path is the current folder.
[[nodiscard]] bool IsSameFolder(const std::string& path, const std::string& otherPath);

// Opens input files, converted to PDF when they are not.

class CLogWriter;

/// Whether a path names a PDF file, by its extension in any letter case.
[[nodiscard]] bool IsPdfPath(const std::string& path);

/// Opens a file into `document`. Answers why it cannot be opened, logged; empty when it is open.
/// Throws CHostException when the host refuses the file.
[[nodiscard]] std::string OpenInput(CAcrobatDoc& document, const std::string& path, CLogWriter& log);
