#include "openhost/commands/Commands.h"

#include <algorithm>

#include "openhost/app/AppState.h"
#include "openhost/app/Views.h"
#include "openhost/commands/Handlers.h"
#include "openhost/core/Host.h"
#include "openhost/documents/Documents.h"

namespace openhost {

namespace {

constexpr char kConfig[] = "Config";
constexpr char kInputs[] = "Inputs";

/// Marks that the handler of a command is being called.
class CCallScope {
public:
    CCallScope(CCommand& command, bool work)
        : m_command(command), m_formerWorking(command.working), m_active(command.owner)
    {
        ++m_command.calls;
        m_command.working = work || m_command.working;
    }
    ~CCallScope()
    {
        --m_command.calls;
        m_command.working = m_formerWorking;
    }
    CCallScope(const CCallScope&) = delete;
    CCallScope& operator=(const CCallScope&) = delete;

private:
    CCommand& m_command;
    bool m_formerWorking;
    CActiveExtensionScope m_active;
};

AVCommand HandleOf(const CCommand& command) { return CHandles<CCommand, AVCommand>::HandleOf(command); }

/// Calls the handler for this command; what it raises puts the command in error and goes on.
template <class Procedure, class... A>
auto Call(CCommand& command, bool work, Procedure procedure, A... arguments)
{
    const CCallScope scope(command, work);
    try {
        return CallPlugIn(procedure, HandleOf(command), arguments...);
    } catch (const CHostRaise&) {
        command.status = kAVCommandInError;
        throw;
    }
}

bool IsResult(AVCommandStatus status) { return status >= kAVCommandWorking && status <= kAVCommandPaused; }

bool MayWork(AVCommandStatus status)
{
    return status == kAVCommandReady || status == kAVCommandWorking || status == kAVCommandPaused;
}

void ReplaceContent(CCabinet& target, const CCabinet& source)
{
    if (&target == &source) return;
    target.MakeEmpty();
    target.CopyFrom(source);
}

}  // namespace

// ---- life ----

AVCommand CCommands::New(ASAtom name)
{
    const AVCommandHandler handler = Part<CCommandHandlers>().Find(name);
    if (!handler) return nullptr;
    auto made = std::make_unique<CCommand>();
    made->name = name;
    made->handler = handler;
    made->owner = Part<CCommandHandlers>().OwnerOf(name);
    made->cabs = NewCab();
    const AVCommand handle = m_commands.Add(std::move(made));
    const auto created = MemberOf(handler, &AVCommandHandlerRec::Created);
    if (!created) return handle;
    try {
        Call(At(handle), false, created);
    } catch (const CHostRaise&) {
        DestroyNow(handle);
        throw;
    }
    return handle;
}

void CCommands::Destroy(AVCommand handle)
{
    const CCommand& command = At(handle);
    Require(!command.global, "a global command belongs to the host");
    Require(command.calls == 0, "a command cannot be destroyed while its handler is being called");
    DestroyNow(handle);
}

void CCommands::DestroyNow(AVCommand handle)
{
    CCommand& command = At(handle);
    if (const auto destroy = MemberOf(command.handler, &AVCommandHandlerRec::Destroy)) {
        try {
            Call(command, false, destroy);
        } catch (const CHostRaise& raise) {
            Diagnose("the command handler \"" + AtomText(command.name) +
                     "\" raised an error in Destroy: " + raise.Message());
        }
    }
    std::erase(m_global, handle);
    const auto gone = m_commands.Take(handle);
    if (gone) DestroyCab(gone->cabs);
}

// ---- cabs ----

CCabinet* CCommands::Cab(AVCommand handle, std::string_view cabName, bool create)
{
    CCabinet& cabs = CabAt(At(handle).cabs);
    CCabinet* const present = cabs.GetCab(cabName);
    return present || !create ? present : &cabs.PutNewCab(cabName);
}

const CCabinet* CCommands::Cab(const CCommand& command, std::string_view cabName) const
{
    return CabAt(command.cabs).GetCab(cabName);
}

void CCommands::PutCab(AVCommand handle, std::string_view cabName, ASCab cab)
{
    CCabinet& cabs = CabAt(At(handle).cabs);
    if (cab)
        cabs.Put(cabName, &CabAt(cab));
    else
        cabs.Remove(cabName);
}

AVCommandStatus CCommands::SetParams(AVCommand handle, ASCab params)
{
    CCommand& command = At(handle);
    const CCabinet& given = CabAt(params);
    if (command.status != kAVCommandReady) return command.status;
    if (const auto set = MemberOf(command.handler, &AVCommandHandlerRec::SetParams)) {
        const AVCommandStatus answer = Call(command, false, set, params);
        if (answer == kAVCommandInError) command.status = answer;
    } else {
        ReplaceContent(*Cab(handle, kAVCommandKeyParams, true), given);
    }
    return command.status;
}

void CCommands::GetParams(AVCommand handle, ASCab params)
{
    CCommand& command = At(handle);
    CCabinet& wanted = CabAt(params);
    if (const auto get = MemberOf(command.handler, &AVCommandHandlerRec::GetParams)) {
        Call(command, false, get, params);
        return;
    }
    const CCabinet* const present = Cab(command, kAVCommandKeyParams);
    if (present)
        ReplaceContent(wanted, *present);
    else
        wanted.MakeEmpty();
}

AVCommandStatus CCommands::SetConfig(AVCommand handle, const CCabinet& config)
{
    CCommand& command = At(handle);
    if (command.status != kAVCommandReady) return command.status;
    CCabinet& present = *Cab(handle, kConfig, true);
    config.WalkConst([&](const std::string& key, const CabValue& value) {
        if (std::holds_alternative<CabNull>(value))
            present.Remove(key);
        else
            present.Put(key, CopyValue(value));
        return true;
    });
    return command.status;
}

AVCommandStatus CCommands::SetInputs(AVCommand handle, const CCabinet& inputs)
{
    CCommand& command = At(handle);
    if (command.status == kAVCommandReady) ReplaceContent(*Cab(handle, kInputs, true), inputs);
    return command.status;
}

void CCommands::GetProps(AVCommand handle, ASCab props)
{
    CCommand& command = At(handle);
    static_cast<void>(CabAt(props));
    if (const auto get = MemberOf(command.handler, &AVCommandHandlerRec::GetProps)) Call(command, false, get, props);
}

// ---- state ----

AVCommandStatus CCommands::ShowDialog(AVCommand handle)
{
    CCommand& command = At(handle);
    const auto show = MemberOf(command.handler, &AVCommandHandlerRec::ShowDialog);
    if (command.status != kAVCommandReady || !show) return command.status;
    const AVCommandStatus answer = Call(command, false, show);
    if (answer == kAVCommandCanceled || answer == kAVCommandInError) command.status = answer;
    return command.status;
}

AVCommandStatus CCommands::Work(AVCommand handle)
{
    CCommand& command = At(handle);
    if (command.working || !MayWork(command.status)) return command.status;
    const auto work = MemberOf(command.handler, &AVCommandHandlerRec::Work);
    if (!work) return command.status = kAVCommandNotExecuted;
    command.status = kAVCommandWorking;
    const AVCommandStatus answer = Call(command, true, work);
    command.status = IsResult(answer) ? answer : static_cast<AVCommandStatus>(kAVCommandInError);
    return command.status;
}

AVCommandStatus CCommands::Cancel(AVCommand handle)
{
    CCommand& command = At(handle);
    if (!MayWork(command.status) && command.status != kAVCommandInError) return command.status;
    if (const auto cancel = MemberOf(command.handler, &AVCommandHandlerRec::Cancel)) Call(command, false, cancel);
    if (command.status != kAVCommandInError) command.status = kAVCommandCanceled;
    return command.status;
}

AVCommandStatus CCommands::Reset(AVCommand handle)
{
    CCommand& command = At(handle);
    if (command.working) return command.status;
    AVCommandStatus answer = kAVCommandReady;
    if (const auto reset = MemberOf(command.handler, &AVCommandHandlerRec::Reset))
        answer = Call(command, false, reset);
    const bool stillInError = answer == kAVCommandInError;
    command.status = static_cast<AVCommandStatus>(stillInError ? kAVCommandInError : kAVCommandReady);
    return command.status;
}

AVCommandStatus CCommands::Execute(AVCommand handle)
{
    if (At(handle).status != kAVCommandReady) Reset(handle);
    if (!Document(handle)) {
        if (const AVDoc front = Part<CViews>().Front()) {
            CCabinet& inputs = *Cab(handle, kInputs, true);
            inputs.PutPointer(kAVCommandKeyPDDoc, "PDDoc", Part<CViews>().At(front).document);
            inputs.PutPointer(kAVCommandKeyAVDoc, "AVDoc", front);
        }
    }
    AVCommandStatus status = Work(handle);
    while (status == kAVCommandWorking) status = Part<AppWishes>().stop ? Cancel(handle) : Work(handle);
    return status;
}

// ---- what a command knows ----

AVCommandUIPolicy CCommands::Policy(AVCommand handle) const
{
    const CCabinet* const config = Cab(At(handle), kConfig);
    const int asked = config ? config->GetInt(kAVCommandUIPolicy, kAVCommandUIInteractive) : kAVCommandUIInteractive;
    return static_cast<AVCommandUIPolicy>(std::clamp<int>(asked, kAVCommandUIErrorsOnly, kAVCommandUISilent));
}

PDDoc CCommands::Document(AVCommand handle) const
{
    const CCabinet* const inputs = Cab(At(handle), kInputs);
    void* const document = inputs ? inputs->GetPointer(kAVCommandKeyPDDoc, "PDDoc") : nullptr;
    return Part<CDocuments>().Known(document) ? static_cast<PDDoc>(document) : nullptr;
}

AVDoc CCommands::View(AVCommand handle) const
{
    const CCabinet* const inputs = Cab(At(handle), kInputs);
    void* const given = inputs ? inputs->GetPointer(kAVCommandKeyAVDoc, "AVDoc") : nullptr;
    const auto& views = Part<CViews>().All();
    if (given && std::find(views.begin(), views.end(), given) != views.end()) return static_cast<AVDoc>(given);
    const PDDoc document = Document(handle);
    return document ? Part<CViews>().Of(document) : nullptr;
}

// ---- global commands ----

void CCommands::MakeGlobal(AVCommand handle)
{
    CCommand& command = At(handle);
    if (command.global) return;
    command.global = true;
    m_global.push_back(handle);
}

void CCommands::MakePrivate(AVCommand handle)
{
    At(handle).global = false;
    std::erase(m_global, handle);
}

AVCommand CCommands::FindGlobal(ASAtom name) const
{
    for (AVCommand command : m_global)
        if (At(command).name == name) return command;
    return nullptr;
}

void CCommands::DestroyThose(const std::vector<AVCommand>& commands)
{
    for (AVCommand command : commands)
        if (Known(command)) DestroyNow(command);
}

void CCommands::DestroyAll()
{
    std::vector<AVCommand> all;
    m_commands.ForEach([&](const CCommand& command) { all.push_back(HandleOf(command)); });
    DestroyThose(all);
}

void CCommands::DropOwner(ASExtension owner)
{
    std::vector<AVCommand> its;
    m_commands.ForEach([&](const CCommand& command) {
        if (command.owner == owner) its.push_back(HandleOf(command));
    });
    DestroyThose(its);
}

}  // namespace openhost
