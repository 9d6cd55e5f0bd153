#include "openhost/core/Host.h"

#include <cstdio>
#include <cstdlib>

namespace openhost {

namespace {
CHost* g_current = nullptr;
}

CHost::CHost()
{
    if (g_current) std::abort();  // a second host would share the plug-ins' globals with the first
    g_current = this;
}

CHost::~CHost()
{
    while (!m_parts.empty()) m_parts.pop_back();
    g_current = nullptr;
}

CHost& CHost::Current()
{
    if (!g_current) std::abort();
    return *g_current;
}

std::size_t CHost::NextIndex()
{
    static std::size_t next = 0;
    return next++;
}

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
