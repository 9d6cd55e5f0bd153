// All steps that the plug-in offers to the host.
#pragma once

#include "commands/BatchCommandPasswordProtect.h"
#include "commands/BatchCommandProcessExternal.h"
#include "commands/BatchCommandPurgeIndex.h"
#include "commands/BatchCommandRebuildIndex.h"

/// Owns one object per kind of step. The host keeps pointers into them: must live until the host ends.
class CCommandRegistry {
public:
    /// The log is borrowed and must outlive the registry.
    explicit CCommandRegistry(CLogWriter& log);
    ~CCommandRegistry();

    /// Registers every step with the host's command layer, in the order of the members. Call once.
    /// Throws CHostException when the host refuses one; the ones before it stay registered.
    void RegisterAll();

    /// The host ends: the callbacks stay callable but answer as if they had failed.
    void ReleaseAll();

private:
    CBatchCommandRebuildIndex m_rebuildIndex;
    CBatchCommandPurgeIndex m_purgeIndex;
    CBatchCommandProcessExternal m_processExternal;
    CBatchCommandPasswordProtect m_passwordProtect;
};
