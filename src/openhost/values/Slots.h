#ifndef FERRULE_OPENHOST_VALUES_SLOTS_H
#define FERRULE_OPENHOST_VALUES_SLOTS_H

#include "openhost/core/Tables.h"

namespace openhost {

/// Cabs, texts, text encodings, fixed-point numbers, error texts as text objects, unique names.
void OfferValuesSlots(CTables& tables);

}  // namespace openhost

#endif
