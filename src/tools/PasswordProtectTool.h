// The menu tool that protects a list of chosen documents, each in its place.
#pragma once

#include "commands/SecuritySettings.h"
#include "ui/Windows.h"

class CLogWriter;

/// Asks for documents and settings, protects the documents, and tells how it went. `current` is offered first and
/// takes what the user has accepted. May throw CHostException.
void ProtectDocuments(const DialogServices& dialogs, SecuritySettings& current, CLogWriter& log);
