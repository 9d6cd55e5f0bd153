#include "openhost/commands/Handlers.h"

#include <algorithm>

#include "openhost/app/AppState.h"
#include "openhost/core/Host.h"

namespace openhost {

namespace {

void SayRaise(ASAtom name, const char* where, const CHostRaise& raise)
{
    Diagnose("the command handler \"" + AtomText(name) + "\" raised an error in " + where + ": " + raise.Message());
}

bool Initialise(ASAtom name, AVCommandHandler handler)
{
    const auto initialise = MemberOf(handler, &AVCommandHandlerRec::Initialize);
    if (!initialise) return true;
    try {
        return CallPlugIn(initialise, name) != 0;
    } catch (const CHostRaise& raise) {
        SayRaise(name, "Initialize", raise);
        return false;
    }
}

void CallForName(AVRegisterCommandsProc procedure, ASAtom name, const char* where)
{
    if (!procedure) return;
    try {
        CallPlugIn(procedure, name);
    } catch (const CHostRaise& raise) {
        SayRaise(name, where, raise);
    }
}

}  // namespace

const CCommandHandlers::Registered* CCommandHandlers::FindEntry(ASAtom name) const
{
    const auto found =
        std::find_if(m_handlers.begin(), m_handlers.end(), [&](const Registered& one) { return one.name == name; });
    return found == m_handlers.end() ? nullptr : &*found;
}

void CCommandHandlers::Register(ASAtom name, AVCommandHandler handler)
{
    Require(handler && handler->size > sizeof(ASSize_t), "unusable command handler");
    Require(name != kNullAtom && Part<CAtoms>().Text(name), "a command handler needs a name");
    Remove(name);
    m_handlers.push_back({name, handler, Part<ActiveExtension>().current, false});
    if (m_running) StartOne(name);
}

AVCommandHandler CCommandHandlers::Find(ASAtom name) const
{
    const Registered* const entry = FindEntry(name);
    return entry ? entry->handler : nullptr;
}

ASExtension CCommandHandlers::OwnerOf(ASAtom name) const
{
    const Registered* const entry = FindEntry(name);
    return entry ? entry->owner : nullptr;
}

void CCommandHandlers::Remove(ASAtom name)
{
    std::erase_if(m_handlers, [&](const Registered& one) { return one.name == name; });
}

void CCommandHandlers::StartOne(ASAtom name)
{
    const Registered entry = *FindEntry(name);
    const CActiveExtensionScope active(entry.owner);
    if (!Initialise(name, entry.handler)) {
        Diagnose("the command handler \"" + AtomText(name) + "\" declined to start");
        Remove(name);
        return;
    }
    for (Registered& one : m_handlers)
        if (one.name == name) one.started = true;
    CallForName(MemberOf(entry.handler, &AVCommandHandlerRec::RegisterCommands), name, "RegisterCommands");
}

void CCommandHandlers::Start()
{
    m_running = true;
    const auto present = m_handlers;  // handlers may register others
    for (const Registered& one : present)
        if (const Registered* const still = FindEntry(one.name); still && !still->started) StartOne(one.name);
}

void CCommandHandlers::Terminate()
{
    m_running = false;
    while (!m_handlers.empty()) {
        const Registered one = m_handlers.front();
        m_handlers.erase(m_handlers.begin());
        if (one.started) CallForName(MemberOf(one.handler, &AVCommandHandlerRec::Terminate), one.name, "Terminate");
    }
}

void CCommandHandlers::DropOwner(ASExtension owner)
{
    const auto present = m_handlers;
    for (const Registered& one : present) {
        if (one.owner != owner) continue;
        Remove(one.name);
        if (one.started) CallForName(MemberOf(one.handler, &AVCommandHandlerRec::Terminate), one.name, "Terminate");
    }
}

}  // namespace openhost
