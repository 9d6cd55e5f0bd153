#ifndef FERRULE_OPENHOST_DOCUMENTS_SLOTS_H
#define FERRULE_OPENHOST_DOCUMENTS_SLOTS_H

#include "openhost/core/Tables.h"

namespace openhost {

/// Offers the documents part of "PDModel" and the password prompt of "AcroView".
void OfferDocumentsSlots(CTables& tables);

}  // namespace openhost

#endif
