#pragma once

#include "openhost/core/Tables.h"

namespace openhost {

/// Offers the documents part of "PDModel" and the password prompt of "AcroView".
void OfferDocumentsSlots(CTables& tables);

// The groups of slots that OfferDocumentsSlots puts together, one file each.
void OfferOpenSlots(CTables& tables);
void OfferSaveSlots(CTables& tables);
void OfferInfoSlots(CTables& tables);
void OfferSecuritySlots(CTables& tables);
void OfferPermissionSlots(CTables& tables);
void OfferObjectSlots(CTables& tables);
void OfferFormSlots(CTables& tables);
void OfferWordSlots(CTables& tables);

}  // namespace openhost
