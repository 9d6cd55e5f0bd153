#include "openhost/app/Slots.h"

#include <cstring>
#include <map>
#include <memory>

#include "openhost/app/AppState.h"
#include "openhost/app/Events.h"
#include "openhost/app/Menus.h"
#include "openhost/core/Atoms.h"
#include "openhost/core/Host.h"
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
    OfferDialogSlots(tables);
    OfferEventSlots(tables);
    OfferMenuSlots(tables);
    OfferProgressSlots(tables);
    OfferViewSlots(tables);
}

namespace {

constexpr char kLanguage[] = "ENU";
constexpr ASInt32 kArrowCursor = 1110;
constexpr ASInt32 kWaitCursor = 1112;

struct CursorState {
    std::map<ASInt32, ASInt32> byNumber;  // a map keeps its elements in place: their addresses are the handles
    AVCursor shown = nullptr;
};

struct ModalState {
    int open = 0;
};

void Version(AVTVersionNumPart* major, AVTVersionNumPart* minor)
{
    if (major) *major = static_cast<AVTVersionNumPart>(Part<AppSettings>().majorVersion);
    if (minor) *minor = 0;
}

void VersionEx(AVVersionParams params)
{
    Require(params && params->size >= sizeof(AVVersionParamsRec), "unusable record for the version");
    params->major = static_cast<ASUns32>(Part<AppSettings>().majorVersion);
    params->minor = params->minor_minor = params->minor_minor_minor = 0;
}

void Language(char* buffer)
{
    Require(buffer != nullptr, "no buffer for the language");
    std::memcpy(buffer, kLanguage, sizeof(kLanguage));
}

ASAtom Name() { return AtomFromText(kHostName); }

// ---- cursors ----

AVCursor StandardCursor(ASInt32 number)
{
    auto& entry = *Part<CursorState>().byNumber.try_emplace(number, number).first;
    return reinterpret_cast<AVCursor>(&entry.second);
}

void SetCursor(AVCursor cursor) { Part<CursorState>().shown = cursor; }

AVCursor CurrentCursor()
{
    auto& state = Part<CursorState>();
    return state.shown ? state.shown : StandardCursor(kArrowCursor);
}

void SetWaitCursor(ASBool on, ASUns32) { SetCursor(StandardCursor(on ? kWaitCursor : kArrowCursor)); }

// ---- modal windows ----

void BeginModal(AVWindow) { ++Part<ModalState>().open; }
ASBool ModalIsOpen() { return Part<ModalState>().open > 0; }

void EndModal()
{
    int& open = Part<ModalState>().open;
    if (open > 0)
        --open;
    else
        Diagnose("a plug-in ended a modal window that it had not begun");
}

// ---- preferences: the host keeps none, so every question is answered by its default ----

ASBool PrefBool(const char*, const char*, ASBool fallback) { return fallback; }
ASInt32 PrefInt(const char*, const char*, ASInt32 fallback) { return fallback; }
char* PrefString(const char*, const char*) { return nullptr; }
ASCab PrefCab(const char*, const char*) { return nullptr; }

void OfferStateSlots(CTables& tables)
{
    OFFER(tables, AcroView, AVSysGetStandardCursor, StandardCursor);
    OFFER(tables, AcroView, AVSysSetCursor, SetCursor);
    OFFER(tables, AcroView, AVSysGetCursor, CurrentCursor);
    OFFER(tables, AcroView, AVSysSetWaitCursor, SetWaitCursor);
    OFFER(tables, AcroView, AVAppBeginModal, BeginModal);
    OFFER(tables, AcroView, AVAppModalWindowIsOpen, ModalIsOpen);
    OFFER(tables, AcroView, AVAppEndModal, EndModal);
}

}  // namespace

void OfferApplicationSlots(CTables& tables)
{
    OFFER(tables, AcroView, AVAppGetVersion, Version);
    OFFER(tables, AcroView, AVAppGetVersionEx, VersionEx);
    OFFER(tables, AcroView, AVAppGetLanguage, Language);
    OFFER(tables, AcroView, AVAppGetName, Name);
    OFFER(tables, AcroView, AVAppGetPrefBool, PrefBool);
    OFFER(tables, AcroView, AVAppGetPrefInt, PrefInt);
    OFFER(tables, AcroView, AVAppGetPrefString, PrefString);
    OFFER(tables, AcroView, AVAppGetPrefCab, PrefCab);
    OfferStateSlots(tables);
}

}  // namespace openhost
