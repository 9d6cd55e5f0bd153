#include "hostcalls/HandlerRegistration.h"

#include "hostapi/HostConstants.h"
#include "hostcalls/Atoms.h"
#include "hostcalls/HostSlot.h"

void RegisterCommandHandler(const std::string& name, AVCommandHandler handler)
{
    HostCall(HOST_SLOT(AcroView, AVAppRegisterCommandHandler), Atom(name), handler);
}

bool RegisterGlobalCommand(const std::string& handlerName)
{
    AVCommand command = HostCall(HOST_SLOT(AcroView, AVCommandNew), Atom(handlerName));
    if (!command) return false;
    try {
        HostCall(HOST_SLOT(AcroView, AVAppRegisterGlobalCommand), command);
    } catch (...) {  // not the host's yet
        hostcalls::Quietly([&] { HostCall(HOST_SLOT(AcroView, AVCommandDestroy), command); });
        throw;
    }
    return true;
}

CCabEditor CommandCab(AVCommand command, const char* name, bool create)
{
    return CCabEditor(HostCall(HOST_SLOT(AcroView, AVCommandGetCab), command, name, ASBool{create}));
}

void PutCommandCab(AVCommand command, const char* name, CCab&& cab)
{
    HostCall(HOST_SLOT(AcroView, AVCommandPutCab), command, name, cab.Edit().Get());
    cab.Release();
}

PDDoc CommandDocument(AVCommand command) { return HostCall(HOST_SLOT(AcroView, AVCommandGetPDDoc), command); }

std::string CommandInputName(AVCommand command)
{
    CCab inputs;
    HostCall(HOST_SLOT(AcroView, AVCommandGetInputs), command, inputs.Edit().Get());
    const std::string base = inputs.StringOrText(kAVCommandKeyBaseFileName).value_or("");
    const std::string extension = inputs.StringOrText(kAVCommandKeyOrigExtension).value_or("");
    return extension.empty() ? base : base + '.' + extension;
}

std::string CommandHandlerName(AVCommand command)
{
    return AtomText(HostCall(HOST_SLOT(AcroView, AVCommandGetName), command));
}

AVCommandUIPolicy CommandUIPolicy(AVCommand command)
{
    return HostCall(HOST_SLOT(AcroView, AVCommandGetUIPolicy), command);
}
