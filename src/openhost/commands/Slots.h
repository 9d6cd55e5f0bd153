#pragma once

#include "openhost/core/Tables.h"

namespace openhost {

/// Command handlers, commands and the list of global commands.
void OfferCommandsSlots(CTables& tables);

/// Registers the host's own steps. Once for each host, before plug-ins are called.
void RegisterBuiltInCommands();

}  // namespace openhost
