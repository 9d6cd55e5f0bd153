#include "openhost/app/IdleProcedures.h"

#include <algorithm>

#include "openhost/app/AppState.h"
#include "openhost/core/Diagnostics.h"
#include "openhost/core/Frames.h"

namespace openhost {

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

}  // namespace openhost
