#include "openhost/app/Events.h"

#include <algorithm>
#include <string>

#include "openhost/app/AppState.h"
#include "openhost/app/Slots.h"
#include "openhost/core/Host.h"
#include "openhost/core/Raise.h"

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

namespace {

constexpr std::uint64_t kTicksPerSecond = 60;

std::uint64_t MillisecondsOf(ASUns32 ticks)
{
    return (std::uint64_t{ticks} * 1000 + kTicksPerSecond - 1) / kTicksPerSecond;
}

std::uint64_t Now() { return Part<AppClock>().milliseconds(); }

}  // namespace

void CIdleProcedures::Register(AVIdleProc procedure, void* clientData, ASUns32 periodTicks, bool repeating,
                               ASUns32 delayTicks)
{
    Require(procedure != nullptr, "an idle procedure must not be null");
    m_procedures.push_back({procedure, clientData, MillisecondsOf(periodTicks), Now() + MillisecondsOf(delayTicks),
                            Part<ActiveExtension>().current, m_serial++, repeating});
}

void CIdleProcedures::Unregister(AVIdleProc procedure, void* clientData)
{
    const auto found = std::find_if(m_procedures.begin(), m_procedures.end(), [&](const Procedure& one) {
        return one.procedure == procedure && one.clientData == clientData;
    });
    if (found != m_procedures.end()) m_procedures.erase(found);
}

void CIdleProcedures::DropOwner(ASExtension owner)
{
    std::erase_if(m_procedures, [&](const Procedure& one) { return one.owner == owner; });
}

CIdleProcedures::Procedure* CIdleProcedures::Find(unsigned long long serial)
{
    const auto found = std::find_if(m_procedures.begin(), m_procedures.end(),
                                    [&](const Procedure& one) { return one.serial == serial; });
    return found == m_procedures.end() ? nullptr : &*found;
}

void CIdleProcedures::Call(unsigned long long serial)
{
    Procedure& before = *Find(serial);
    before.running = true;
    const AVIdleProc procedure = before.procedure;
    void* const clientData = before.clientData;
    const CActiveExtensionScope active(before.owner);
    try {
        CallPlugIn(procedure, clientData);
    } catch (const CHostRaise& raise) {
        Diagnose("an idle procedure raised an error: " + raise.Message());
    }
    Procedure* const after = Find(serial);  // the call may have changed the list
    if (!after) return;
    after->running = false;
    after->called = true;
    after->due = Now() + after->periodMs;
    if (!after->repeating) m_procedures.erase(m_procedures.begin() + (after - m_procedures.data()));
}

void CIdleProcedures::CallDue()
{
    std::vector<unsigned long long> due;
    const std::uint64_t now = Now();
    for (const Procedure& one : m_procedures)
        if (one.due <= now && !one.running) due.push_back(one.serial);
    for (const auto serial : due) {
        if (Part<AppWishes>().quit) return;
        if (const Procedure* const one = Find(serial); one && !one->running) Call(serial);
    }
}

std::optional<std::uint64_t> CIdleProcedures::NextDue() const
{
    std::optional<std::uint64_t> next;
    for (const Procedure& one : m_procedures)
        if (!next || one.due < *next) next = one.due;
    return next;
}

bool CIdleProcedures::AllCalled() const
{
    return std::all_of(m_procedures.begin(), m_procedures.end(), [](const Procedure& one) { return one.called; });
}

namespace {

void RegisterIdle(AVIdleProc procedure, void* clientData, ASUns32 period)
{
    Part<CIdleProcedures>().Register(procedure, clientData, period);
}

void RegisterIdleWithName(AVIdleProc procedure, void* clientData, ASUns32 period, const char*, const char*)
{
    Part<CIdleProcedures>().Register(procedure, clientData, period);
}

void RegisterIdleExWithName(AVIdleProc procedure, void* clientData, ASBool, ASUns32 delay, ASBool repeating,
                            ASUns32 period, ASUns32, const char*, const char*)
{
    Part<CIdleProcedures>().Register(procedure, clientData, period, repeating != 0, delay);
}

void UnregisterIdle(AVIdleProc procedure, void* clientData)
{
    Part<CIdleProcedures>().Unregister(procedure, clientData);
}

void RegisterNotification(NSelector selector, ASExtension owner, void* procedure, void* clientData)
{
    Part<CNotifications>().Register(selector, owner, procedure, clientData);
}

void UnregisterNotification(NSelector selector, ASExtension owner, void* procedure, void* clientData)
{
    Part<CNotifications>().Unregister(selector, owner, procedure, clientData);
}

ASBool CanQuit() { return 1; }

/// Plug-ins only ever ask while the host is busy calling them.
ASBool IsIdle() { return 0; }

void Yield(double) {}

}  // namespace

void OfferEventSlots(CTables& tables)
{
    OFFER(tables, AcroView, AVAppRegisterIdleProc, RegisterIdle);
    OFFER(tables, AcroView, AVAppRegisterIdleProcWithName, RegisterIdleWithName);
    OFFER(tables, AcroView, AVAppRegisterIdleProcExWithName, RegisterIdleExWithName);
    OFFER(tables, AcroView, AVAppUnregisterIdleProc, UnregisterIdle);
    OFFER(tables, AcroView, AVAppRegisterNotification, RegisterNotification);
    OFFER(tables, AcroView, AVAppUnregisterNotification, UnregisterNotification);
    OFFER(tables, AcroView, AVAppCanQuit, CanQuit);
    OFFER(tables, AcroView, AVAppIsIdle, IsIdle);
    OFFER(tables, AcroView, AVAppYieldToOtherApps, Yield);
}

}  // namespace openhost
