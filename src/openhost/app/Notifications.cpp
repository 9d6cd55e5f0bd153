#include "openhost/app/Notifications.h"

#include <algorithm>
#include <string>

#include "openhost/core/Diagnostics.h"

namespace openhost {

void CNotifications::Register(NSelector selector, ASExtension owner, void* procedure, void* clientData)
{
    Require(procedure != nullptr, "a notification needs a procedure");
    m_registrations.push_back({selector, owner, Part<ActiveExtension>().current, procedure, clientData, m_serial++});
}

void CNotifications::Unregister(NSelector selector, ASExtension owner, void* procedure, void* clientData)
{
    const auto found = std::find_if(m_registrations.begin(), m_registrations.end(), [&](const Registration& one) {
        return one.selector == selector && one.owner == owner && one.procedure == procedure &&
               one.clientData == clientData;
    });
    if (found != m_registrations.end()) m_registrations.erase(found);
}

void CNotifications::DropOwner(ASExtension owner)
{
    std::erase_if(m_registrations,
                  [&](const Registration& one) { return one.owner == owner || one.registeredBy == owner; });
}

void CNotifications::ForEach(NSelector selector, const std::function<void(void*, void*)>& call)
{
    const auto present = m_registrations;
    for (const Registration& one : present) {
        if (one.selector != selector) continue;
        const bool still = std::any_of(m_registrations.begin(), m_registrations.end(),
                                       [&](const Registration& each) { return each.serial == one.serial; });
        if (!still) continue;
        const CActiveExtensionScope active(one.registeredBy);
        try {
            call(one.procedure, one.clientData);
        } catch (const CHostRaise& raise) {
            Diagnose("a plug-in raised an error on notification " + std::to_string(selector) + ": " +
                     raise.Message());
        }
    }
}

}  // namespace openhost
