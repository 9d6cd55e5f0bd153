#include "sequence/Sequence.h"

#include "hostcalls/Atoms.h"
#include "hostcalls/HostPath.h"

std::optional<std::string> PathEntry(CCabView cab, const char* key)
{
    if (const CCabView pathCab = cab.Cab(key)) return NativeFromPathCab(pathCab);
    const auto text = cab.StringOrText(key);
    if (!text || text->empty()) return std::nullopt;
    const auto path = CHostPath::FromDIPath(*text);
    return path ? std::optional(path->ToNative()) : std::nullopt;
}

std::optional<std::string> HandlerNameOf(CCabView command)
{
    if (const auto atom = command.Atom("HandlerName")) return AtomText(*atom);
    return command.StringOrText("HandlerName");
}
