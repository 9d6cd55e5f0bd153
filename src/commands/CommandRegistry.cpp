#include "commands/CommandRegistry.h"

#include <ranges>
#include <type_traits>

#include "commands/BatchCommandCallbacks.h"
#include "commands/BatchCommandPasswordProtect.h"
#include "commands/BatchCommandProcessExternal.h"
#include "commands/CatalogCommands.h"
#include "hostcalls/Commands.h"
#include "sequence/StepDescription.h"

namespace {

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
                     CBatchCommandPasswordProtect>(log);
}

}  // namespace

CCommandRegistry::CCommandRegistry(CLogWriter& log) : m_steps(AllSteps(log))
{
    std::vector<const StepDescription*> descriptions;
    for (const Step& step : m_steps) descriptions.push_back(step.command->Properties().description);
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
