#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace openhost {

/// Where the host's own remarks go: standard error unless somebody listens. Each remark is one line without its end.
class CDiagnostics {
public:
    using Listener = std::function<void(std::string_view)>;
    void SetListener(Listener listener) { m_listener = std::move(listener); }
    void Say(std::string_view remark);

private:
    Listener m_listener;
};

/// Says one remark about the host or a plug-in, for the person who operates the host.
void Diagnose(std::string_view remark);
/// Where remarks go that nobody hears.
void SayOnStandardError(std::string_view remark);

}  // namespace openhost
