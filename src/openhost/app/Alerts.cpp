#include "openhost/app/Alerts.h"

#include "openhost/app/AppState.h"
#include "openhost/app/HostWindow.h"
#include "openhost/app/Slots.h"
#include "openhost/app/Views.h"
#include "openhost/core/Host.h"
#include "openhost/values/Cabinet.h"
#include "openhost/values/Text.h"

namespace openhost {

void SayAlert(std::string_view text)
{
    std::string line = "alert: ";
    for (const char character : text) line += character == '\n' || character == '\r' ? ' ' : character;
    Diagnose(line);
}

namespace {

constexpr ASInt32 kSecondButton = 2;

/// Says it, and asks the user of a host with a window. Without one `otherwise` is the answer.
bool Ask(AlertKind kind, const char* message, bool otherwise)
{
    Require(message != nullptr, "an alert needs a message");
    SayAlert(message);
    CHostWindow* const window = Part<WindowPlace>().window;
    if (!window) return otherwise;
    CHostText text;
    text.SetHostBytes(message);
    return window->Alert(kind, text.Utf8());
}

/// The second button of two is the one that does not confirm.
ASInt32 AskButtons(const char* message, const char* second)
{
    const bool two = second != nullptr && *second != 0;
    return Ask(two ? AlertKind::OkCancel : AlertKind::Note, message, true) ? kFirstButton : kSecondButton;
}

ASInt32 Alert(ASInt32, const char* message, const char*, const char* second, const char*, ASBool)
{
    return AskButtons(message, second);
}

void Note(const char* message) { Ask(AlertKind::Note, message, true); }

ASBool Confirm(const char* message) { return Ask(AlertKind::OkCancel, message, false); }

ASInt32 DocAlert(AVDoc, AVIconType, const char* message, const char*, const char* second, const char*, ASBool)
{
    return AskButtons(message, second);
}

void DocNote(AVDoc, const char* message) { Note(message); }
ASBool DocConfirm(AVDoc, const char* message) { return Confirm(message); }

/// "Yes" is the first button; where nobody is asked, nobody said yes.
ASInt32 DocYesNo(AVDoc, AVIconType, const char* message, ASBool, ASBool)
{
    return Ask(AlertKind::YesNo, message, false) ? kFirstButton : kSecondButton;
}

ASInt32 AlertWithParams(AVAlertParams params)
{
    Require(params && params->size >= offsetof(AVAlertParamsRec, beep), "unusable description of an alert");
    Ask(AlertKind::Note, (params->message ? TextAt(params->message).HostBytes() : std::string()).c_str(), true);
    return kFirstButton;
}

void SetAnswer(const char* name, ASInt32 answer)
{
    Require(name != nullptr, "an answer is remembered under a name");
    Part<AlertAnswers>().byName[name] = answer;
}

ASInt32 Answer(const char* name)
{
    Require(name != nullptr, "an answer is remembered under a name");
    const auto& answers = Part<AlertAnswers>().byName;
    const auto found = answers.find(name);
    return found == answers.end() ? 0 : found->second;
}

void ResetAnswers() { Part<AlertAnswers>().byName.clear(); }

}  // namespace

void OfferAlertSlots(CTables& tables)
{
    OFFER(tables, AcroView, AVAlert, Alert);
    OFFER(tables, AcroView, AVAlertNote, Note);
    OFFER(tables, AcroView, AVAlertConfirm, Confirm);
    OFFER(tables, AcroView, AVDocAlert, DocAlert);
    OFFER(tables, AcroView, AVDocAlertNote, DocNote);
    OFFER(tables, AcroView, AVDocAlertConfirm, DocConfirm);
    OFFER(tables, AcroView, AVDocAlertYesNo, DocYesNo);
    OFFER(tables, AcroView, AVAlertWithParams, AlertWithParams);
    OFFER(tables, AcroView, AVAlertSetPref, SetAnswer);
    OFFER(tables, AcroView, AVAlertGetPref, Answer);
    OFFER(tables, AcroView, AVAlertResetPrefs, ResetAnswers);
}

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
