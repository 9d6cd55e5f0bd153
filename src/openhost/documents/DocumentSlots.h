#ifndef FERRULE_OPENHOST_DOCUMENTS_DOCUMENT_SLOTS_H
#define FERRULE_OPENHOST_DOCUMENTS_DOCUMENT_SLOTS_H

#include "openhost/core/Tables.h"

namespace openhost {

// The groups of slots that OfferDocumentsSlots puts together, one file each.
void OfferOpenSlots(CTables& tables);
void OfferSaveSlots(CTables& tables);
void OfferInfoSlots(CTables& tables);
void OfferSecuritySlots(CTables& tables);
void OfferPermissionSlots(CTables& tables);

}  // namespace openhost

#endif
