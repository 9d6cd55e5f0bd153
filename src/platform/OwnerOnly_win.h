#pragma once

#include <memory>

#include "platform/Files.h"
#include "platform/Windows_win.h"

namespace platform {

struct FreeLocal {
    void operator()(void* memory) const { LocalFree(memory); }
};

/// The rights of a new file that is this user's own: administrators and the system have them, too, since a run may be
/// scheduled under any of these, and nothing comes from the folder.
class COwnerOnly {
public:
    FileResult Make();
    /// For the call that creates the file; null unless made.
    SECURITY_ATTRIBUTES* Attributes() { return m_descriptor ? &m_attributes : nullptr; }

private:
    std::unique_ptr<void, FreeLocal> m_descriptor;
    SECURITY_ATTRIBUTES m_attributes{};
};

}  // namespace platform
