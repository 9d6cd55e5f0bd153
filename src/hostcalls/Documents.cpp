#include "hostcalls/Documents.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "hostcalls/Cab.h"
#include "hostcalls/HostFrame.h"
#include "hostcalls/HostPath.h"
#include "hostcalls/HostTables.h"

CHostDocument::~CHostDocument()
{
    if (m_document) hostcalls::Quietly([this] { HostCall(HOST_SLOT(PDModel, PDDocClose), m_document); });
}

CHostDocument CHostDocument::Open(const std::string& path)
{
    static const PDAuthProc kPrompt = Callback(HOST_SLOT(AcroView, AVAuthOpen));
    const CHostPath hostPath = CHostPath::FromNative(path);
    CHostDocument document(HostCall(HOST_SLOT(PDModel, PDDocOpen), hostPath.Get(), nullptr, kPrompt, ASBool{true}));
    if (!document) hostcalls::ThrowHostError(pdErrUnableToOpenDoc);
    return document;
}

void CHostDocument::Close()
{
    if (!m_document) return;
    HostCall(HOST_SLOT(PDModel, PDDocClose), m_document);
    m_document = nullptr;
}

int PageCount(PDDoc document) { return HostCall(HOST_SLOT(PDModel, PDDocGetNumPages), document); }

std::optional<std::string> FilePath(PDDoc document)
{
    ASFile file = HostCall(HOST_SLOT(PDModel, PDDocGetFile), document);
    if (!file) return std::nullopt;
    ASFileSys fileSystem = HostCall(HOST_SLOT(AcroSupport, ASFileGetFileSys), file);
    ASPathName path = HostCall(HOST_SLOT(AcroSupport, ASFileAcquirePathName), file);
    if (!path) return std::nullopt;
    const hostcalls::CAtEnd release(
        [&] { HostCall(HOST_SLOT(AcroSupport, ASFileSysReleasePath), fileSystem, path); });
    return NativeFromPath(fileSystem, path);
}

int DocumentFlags(PDDoc document) { return HostCall(HOST_SLOT(PDModel, PDDocGetFlags), document); }

void SetDocumentFlags(PDDoc document, int flags) { HostCall(HOST_SLOT(PDModel, PDDocSetFlags), document, flags); }

void SaveDocument(PDDoc document, int saveFlags, const std::optional<std::string>& path)
{
    const CHostPath hostPath = path ? CHostPath::FromNative(*path) : CHostPath(nullptr);
    HostCall(HOST_SLOT(PDModel, PDDocSave), document, static_cast<PDSaveFlags>(saveFlags), hostPath.Get(), nullptr,
             nullptr, nullptr);
}

bool PermissionGranted(PDDoc document, unsigned object, unsigned operation)
{
    return HostCall(HOST_SLOT(PDModel, PDDocPermRequest), document, object, operation, nullptr) == PDPermReqGranted;
}

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

AVDoc OpenView(PDDoc document, const std::string& title)
{
    const CHostText titleText = title.empty() ? CHostText(nullptr) : CHostText::FromNarrow(title);
    return HostCall(HOST_SLOT(AcroView, AVDocOpenFromPDDoc), document, titleText.Get());
}

AVDoc ViewOf(PDDoc document) { return HostCall(HOST_SLOT(AcroView, AVDocFromPDDoc), document); }

bool CloseView(AVDoc view, bool noSave)
{
    return HostCall(HOST_SLOT(AcroView, AVDocClose), view, ASBool{noSave}) != 0;
}
