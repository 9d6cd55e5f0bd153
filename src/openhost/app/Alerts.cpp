#include "openhost/app/Alerts.h"

#include "openhost/app/Slots.h"
#include "openhost/core/Diagnostics.h"
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

void SayChecked(const char* message)
{
    Require(message != nullptr, "an alert needs a message");
    SayAlert(message);
}

ASInt32 Alert(ASInt32, const char* message, const char*, const char*, const char*, ASBool)
{
    SayChecked(message);
    return kFirstButton;
}

void Note(const char* message) { SayChecked(message); }

ASBool Confirm(const char* message)
{
    SayChecked(message);
    return 0;
}

ASInt32 DocAlert(AVDoc, AVIconType, const char* message, const char*, const char*, const char*, ASBool)
{
    SayChecked(message);
    return kFirstButton;
}

void DocNote(AVDoc, const char* message) { SayChecked(message); }
ASBool DocConfirm(AVDoc, const char* message) { return Confirm(message); }

/// "Yes" is the first button; nobody said yes.
ASInt32 DocYesNo(AVDoc, AVIconType, const char* message, ASBool, ASBool)
{
    SayChecked(message);
    return kSecondButton;
}

ASInt32 AlertWithParams(AVAlertParams params)
{
    Require(params && params->size >= offsetof(AVAlertParamsRec, beep), "unusable description of an alert");
    SayAlert(params->message ? TextAt(params->message).HostBytes() : std::string());
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

}  // namespace openhost
