#include "openhost/core/Diagnostics.h"

#include <cstdio>

#include "openhost/core/Host.h"

namespace openhost {

void CDiagnostics::Say(std::string_view remark)
{
    if (m_listener) {
        m_listener(remark);
        return;
    }
    SayOnStandardError(remark);
}

void Diagnose(std::string_view remark) { Part<CDiagnostics>().Say(remark); }

void SayOnStandardError(std::string_view remark)
{
    std::fprintf(stderr, "ferrule-host: %.*s\n", static_cast<int>(remark.size()), remark.data());
}

}  // namespace openhost
