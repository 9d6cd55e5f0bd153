#pragma once

#include <memory>
#include <vector>

#include "commands/BatchCommand.h"

/// Owns one object per kind of step, and makes their descriptions known. The host keeps pointers into them: must live
/// until the host ends.
class CCommandRegistry {
public:
    /// The log is borrowed and must outlive the registry. `dialogs` gives the steps' dialogs for their settings.
    explicit CCommandRegistry(CLogWriter& log, const DialogSource& dialogs = {});
    ~CCommandRegistry();

    /// Registers every step with the host's command layer. Call once.
    /// Throws CHostException when the host refuses one; the ones before it stay registered.
    void RegisterAll();

    /// The host ends: the callbacks stay callable but answer as if they had failed.
    void ReleaseAll();

    struct Step {
        std::unique_ptr<CBatchCommand> command;
        void (*connect)(CBatchCommand&);  // gives the callbacks of its class to the host
        void (*disconnect)();
    };

private:
    std::vector<Step> m_steps;  // in the order in which they are registered
};
