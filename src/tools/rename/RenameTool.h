// The menu tool that gives chosen documents names which are made from what is in them.
#pragma once

#include "common/ProductPaths.h"
#include "ui/Windows.h"

class CLogWriter;

/// Asks for documents and for what their names are made of, shows the new names, renames the files, and tells how it
/// went. The settings are kept for the next time. May throw CHostException.
void RenameDocuments(const DialogServices& dialogs, const ProductPaths& paths, CLogWriter& log);
