#include "commands/CommandRegistry.h"

#include <exception>
#include <functional>
#include <ranges>
#include <stdexcept>
#include <string>
#include <type_traits>

#include "commands/BatchCommandPasswordProtect.h"
#include "commands/BatchCommandProcessExternal.h"
#include "commands/BatchCommandSearchAndCopy.h"
#include "commands/CatalogCommands.h"
#include "hostapi/HostConstants.h"
#include "hostapi/HostTypes.h"
#include "hostcalls/Commands.h"
#include "hostcalls/HostFrame.h"
#include "sequence/StepDescription.h"

namespace {

// The guard that every callback of a step enters: the host understands a status or a truth value, nothing else.

// The code pointers through which the host reaches a step: one static set per class, since the host says only which
// command or handler it means.

/// Each callback finds the single object of its class, calls the matching operation and lets nothing out: what the
/// operation throws becomes an in-error status (or a false answer) and the command's last error.
template <class Command>
class CBatchCommandCallbacks {
public:
    /// Puts the wrapped callbacks into the record of `object`, which is the one that they find from now on.
    /// The slot for destruction stays empty: a step keeps nothing of its own for a command.
    /// Throws CHostException when the host raises.
    static void Connect(Command& object)
    {
        s_object = &object;
        AVCommandHandlerRec& record = static_cast<CBatchCommand&>(object).HandlerRecord();
        record.Initialize = Callback(&Initialize);
        record.Terminate = Callback(&Terminate);
        record.RegisterCommands = Callback(&RegisterCommands);
        record.Created = Callback(&Created);
        record.SetParams = Callback(&SetParams);
        record.GetParams = Callback(&GetParams);
        record.GetProps = Callback(&GetProps);
        record.ShowDialog = Callback(&ShowDialog);
        record.Work = Callback(&Work);
        record.Cancel = Callback(&Cancel);
        record.Reset = Callback(&Reset);
    }

    /// From now on the callbacks answer as if the operation had failed.
    static void Disconnect() { s_object = nullptr; }

private:
    static CBatchCommand& Object()
    {
        if (s_object == nullptr || s_object->IsReleased()) throw std::logic_error("The plug-in has been shut down.");
        return *s_object;
    }

    static ASBool HOSTCALL Initialize(ASAtom)
    {
        return GuardCallback(ASBool{0}, [] { return ASBool{Object().Initialize()}; });
    }
    static void HOSTCALL Terminate(ASAtom)
    {
        GuardCallback([] { Object().Terminate(); });
    }
    static void HOSTCALL RegisterCommands(ASAtom)
    {
        GuardCallback([] { Object().RegisterCommands(); });
    }
    static void HOSTCALL Created(AVCommand command)
    {
        GuardStatus(command, [command] { return Object().Created(command), AVCommandStatus{kAVCommandReady}; });
    }
    static AVCommandStatus HOSTCALL SetParams(AVCommand command, ASCab given)
    {
        return GuardStatus(command, [=] { return Object().SetParameters(command, CCabView(given)); });
    }
    static void HOSTCALL GetParams(AVCommand command, ASCab target)
    {
        GuardStatus(command, [=] {
            Object().GetParameters(command, CCabEditor(target));
            return AVCommandStatus{kAVCommandReady};
        });
    }
    static void HOSTCALL GetProps(AVCommand command, ASCab target)
    {
        GuardStatus(command, [=] {
            Object().GetProperties(command, CCabEditor(target));
            return AVCommandStatus{kAVCommandReady};
        });
    }
    static AVCommandStatus HOSTCALL ShowDialog(AVCommand command)
    {
        return GuardStatus(command, [=] { return Object().ShowDialog(command); });
    }
    static AVCommandStatus HOSTCALL Work(AVCommand command)
    {
        return GuardStatus(command, [=] { return Object().Work(command); });
    }
    static AVCommandStatus HOSTCALL Cancel(AVCommand command)
    {
        return GuardStatus(command, [=] { return Object().EndWork(command, kAVCommandCanceled); });
    }
    static AVCommandStatus HOSTCALL Reset(AVCommand command)
    {
        return GuardStatus(command, [=] { return Object().EndWork(command, kAVCommandReady); });
    }

    static inline Command* s_object = nullptr;
};

void Remember(AVCommand command, const std::string& text) noexcept
{
    try {
        RememberCommandError(command, text);
    } catch (...) {  // out of memory: the status alone has to do
    }
}

/// Runs `work`; whatever it throws becomes the in-error status and the command's last error.
AVCommandStatus GuardStatus(AVCommand command, const std::function<AVCommandStatus()>& work) noexcept
{
    try {
        return work();
    } catch (const std::exception& error) {
        Remember(command, error.what());
    } catch (...) {
        Remember(command, "Unknown error.");
    }
    return kAVCommandInError;
}

template <class Command>
std::unique_ptr<CBatchCommand> Make(CLogWriter& log)
{
    if constexpr (std::is_constructible_v<Command, CLogWriter&>) {
        return std::make_unique<Command>(log);
    } else {
        return std::make_unique<Command>();
    }
}

/// One object of each class, in this order.
template <class... Commands>
std::vector<CCommandRegistry::Step> MakeSteps(CLogWriter& log)
{
    std::vector<CCommandRegistry::Step> steps;
    (steps.push_back(
         {Make<Commands>(log),
          [](CBatchCommand& command) { CBatchCommandCallbacks<Commands>::Connect(static_cast<Commands&>(command)); },
          [] { CBatchCommandCallbacks<Commands>::Disconnect(); }}),
     ...);
    return steps;
}

std::vector<CCommandRegistry::Step> AllSteps(CLogWriter& log)
{
    return MakeSteps<CBatchCommandRebuildIndex,     //
                     CBatchCommandPurgeIndex,       //
                     CBatchCommandProcessExternal,  //
                     CBatchCommandPasswordProtect   //
#ifdef FERRULE_SEARCH_AND_COPY
                     ,
                     CBatchCommandSearchAndCopy
#endif
                     >(log);
}

}  // namespace

CCommandRegistry::CCommandRegistry(CLogWriter& log, const DialogSource& dialogs) : m_steps(AllSteps(log))
{
    std::vector<const StepDescription*> descriptions;
    for (const Step& step : m_steps) {
        step.command->UseDialogs(dialogs);
        descriptions.push_back(step.command->Properties().description);
    }
    SetOwnSteps(std::move(descriptions));
}

CCommandRegistry::~CCommandRegistry() { ReleaseAll(); }

void CCommandRegistry::RegisterAll()
{
    for (const Step& step : m_steps) {
        step.connect(*step.command);
        RegisterCommandHandler(step.command->Properties().handlerName, &step.command->HandlerRecord());
    }
}

void CCommandRegistry::ReleaseAll()
{
    for (const Step& step : m_steps | std::views::reverse) {
        step.command->Release();
        step.disconnect();
    }
}
