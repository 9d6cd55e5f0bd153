#pragma once

#include "openhost/core/Tables.h"

namespace openhost {

/// Menus, alerts, dialogs, idle procedures, notifications, views, cursors and the host's own data.
void OfferAppSlots(CTables& tables);

/// Makes the host's menu bar and joins the events of documents to the notifications. Once for each host, before
/// plug-ins are called.
void PrepareApplication();

// The groups that OfferAppSlots puts together, one file each.
void OfferAlertSlots(CTables& tables);
void OfferApplicationSlots(CTables& tables);
void OfferDialogSlots(CTables& tables);
void OfferEventSlots(CTables& tables);
void OfferMenuSlots(CTables& tables);
void OfferProgressSlots(CTables& tables);
void OfferViewSlots(CTables& tables);

}  // namespace openhost
