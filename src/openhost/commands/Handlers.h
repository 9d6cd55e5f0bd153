#pragma once

#include <vector>

#include "hostapi/HostRecords.h"
#include "openhost/core/Atoms.h"
#include "openhost/core/Memory.h"
#include "openhost/core/Raise.h"

namespace openhost {

/// All command handlers by name. The records belong to those who registered them.
class CCommandHandlers {
public:
    /// Registering a name again replaces its handler; commands made before keep theirs. Before Start nothing of the
    /// handler is called; after it, the handler starts at once.
    void Register(ASAtom name, AVCommandHandler handler);
    /// Null when there is none.
    AVCommandHandler Find(ASAtom name) const;
    ASExtension OwnerOf(ASAtom name) const;

    /// Starts each handler in order of registration: Initialize, and when that agrees RegisterCommands. One that
    /// declines or raises is removed.
    void Start();
    /// Calls Terminate of each handler that was started. No handler is known afterwards.
    void Terminate();
    /// Terminates and removes the handlers of one plug-in.
    void DropOwner(ASExtension owner);

private:
    struct Registered {
        ASAtom name;
        AVCommandHandler handler;
        ASExtension owner;
        bool started;
    };
    const Registered* FindEntry(ASAtom name) const;
    void StartOne(ASAtom name);
    void Remove(ASAtom name);

    std::vector<Registered> m_handlers;
    bool m_running = false;
};

}  // namespace openhost
