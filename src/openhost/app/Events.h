#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "hostapi/HostRecords.h"
#include "hostapi/HostTypes.h"
#include "openhost/app/AppState.h"
#include "openhost/core/Raise.h"

namespace openhost {

/// Procedures that plug-ins want to have called on events.
class CNotifications {
public:
    /// Every registration is called on its own, equal ones too.
    void Register(NSelector selector, ASExtension owner, void* procedure, void* clientData);
    /// Takes back one registration with these four values; one that is not there is ignored.
    void Unregister(NSelector selector, ASExtension owner, void* procedure, void* clientData);
    void DropOwner(ASExtension owner);

    /// Calls everybody registered for the selector, in order of registration. Registrations that are made meanwhile
    /// wait for the next event, those that are taken back meanwhile are not called. What a procedure raises is
    /// reported and does not reach the others: the event has happened whatever they think of it.
    template <class... A>
    void Send(NSelector selector, A... arguments)
    {
        ForEach(selector, [&](void* procedure, void* clientData) {
            CallPlugIn(reinterpret_cast<void(HOSTCALL*)(A..., void*)>(procedure), arguments..., clientData);
        });
    }

private:
    struct Registration {
        NSelector selector;
        ASExtension owner;         // as the plug-in says
        ASExtension registeredBy;  // whose code registered it
        void* procedure;
        void* clientData;
        unsigned long long serial;
    };
    void ForEach(NSelector selector, const std::function<void(void*, void*)>& call);

    std::vector<Registration> m_registrations;
    unsigned long long m_serial = 0;
};

template <class... A>
void Notify(NSelector selector, A... arguments)
{
    Part<CNotifications>().Send(selector, arguments...);
}

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
