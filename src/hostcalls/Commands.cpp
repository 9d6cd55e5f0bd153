#include "hostcalls/Commands.h"

#include <unordered_map>

#include "hostapi/HostConstants.h"
#include "hostapi/HostErrors.h"
#include "hostcalls/Cab.h"
#include "hostcalls/HostTables.h"

namespace {

std::unordered_map<AVCommand, std::string>& Errors()
{
    static std::unordered_map<AVCommand, std::string> errors;
    return errors;
}

}  // namespace

void RememberCommandError(AVCommand command, const std::string& text) { Errors()[command] = text; }

std::string CommandError(AVCommand command)
{
    const auto found = Errors().find(command);
    return found != Errors().end() ? found->second : std::string();
}

std::string TakeCommandError(AVCommand command)
{
    std::string text = CommandError(command);
    ForgetCommandError(command);
    return text;
}

void ForgetCommandError(AVCommand command) { Errors().erase(command); }

AVCommandHandler FindCommandHandler(const std::string& name)
{
    return HostCall(HOST_SLOT(AcroView, AVAppFindCommandHandlerByName), Atom(name));
}

namespace {

/// A callback of a handler; null when it has none. The record may end before it: older handlers have shorter ones.
template <class Callback>
Callback CallbackOf(AVCommandHandler handler, Callback AVCommandHandlerRec::*member)
{
    if (!handler) return nullptr;
    const auto* const field = reinterpret_cast<const char*>(&(handler->*member));
    if (field + sizeof(Callback) > reinterpret_cast<const char*>(handler) + handler->size) return nullptr;
    return handler->*member;
}

}  // namespace

bool HasSequenceCallbacks(const std::string& handlerName)
{
    AVCommandHandler handler = FindCommandHandler(handlerName);
    return CallbackOf(handler, &AVCommandHandlerRec::PreflightSequence) != nullptr ||
           CallbackOf(handler, &AVCommandHandlerRec::PostflightSequence) != nullptr;
}

std::optional<CHostCommand> CHostCommand::Create(const std::string& handlerName)
{
    AVCommand command = HostCall(HOST_SLOT(AcroView, AVCommandNew), Atom(handlerName));
    if (!command) return std::nullopt;
    ForgetCommandError(command);  // a command of old may have lived at the same address
    return CHostCommand(command);
}

CHostCommand::CHostCommand(CHostCommand&& other) noexcept : m_command(std::exchange(other.m_command, nullptr)) {}

CHostCommand& CHostCommand::operator=(CHostCommand&& other) noexcept
{
    std::swap(m_command, other.m_command);
    return *this;
}

CHostCommand::~CHostCommand()
{
    if (!m_command) return;
    hostcalls::Quietly([this] {
        ForgetCommandError(m_command);
        HostCall(HOST_SLOT(AcroView, AVCommandDestroy), m_command);
    });
}

template <class Call>
auto CHostCommand::Remembering(Call call)
{
    try {
        return call();
    } catch (const CHostException& exception) {
        RememberCommandError(m_command, exception.Error().text);
        throw;
    }
}

std::string CHostCommand::Name() const
{
    return AtomText(HostCall(HOST_SLOT(AcroView, AVCommandGetName), m_command));
}

AVCommandStatus CHostCommand::Status() const { return HostCall(HOST_SLOT(AcroView, AVCommandGetStatus), m_command); }

AVCommandStatus CHostCommand::SetConfig(CCabView config)
{
    const CCab copy = config.Copy();  // the host's parameter is not read-only
    return Remembering([&] { return HostCall(HOST_SLOT(AcroView, AVCommandSetConfig), m_command, copy.Get()); });
}

AVCommandStatus CHostCommand::SetParams(CCabView params)
{
    const CCab copy = params.Copy();
    return Remembering([&] { return HostCall(HOST_SLOT(AcroView, AVCommandSetParams), m_command, copy.Get()); });
}

AVCommandStatus CHostCommand::SetUIPolicy(AVCommandUIPolicy policy)
{
    CCab config;
    config.PutInt(kAVCommandUIPolicy, policy);
    return SetConfig(config);
}

AVCommandStatus CHostCommand::SetInputs(CCabView inputs)
{
    const CCab copy = inputs.Copy();
    return Remembering([&] { return HostCall(HOST_SLOT(AcroView, AVCommandSetInputs), m_command, copy.Get()); });
}

AVCommandStatus CHostCommand::Reset()
{
    return Remembering([&] { return HostCall(HOST_SLOT(AcroView, AVCommandReset), m_command); });
}

AVCommandStatus CHostCommand::Cancel()
{
    return Remembering([&] { return HostCall(HOST_SLOT(AcroView, AVCommandCancel), m_command); });
}

AVCommandStatus CHostCommand::ShowDialog()
{
    return Remembering([&] { return HostCall(HOST_SLOT(AcroView, AVCommandShowDialog), m_command); });
}

AVCommandStatus CHostCommand::Work()
{
    return Remembering([&] { return HostCall(HOST_SLOT(AcroView, AVCommandWork), m_command); });
}

CCab CHostCommand::Props(const std::vector<std::string>& keys) const
{
    CCab props;
    for (const std::string& key : keys) props.PutNull(key.c_str());
    HostCall(HOST_SLOT(AcroView, AVCommandGetProps), m_command, props.Edit().Get());
    return props;
}

CCab CHostCommand::Params() const
{
    CCab params;
    HostCall(HOST_SLOT(AcroView, AVCommandGetParams), m_command, params.Edit().Get());
    return params;
}

/// Calls one callback of the command's handler; nothing when the handler has none. What the callback throws ends here
/// like a raise, because the handler may be anybody's.
template <class Callback, class... Arguments>
std::optional<AVCommandStatus> CHostCommand::CallHandler(Callback AVCommandHandlerRec::*member,
                                                         Arguments... arguments)
{
    const ASAtom name = HostCall(HOST_SLOT(AcroView, AVCommandGetName), m_command);
    AVCommandHandler handler = HostCall(HOST_SLOT(AcroView, AVAppFindCommandHandlerByName), name);
    Callback callback = CallbackOf(handler, member);
    if (!callback) return std::nullopt;
    return Remembering([&] {
        try {
            return HostCall(callback, m_command, arguments...);
        } catch (const CHostException&) {
            throw;
        } catch (const std::exception& exception) {
            throw CHostException({genErrGeneral, exception.what()});
        } catch (...) {
            throw CHostException({genErrGeneral, HostErrorText(genErrGeneral)});
        }
    });
}

std::optional<AVCommandStatus> CHostCommand::PreflightSequence()
{
    return CallHandler(&AVCommandHandlerRec::PreflightSequence);
}

std::optional<AVCommandStatus> CHostCommand::PreflightFile(PDDoc document)
{
    return CallHandler(&AVCommandHandlerRec::PreflightFile, document);
}

std::optional<AVCommandStatus> CHostCommand::PostflightFile(PDDoc document)
{
    return CallHandler(&AVCommandHandlerRec::PostflightFile, document);
}

std::optional<AVCommandStatus> CHostCommand::PostflightSequence()
{
    return CallHandler(&AVCommandHandlerRec::PostflightSequence);
}

std::string CHostCommand::LastError() const { return CommandError(m_command); }

CCab CommandInputs(PDDoc document, const std::string& baseName, const std::string& extension)
{
    CCab inputs;
    inputs.PutPointer(kAVCommandKeyPDDoc, "PDDoc", document);
    inputs.PutString(kAVCommandKeyBaseFileName, baseName);
    inputs.PutString(kAVCommandKeyOrigExtension, extension);
    return inputs;
}

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
