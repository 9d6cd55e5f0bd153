#ifndef FERRULE_OPENHOST_APP_NOTIFICATIONS_H
#define FERRULE_OPENHOST_APP_NOTIFICATIONS_H

#include <functional>
#include <vector>

#include "hostapi/HostTypes.h"
#include "openhost/app/AppState.h"
#include "openhost/core/Frames.h"

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

}  // namespace openhost

#endif
