#pragma once

#include "openhost/core/Tables.h"

namespace openhost {

/// The host's table of its catalog, and our own one of what else can be done with an index.
void OfferCatalogSlots(CTables& tables);
/// The second of them. Once for each host.
void OfferIndexTable();

}  // namespace openhost
