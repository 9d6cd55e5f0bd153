#include "openhost/app/Alerts.h"
#include "openhost/commands/Commands.h"
#include "openhost/commands/Handlers.h"
#include "openhost/commands/Slots.h"

namespace openhost {

namespace {

CCommands& Commands() { return Part<CCommands>(); }

AVCommand New(ASAtom name) { return Commands().New(name); }
void Destroy(AVCommand command) { Commands().Destroy(command); }
ASAtom Name(AVCommand command) { return Commands().At(command).name; }
AVCommandStatus Status(AVCommand command) { return Commands().At(command).status; }

ASCab GetCab(AVCommand command, const char* cabName, ASBool create)
{
    Require(cabName != nullptr, "a command's cab needs a name");
    const CCabinet* const cab = Commands().Cab(command, cabName, create != 0);
    return cab ? CabHandle(*cab) : nullptr;
}

void PutCab(AVCommand command, const char* cabName, ASCab cab)
{
    Require(cabName != nullptr, "a command's cab needs a name");
    Commands().PutCab(command, cabName, cab);
}

/// Puts copies of one of the command's cabs into the caller's cab.
void CopyOut(AVCommand command, const char* cabName, ASCab target)
{
    CCabinet& wanted = CabAt(target);
    if (const CCabinet* const cab = Commands().Cab(command, cabName, false)) wanted.CopyFrom(*cab);
}

AVCommandStatus SetParams(AVCommand command, ASCab params) { return Commands().SetParams(command, params); }
void GetParams(AVCommand command, ASCab params) { Commands().GetParams(command, params); }
AVCommandStatus SetConfig(AVCommand command, ASCab config) { return Commands().SetConfig(command, CabAt(config)); }
void GetConfig(AVCommand command, ASCab config) { CopyOut(command, "Config", config); }
AVCommandStatus SetInputs(AVCommand command, ASCab inputs) { return Commands().SetInputs(command, CabAt(inputs)); }
void GetInputs(AVCommand command, ASCab inputs) { CopyOut(command, "Inputs", inputs); }
void GetProps(AVCommand command, ASCab props) { Commands().GetProps(command, props); }
AVCommandStatus ShowDialog(AVCommand command) { return Commands().ShowDialog(command); }
AVCommandStatus Work(AVCommand command) { return Commands().Work(command); }
AVCommandStatus Cancel(AVCommand command) { return Commands().Cancel(command); }
AVCommandStatus Reset(AVCommand command) { return Commands().Reset(command); }
AVCommandStatus Execute(AVCommand command) { return Commands().Execute(command); }
AVCommandUIPolicy Policy(AVCommand command) { return Commands().Policy(command); }
PDDoc Document(AVCommand command) { return Commands().Document(command); }
AVDoc View(AVCommand command) { return Commands().View(command); }

// The three below are called with the command as their client data.

ASReportProc ReportProc(AVCommand command)
{
    static_cast<void>(Commands().At(command));
    return HostReportProc();
}

ASProgressMonitor Monitor(AVCommand command)
{
    static_cast<void>(Commands().At(command));
    return HostMonitor();
}

ASCancelProc CancelProc(AVCommand command)
{
    static_cast<void>(Commands().At(command));
    return HostCancelProc();
}

void RegisterHandler(ASAtom name, AVCommandHandler handler) { Part<CCommandHandlers>().Register(name, handler); }
AVCommandHandler FindHandler(ASAtom name) { return Part<CCommandHandlers>().Find(name); }
void RegisterGlobal(AVCommand command) { Commands().MakeGlobal(command); }
void UnregisterGlobal(AVCommand command) { Commands().MakePrivate(command); }
AVCommand FindGlobal(ASAtom name) { return Commands().FindGlobal(name); }

void OfferDataSlots(CTables& tables)
{
    OFFER(tables, AcroView, AVCommandGetCab, GetCab);
    OFFER(tables, AcroView, AVCommandPutCab, PutCab);
    OFFER(tables, AcroView, AVCommandSetParams, SetParams);
    OFFER(tables, AcroView, AVCommandGetParams, GetParams);
    OFFER(tables, AcroView, AVCommandSetConfig, SetConfig);
    OFFER(tables, AcroView, AVCommandGetConfig, GetConfig);
    OFFER(tables, AcroView, AVCommandSetInputs, SetInputs);
    OFFER(tables, AcroView, AVCommandGetInputs, GetInputs);
    OFFER(tables, AcroView, AVCommandGetProps, GetProps);
    OFFER(tables, AcroView, AVCommandGetUIPolicy, Policy);
    OFFER(tables, AcroView, AVCommandGetPDDoc, Document);
    OFFER(tables, AcroView, AVCommandGetAVDoc, View);
    OFFER(tables, AcroView, AVCommandGetReportProc, ReportProc);
    OFFER(tables, AcroView, AVCommandGetProgressMonitor, Monitor);
    OFFER(tables, AcroView, AVCommandGetCancelProc, CancelProc);
}

}  // namespace

void OfferCommandsSlots(CTables& tables)
{
    OFFER(tables, AcroView, AVCommandNew, New);
    OFFER(tables, AcroView, AVCommandDestroy, Destroy);
    OFFER(tables, AcroView, AVCommandGetName, Name);
    OFFER(tables, AcroView, AVCommandGetStatus, Status);
    OFFER(tables, AcroView, AVCommandShowDialog, ShowDialog);
    OFFER(tables, AcroView, AVCommandWork, Work);
    OFFER(tables, AcroView, AVCommandCancel, Cancel);
    OFFER(tables, AcroView, AVCommandReset, Reset);
    OFFER(tables, AcroView, AVCommandExecute, Execute);
    OFFER(tables, AcroView, AVAppRegisterCommandHandler, RegisterHandler);
    OFFER(tables, AcroView, AVAppFindCommandHandlerByName, FindHandler);
    OFFER(tables, AcroView, AVAppRegisterGlobalCommand, RegisterGlobal);
    OFFER(tables, AcroView, AVAppUnregisterGlobalCommand, UnregisterGlobal);
    OFFER(tables, AcroView, AVAppFindGlobalCommandByName, FindGlobal);
    OfferDataSlots(tables);
}

}  // namespace openhost
