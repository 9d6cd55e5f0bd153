#pragma once

#include <string>
#include <vector>

#include "hostapi/HostTypes.h"
#include "openhost/core/Atoms.h"
#include "openhost/core/Handles.h"

namespace openhost {

/// One loaded plug-in, as other plug-ins see it.
struct CExtension {
    std::string fileName;               // full path of the library
    ASAtom registeredName = kNullAtom;  // set by the handshake
    bool living = true;                 // false once it was unloaded
    unsigned order = 0;                 // in order of loading, from 0
};

/// The plug-ins of this host. A dead one stays listed, so that old identities are recognised.
class CExtensions {
public:
    ASExtension Add(std::string fileName);
    CExtension& At(ASExtension extension) const { return m_extensions.At(extension); }
    bool Known(ASExtension extension) const { return m_extensions.Find(extension) != nullptr; }
    /// Whether a living plug-in already has this name.
    bool NameTaken(ASAtom name) const;
    std::vector<ASExtension> InOrder() const;

private:
    CHandles<CExtension, ASExtension> m_extensions{"plug-in"};
    unsigned m_next = 0;
};

}  // namespace openhost
