#include "hostcalls/Documents.h"

#include "hostcalls/HostEntry.h"
#include "hostcalls/HostPath.h"
#include "hostcalls/HostSlot.h"

#include <algorithm>

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
