#pragma once

#include <chrono>
#include <cstdint>
#include <functional>

#include "hostapi/HostTypes.h"
#include "openhost/core/Host.h"

namespace openhost {

/// What the host says about itself.
struct AppSettings {
    int majorVersion = 21;
    bool quitItem = true;  ///< false: the "File" menu has no "Quit"
};

inline constexpr char kHostName[] = "Ferrule Host";

/// What somebody wants of the host; the event loop looks at it between calls.
struct AppWishes {
    bool quit = false;  ///< the host shall end as soon as the present call is over
    bool stop = false;  ///< whatever is going on shall stop: the cancel procedures say so
};

/// The time that idle procedures are measured by; tests put their own.
struct AppClock {
    std::function<std::uint64_t()> milliseconds = [] {
        const auto now = std::chrono::steady_clock::now().time_since_epoch();
        return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
    };
};

/// The plug-in whose code the host is calling: what is registered meanwhile belongs to it and goes with it.
struct ActiveExtension {
    ASExtension current = nullptr;
};

class CActiveExtensionScope {
public:
    explicit CActiveExtensionScope(ASExtension extension) : m_former(Part<ActiveExtension>().current)
    {
        Part<ActiveExtension>().current = extension;
    }
    ~CActiveExtensionScope() { Part<ActiveExtension>().current = m_former; }
    CActiveExtensionScope(const CActiveExtensionScope&) = delete;
    CActiveExtensionScope& operator=(const CActiveExtensionScope&) = delete;

private:
    ASExtension m_former;
};

}  // namespace openhost
