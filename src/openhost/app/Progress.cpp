#include "openhost/app/Progress.h"

#include "openhost/app/AppState.h"
#include "openhost/app/Slots.h"
#include "openhost/app/Views.h"
#include "openhost/core/Diagnostics.h"
#include "openhost/values/Cabinet.h"
#include "openhost/values/Text.h"

namespace openhost {

namespace {

OperationProgress& Of(void* clientData) { return Part<Operations>().running[clientData]; }

void Begin(void* clientData) { Of(clientData) = {}; }
void End(void* clientData) { Part<Operations>().running.erase(clientData); }
void SetDuration(ASDuration duration, void* clientData) { Of(clientData).duration = duration; }
void SetValue(ASDuration value, void* clientData) { Of(clientData).value = value; }
ASDuration GetDuration(void* clientData) { return Of(clientData).duration; }
ASDuration GetValue(void* clientData) { return Of(clientData).value; }
void SetText(ASText text, void* clientData) { Of(clientData).text = text ? TextAt(text).Utf8() : std::string(); }

ASBool ShallStop(void*) { return Part<AppWishes>().stop; }

const char* WordFor(ASReportType type)
{
    if (type == kASReportError) return "error: ";
    return type == kASReportWarning ? "warning: " : "note: ";
}

void Report(ASReportType type, ASInt32 errorCode, ASText message, ASText replacement, ASCab moreInfo, void*)
{
    const COwnedText ownedMessage(message), ownedReplacement(replacement);
    const COwnedCab ownedInfo(moreInfo);
    std::string said = message ? ownedMessage->Utf8() : ErrorText(errorCode);
    if (replacement) said += " (" + ownedReplacement->Utf8() + ")";
    Diagnose(WordFor(type) + said);
}

ASCancelProc AppCancelProc(void** clientData)
{
    if (clientData) *clientData = nullptr;
    return HostCancelProc();
}

ASProgressMonitor DocumentMonitor(void** clientData)
{
    if (clientData) *clientData = nullptr;
    return Part<CViews>().All().empty() ? nullptr : HostMonitor();
}

ASReportProc AppReportProc(void** clientData)
{
    if (clientData) *clientData = nullptr;
    return HostReportProc();
}

}  // namespace

ASProgressMonitor HostMonitor()
{
    static ASProgressMonitorRec monitor = {sizeof(ASProgressMonitorRec), &CSlot<&Begin>::Entry,
                                           &CSlot<&End>::Entry,          &CSlot<&SetDuration>::Entry,
                                           &CSlot<&SetValue>::Entry,     &CSlot<&GetDuration>::Entry,
                                           &CSlot<&GetValue>::Entry,     &CSlot<&SetText>::Entry};
    return &monitor;
}

ASCancelProc HostCancelProc() { return &CSlot<&ShallStop>::Entry; }
ASReportProc HostReportProc() { return &CSlot<&Report>::Entry; }

void OfferProgressSlots(CTables& tables)
{
    OFFER(tables, AcroView, AVAppGetCancelProc, AppCancelProc);
    OFFER(tables, AcroView, AVAppGetDocProgressMonitor, DocumentMonitor);
    OFFER(tables, AcroView, AVAppGetReportProc, AppReportProc);
}

}  // namespace openhost
