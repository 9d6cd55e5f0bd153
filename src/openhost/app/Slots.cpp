#include "openhost/app/Slots.h"

#include "openhost/app/Menus.h"
#include "openhost/app/Notifications.h"
#include "openhost/documents/Documents.h"

namespace openhost {

namespace {

/// Documents report what happens to them; plug-ins hear of it as notifications.
void JoinDocumentEvents()
{
    DocumentEvents& events = Part<CDocuments>().events;
    events.didOpen = [](PDDoc document) { Notify(PDDocDidOpenNSEL, document); };
    events.willClose = [](PDDoc document) { Notify(PDDocWillCloseNSEL, document); };
    events.didClose = [](PDDoc document) { Notify(PDDocDidCloseNSEL, document); };
    events.willSave = [](PDDoc document) { Notify(PDDocWillSaveNSEL, document); };
    events.didSave = [](PDDoc document, ASErrorCode error) { Notify(PDDocDidSaveNSEL, document, error); };
}

}  // namespace

void PrepareApplication()
{
    MakeStandardMenus();
    JoinDocumentEvents();
}

void OfferAppSlots(CTables& tables)
{
    OfferAlertSlots(tables);
    OfferApplicationSlots(tables);
    OfferEventSlots(tables);
    OfferMenuSlots(tables);
    OfferProgressSlots(tables);
    OfferViewSlots(tables);
}

}  // namespace openhost
