#include "openhost/files/Slots.h"

namespace openhost {

void OfferPathSlots(CTables& tables);
void OfferFileSlots(CTables& tables);
void OfferFolderSlots(CTables& tables);
void OfferStreamSlots(CTables& tables);
void OfferCabFileSlots(CTables& tables);

void OfferFilesSlots(CTables& tables)
{
    OfferPathSlots(tables);
    OfferFileSlots(tables);
    OfferFolderSlots(tables);
    OfferStreamSlots(tables);
    OfferCabFileSlots(tables);
}

}  // namespace openhost
