#pragma once

#include "openhost/core/Tables.h"

namespace openhost {

/// File systems, paths, files, folders, streams, and the cab functions that need paths or streams.
void OfferFilesSlots(CTables& tables);

}  // namespace openhost
