#include "hostcalls/Views.h"

#include "hostcalls/HostSlot.h"
#include "hostcalls/HostText.h"

AVDoc OpenView(PDDoc document, const std::string& title)
{
    const CHostText titleText = title.empty() ? CHostText(nullptr) : CHostText::FromNarrow(title);
    return HostCall(HOST_SLOT(AcroView, AVDocOpenFromPDDoc), document, titleText.Get());
}

AVDoc ViewOf(PDDoc document) { return HostCall(HOST_SLOT(AcroView, AVDocFromPDDoc), document); }

bool CloseView(AVDoc view, bool noSave)
{
    return HostCall(HOST_SLOT(AcroView, AVDocClose), view, ASBool{noSave}) != 0;
}
