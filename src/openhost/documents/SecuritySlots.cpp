#include <cstring>
#include <new>

#include "openhost/core/Memory.h"
#include "openhost/documents/DocumentSlots.h"
#include "openhost/documents/Documents.h"

namespace openhost {

namespace {

constexpr const char* kStandard = "Standard";

/// The handler that the next save will use: the chosen one, else the one the document has; the null atom for none.
ASAtom HandlerOf(const CHostDocument& document)
{
    if (document.newHandler) return *document.newHandler;
    return document.pdf.IsEncrypted() ? AtomFromText(kStandard) : kNullAtom;
}

void RequireSecurityRight(const CHostDocument& document)
{
    if (!document.pdf.Allows(PdfRight::ChangeSecurity))
        RaisePdfError(CPdfError(PdfProblem::NotPermitted, document.pdf.Path(),
                                "its security cannot be changed without the permissions password"));
}

/// Does what a request for protection needs. When it is refused, the document is not written until one succeeds.
template <class Work>
auto Requested(PDDoc document, Work work)
{
    CHostDocument& held = DocumentAt(document);
    try {
        return work(held);
    } catch (const CHostRaise& raise) {
        held.pdf.RefuseSecurity(CPdfError(PdfProblem::NotPermitted, raise.Message()));
        throw;
    }
}

void ChooseHandler(CHostDocument& held, ASAtom handler)
{
    if (handler != kNullAtom && AtomText(handler) != kStandard)
        Raise(pdErrNoCryptHandler, held.pdf.Path() + ": there is no security handler named " + AtomText(handler));
    if (handler == HandlerOf(held)) return;
    if (handler == kNullAtom) {
        Translated([&] { held.pdf.RemoveSecurity(); });
    }
    held.newHandler = handler;
    held.newHandlerHasData = false;
}

void SetNewHandler(PDDoc document, ASAtom handler)
{
    // A refused removal leaves the protection that is there.
    if (handler == kNullAtom) return ChooseHandler(DocumentAt(document), handler);
    Requested(document, [&](CHostDocument& held) { ChooseHandler(held, handler); });
}

ASAtom NewHandler(PDDoc document) { return HandlerOf(DocumentAt(document)); }

ASAtom CurrentHandler(PDDoc document)
{
    return DocumentAt(document).pdf.IsEncrypted() ? AtomFromText(kStandard) : kNullAtom;
}

StdSecurityDataRec* NewRecord()
{
    void* const memory = AllocateShared(sizeof(StdSecurityDataRec));
    if (!memory) Raise(genErrNoMemory, "out of memory");
    auto* const record = new (memory) StdSecurityDataRec{};
    record->size = sizeof(StdSecurityDataRec);
    return record;
}

/// A zeroed record with its size: what a client does not fill in is not asked for.
void* NewSecurityData(PDDoc document)
{
    return Requested(document, [](CHostDocument& held) -> void* {
        RequireSecurityRight(held);
        if (HandlerOf(held) == kNullAtom)
            Raise(pdErrNeedCryptHandler, held.pdf.Path() + ": no security handler was chosen");
        return NewRecord();
    });
}

/// The security that the document has now, without its passwords, which nobody can read back.
void* CurrentSecurityData(PDDoc document)
{
    const CHostDocument& held = DocumentAt(document);
    if (!held.pdf.IsEncrypted()) return nullptr;
    const SecurityInfo info = held.pdf.Security();
    StdSecurityDataRec* const record = NewRecord();
    record->hasUserPW = info.hasUser;
    record->hasOwnerPW = info.hasOwner;
    record->perms = info.permissions;
    record->keyLength = info.keyLengthBytes;
    record->revision = info.revision;
    record->version = info.version;
    record->encryptMethod = info.method;
    record->encryptMetadata = info.encryptMetadata;
    return record;
}

std::string PasswordText(const StdPassword& password)
{
    const void* const end = std::memchr(password, 0, sizeof(StdPassword));
    return std::string(
        password, end ? static_cast<std::size_t>(static_cast<const char*>(end) - password) : sizeof(StdPassword));
}

void SetStandardSecurity(CHostDocument& held, const StdSecurityDataRec* record)
{
    Require(record && record->size >= sizeof(StdSecurityDataRec), "unusable security settings");
    if (HandlerOf(held) == kNullAtom)
        Raise(pdErrNeedCryptHandler, held.pdf.Path() + ": no security handler was chosen");
    RequireSecurityRight(held);
    if (record->encryptAttachmentsOnly)
        Raise(genErrBadParm, held.pdf.Path() + ": protecting only the attachments is not offered");
    StandardSecurity security;
    security.hasUser = record->hasUserPW && record->userPW[0];
    security.hasOwner = record->hasOwnerPW && record->ownerPW[0];
    if (security.hasUser) security.userPasswordUtf8 = PasswordText(record->userPW);
    if (security.hasOwner) security.ownerPasswordUtf8 = PasswordText(record->ownerPW);
    security.permissions = record->perms;
    security.keyLengthBytes = record->keyLength;
    security.revision = record->revision;
    security.method = record->encryptMethod;
    security.encryptMetadata = record->encryptMetadata != 0;
    Translated([&] { held.pdf.SetSecurity(security); });
    held.newHandlerHasData = true;
}

void SetNewSecurityData(PDDoc document, void* data)
{
    Requested(document,
              [&](CHostDocument& held) { SetStandardSecurity(held, static_cast<const StdSecurityDataRec*>(data)); });
}

}  // namespace

void OfferSecuritySlots(CTables& tables)
{
    OFFER(tables, PDModel, PDDocSetNewCryptHandler, SetNewHandler);
    OFFER(tables, PDModel, PDDocGetNewCryptHandler, NewHandler);
    OFFER(tables, PDModel, PDDocGetCryptHandler, CurrentHandler);
    OFFER(tables, PDModel, PDDocNewSecurityData, NewSecurityData);
    OFFER(tables, PDModel, PDDocGetSecurityData, CurrentSecurityData);
    OFFER(tables, PDModel, PDDocSetNewSecurityData, SetNewSecurityData);
}

}  // namespace openhost
