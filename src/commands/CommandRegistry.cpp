#include "commands/CommandRegistry.h"

#include "commands/BatchCommandCallbacks.h"
#include "hostcalls/HandlerRegistration.h"

namespace {

template <class Command>
void Register(Command& command)
{
    CBatchCommandCallbacks<Command>::Connect(command);
    RegisterCommandHandler(command.Properties().handlerName, &command.HandlerRecord());
}

template <class Command>
void Release(Command& command)
{
    command.Release();
    CBatchCommandCallbacks<Command>::Disconnect();
}

}  // namespace

CCommandRegistry::CCommandRegistry(CLogWriter& log) : m_rebuildIndex(log), m_purgeIndex(log), m_processExternal(log)
{
}

CCommandRegistry::~CCommandRegistry() { ReleaseAll(); }

void CCommandRegistry::RegisterAll()
{
    Register(m_rebuildIndex);
    Register(m_purgeIndex);
    Register(m_processExternal);
    Register(m_passwordProtect);
}

void CCommandRegistry::ReleaseAll()
{
    Release(m_passwordProtect);
    Release(m_processExternal);
    Release(m_purgeIndex);
    Release(m_rebuildIndex);
}
