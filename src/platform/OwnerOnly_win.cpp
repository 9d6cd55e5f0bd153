#include "platform/OwnerOnly_win.h"

#include <sddl.h>

#include <string>
#include <vector>

#include "platform/Handle_win.h"

namespace platform {
namespace {

/// The user under whom this process runs, as access lists name him. Not the owner that new files get, which for an
/// administrator may be all administrators.
FileResult NameUser(std::wstring& user)
{
    HANDLE opened = nullptr;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &opened)) return LastFailure();
    const CHandle token(opened);
    DWORD size = 0;
    GetTokenInformation(token.Get(), TokenUser, nullptr, 0, &size);
    std::vector<char> facts(size);
    if (!GetTokenInformation(token.Get(), TokenUser, facts.data(), size, &size)) return LastFailure();
    wchar_t* text = nullptr;
    if (!ConvertSidToStringSidW(reinterpret_cast<TOKEN_USER*>(facts.data())->User.Sid, &text)) return LastFailure();
    const std::unique_ptr<void, FreeLocal> owned(text);
    user = text;
    return {};
}

}  // namespace

FileResult COwnerOnly::Make()
{
    std::wstring user;
    if (const auto named = NameUser(user); !named) return named;
    // Protected from what the folder hands on; full access for the user, the system and the administrators.
    const std::wstring rights = L"D:P(A;;FA;;;" + user + L")(A;;FA;;;SY)(A;;FA;;;BA)";
    void* descriptor = nullptr;
    if (!ConvertStringSecurityDescriptorToSecurityDescriptorW(rights.c_str(), SDDL_REVISION_1, &descriptor, nullptr))
        return LastFailure();
    m_descriptor.reset(descriptor);
    m_attributes = {sizeof m_attributes, descriptor, FALSE};
    return {};
}

}  // namespace platform
