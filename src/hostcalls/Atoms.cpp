#include "hostcalls/Atoms.h"

#include "hostcalls/HostSlot.h"

ASAtom Atom(const std::string& text) { return HostCall(HOST_SLOT(Core, ASAtomFromString), text.c_str()); }

std::string AtomText(ASAtom atom)
{
    if (atom == kNullAtom) return {};
    const char* text = HostCall(HOST_SLOT(Core, ASAtomGetString), atom);
    return text ? text : "";
}
