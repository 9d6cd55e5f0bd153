// The menu tool that shows the metadata of chosen documents in a table and writes what is changed there.
#pragma once

#include <map>
#include <string>

#include "ui/Windows.h"

class CLogWriter;

/// Asks for documents and lets the user edit them. `widths`, of columns by their names in characters, are used and
/// kept. May throw CHostException.
void EditMetadata(const DialogServices& dialogs, std::map<std::string, int>& widths, CLogWriter& log);
