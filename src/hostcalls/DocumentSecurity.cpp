#include "hostcalls/DocumentSecurity.h"

#include "hostcalls/Atoms.h"
#include "hostcalls/HostSlot.h"

#include <cstddef>
#include <cstring>

namespace {

/// Owns the handler's record; what it held is wiped, for it held passwords.
class CSecurityData {
public:
    explicit CSecurityData(PDDoc document)
        : m_record(static_cast<StdSecurityDataRec*>(HostCall(HOST_SLOT(PDModel, PDDocNewSecurityData), document)))
    {
        if (!m_record) hostcalls::ThrowHostError(genErrNoMemory);
    }
    ~CSecurityData()
    {
        volatile char* bytes = reinterpret_cast<char*>(&m_record->userPW);
        for (std::size_t i = 0; i < kSecretSize; ++i) bytes[i] = 0;
        hostcalls::Quietly([this] { HostCall(HOST_SLOT(AcroSupport, ASfree), m_record); });
    }
    CSecurityData(const CSecurityData&) = delete;
    CSecurityData& operator=(const CSecurityData&) = delete;

    StdSecurityDataRec& Record() { return *m_record; }

private:
    static constexpr std::size_t kSecretSize =
        offsetof(StdSecurityDataRec, perms) - offsetof(StdSecurityDataRec, userPW);
    StdSecurityDataRec* m_record;
};

void SetPassword(const std::string& password, StdPassword& target, ASBool& isNew, ASBool& isThere)
{
    if (password.empty()) return;
    if (password.size() >= sizeof(StdPassword)) hostcalls::ThrowHostError(genErrBadParm);
    std::memcpy(target, password.c_str(), password.size() + 1);
    isNew = isThere = 1;
}

/// Everything that the request does not name is left false or 0, whatever the handler had put there.
void Fill(StdSecurityDataRec& record, const StandardSecurityRequest& request)
{
    record = StdSecurityDataRec{};
    record.size = sizeof record;
    SetPassword(request.openPassword, record.userPW, record.newUserPW, record.hasUserPW);
    SetPassword(request.permissionsPassword, record.ownerPW, record.newOwnerPW, record.hasOwnerPW);
    record.perms = request.permissions;
    record.keyLength = request.keyLengthBytes;
    record.revision = request.revision;
    record.encryptMethod = request.cryptMethod;
}

}  // namespace

void SetCryptHandler(PDDoc document, const std::string& name)
{
    const ASAtom handler = name.empty() ? kNullAtom : Atom(name);
    HostCall(HOST_SLOT(PDModel, PDDocSetNewCryptHandler), document, handler);
}

void ApplyStandardSecurity(PDDoc document, const StandardSecurityRequest& request)
{
    SetCryptHandler(document, "Standard");
    CSecurityData data(document);
    Fill(data.Record(), request);
    HostCall(HOST_SLOT(PDModel, PDDocSetNewSecurityData), document, &data.Record());
}
