// The menu tool that writes the properties of chosen documents as a table.
#pragma once

#include "ui/Windows.h"

class CLogWriter;

/// Asks for documents and for a file, and writes one row for each document. May throw CHostException.
void ExportMetadata(const DialogServices& dialogs, CLogWriter& log);
