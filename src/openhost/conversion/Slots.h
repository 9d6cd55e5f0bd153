#pragma once

#include "openhost/core/Tables.h"

namespace openhost {

/// Registering, listing and using converters to and from PDF.
void OfferConversionSlots(CTables& tables);

/// Registers the host's own converters: JPEG to PDF, and PDF to plain text. Once for each host.
void RegisterBuiltInConverters();

}  // namespace openhost
