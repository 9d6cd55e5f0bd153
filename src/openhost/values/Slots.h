#pragma once

#include "openhost/core/Tables.h"

namespace openhost {

/// Cabs, texts, text encodings, fixed-point numbers, error texts as text objects, unique names.
void OfferValuesSlots(CTables& tables);

}  // namespace openhost
