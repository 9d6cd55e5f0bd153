// Opens input files, converted to PDF when they are not.
#pragma once

#include "pdflib/AcrobatDoc.h"

#include <string>

class CLogWriter;

/// Whether a path names a PDF file, by its extension in any letter case.
[[nodiscard]] bool IsPdfPath(const std::string& path);

/// Opens a file into `document`. Answers why it cannot be opened, logged; empty when it is open.
/// Throws CHostException when the host refuses the file.
[[nodiscard]] std::string OpenInput(CAcrobatDoc& document, const std::string& path, CLogWriter& log);
