#pragma once

#include "openhost/core/Tables.h"

namespace openhost {

void OfferScriptSlots(CTables& tables);

}  // namespace openhost
