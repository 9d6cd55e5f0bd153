#include "platform/ExtendedAttributes_posix.h"

#include <cerrno>
#include <string_view>

#include "platform/FileCalls_posix.h"

namespace platform {
namespace {

constexpr std::string_view kLabel = "security.selinux";
constexpr std::string_view kModeList = "system.posix_acl_";  // CAccessRights has it

bool BelongsToDocument(std::string_view name)
{
    if (name.starts_with("user.") || name == kLabel) return true;
    // Access lists of other kinds, as network file systems have them.
    return name.starts_with("system.") && name.find("acl") != std::string_view::npos && !name.starts_with(kModeList);
}

}  // namespace

void CExtendedAttributes::ReadFrom(const std::string& path)
{
    m_values.clear();
    std::string names;
    m_complete = calls::ListAttributes(path, names) == 0 || errno == ENOTSUP || errno == ENOSYS;
    if (!m_complete) return;
    for (std::size_t at = 0; at < names.size(); at += std::string_view(names.c_str() + at).size() + 1) {
        const std::string name(names.c_str() + at);
        std::string value;
        if (!BelongsToDocument(name)) continue;
        if (calls::GetAttribute(path, name.c_str(), value) == 0)
            m_values.emplace_back(name, value);
        else if (errno != ENODATA && name != kLabel)
            m_complete = false;
    }
}

bool CExtendedAttributes::SetOn(int descriptor) const
{
    bool complete = m_complete;
    for (const auto& [name, value] : m_values) {
        const bool set = calls::SetAttribute(descriptor, name.c_str(), value) == 0;
        complete = complete && (set || name == kLabel);
    }
    return complete;
}

}  // namespace platform
