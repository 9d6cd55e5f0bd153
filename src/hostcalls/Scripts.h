#pragma once

#include <string>
#include <string_view>

#include "base/Expected.h"
#include "hostapi/HostTypes.h"

// The host's script engine. It belongs to the forms, which a host need not have.

[[nodiscard]] bool CanRunScripts();

/// Runs a script (UTF-8, any line ends) in a document; answers what it leaves in event.value, in UTF-8, empty when it
/// leaves nothing there. Fails: with the host's reason when the script fails, when it sets event.rc to false, or when
/// the host runs no scripts. Does not throw CHostException.
Expected<std::string> RunScript(PDDoc document, std::string_view source);
