#ifndef FERRULE_OPENHOST_APP_IDLE_PROCEDURES_H
#define FERRULE_OPENHOST_APP_IDLE_PROCEDURES_H

#include <cstdint>
#include <optional>
#include <vector>

#include "hostapi/HostRecords.h"

namespace openhost {

/// Procedures that the event loop calls whenever nothing else is to be done.
class CIdleProcedures {
public:
    /// The period is the least time between the end of one call and the start of the next, in 1/60 s. The first call
    /// comes at once, or after `delayTicks`.
    void Register(AVIdleProc procedure, void* clientData, ASUns32 periodTicks, bool repeating = true,
                  ASUns32 delayTicks = 0);
    /// Takes back one registration with these two values; one that is not there is ignored.
    void Unregister(AVIdleProc procedure, void* clientData);
    void DropOwner(ASExtension owner);

    /// Calls every procedure whose time has come, in order of registration, until somebody wants the host to quit.
    /// A call that is under way is not entered again.
    /// What a procedure raises is reported; it stays registered.
    void CallDue();
    /// When the next procedure is due, in milliseconds of the host's clock; nothing when there is none.
    std::optional<std::uint64_t> NextDue() const;

    bool AnyEverRegistered() const { return m_serial != 0; }
    /// Whether each procedure that is registered has been called at least once.
    bool AllCalled() const;
    std::size_t Count() const { return m_procedures.size(); }

private:
    struct Procedure {
        AVIdleProc procedure;
        void* clientData;
        std::uint64_t periodMs;
        std::uint64_t due;
        ASExtension owner;
        unsigned long long serial;
        bool repeating;
        bool called = false;
        bool running = false;
    };
    void Call(unsigned long long serial);
    Procedure* Find(unsigned long long serial);

    std::vector<Procedure> m_procedures;
    unsigned long long m_serial = 0;
};

}  // namespace openhost

#endif
