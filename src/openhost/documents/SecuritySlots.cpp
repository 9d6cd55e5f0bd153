#include <cstring>
#include <new>
#include <optional>

#include "openhost/core/Memory.h"
#include "openhost/documents/Documents.h"
#include "openhost/documents/Slots.h"

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

namespace {

struct RightRow {
    PDPermReqObj object;
    PDPermReqOpr operation;
    PdfRight right;
};

/// Which right of the file format an operation on an object needs.
constexpr RightRow kRights[] = {
    {PDPermReqObjDoc, PDPermReqOprModify, PdfRight::Change},
    {PDPermReqObjDoc, PDPermReqOprSecure, PdfRight::ChangeSecurity},
    {PDPermReqObjDoc, PDPermReqOprPrintHigh, PdfRight::PrintHigh},
    {PDPermReqObjDoc, PDPermReqOprPrintLow, PdfRight::PrintLow},
    {PDPermReqObjDoc, PDPermReqOprCopy, PdfRight::Copy},
    {PDPermReqObjDoc, PDPermReqOprSelect, PdfRight::Copy},
    {PDPermReqObjDoc, PDPermReqOprAccessible, PdfRight::CopyForAccessibility},
    {PDPermReqObjDoc, PDPermReqOprFullSave, PdfRight::FullSave},
    {PDPermReqObjPage, PDPermReqOprInsert, PdfRight::Assemble},
    {PDPermReqObjPage, PDPermReqOprDelete, PdfRight::Assemble},
    {PDPermReqObjPage, PDPermReqOprRotate, PdfRight::Assemble},
    {PDPermReqObjPage, PDPermReqOprReorder, PdfRight::Assemble},
    {PDPermReqObjPage, PDPermReqOprReplace, PdfRight::Change},
    {PDPermReqObjPage, PDPermReqOprCrop, PdfRight::Change},
    {PDPermReqObjPage, PDPermReqOprModify, PdfRight::Change},
    {PDPermReqObjPage, PDPermReqOprCopy, PdfRight::Copy},
    {PDPermReqObjBookmark, PDPermReqOprModify, PdfRight::Assemble},
    {PDPermReqObjBookmark, PDPermReqOprCreate, PdfRight::Assemble},
    {PDPermReqObjBookmark, PDPermReqOprDelete, PdfRight::Assemble},
    {PDPermReqObjForm, PDPermReqOprModify, PdfRight::Change},
    {PDPermReqObjForm, PDPermReqOprFillIn, PdfRight::FillForms},
    {PDPermReqObjAnnot, PDPermReqOprModify, PdfRight::Annotate},
    {PDPermReqObjAnnot, PDPermReqOprCreate, PdfRight::Annotate},
    {PDPermReqObjAnnot, PDPermReqOprDelete, PdfRight::Annotate},
    {PDPermReqObjSignature, PDPermReqOprFillIn, PdfRight::FillForms},
    {PDPermReqObjEF, PDPermReqOprModify, PdfRight::Change},
};

std::optional<PdfRight> RightFor(PDPermReqObj object, PDPermReqOpr operation)
{
    for (const RightRow& row : kRights)
        if (row.object == object && row.operation == operation) return row.right;
    return std::nullopt;
}

/// An operation that no row names needs every right there is: granted to the owner, denied to everybody else.
PDPermReqStatus Request(PDDoc document, PDPermReqObj object, PDPermReqOpr operation, void*)
{
    const CHostDocument& held = DocumentAt(document);
    if (object == 0 || object >= PDPermReqObjLast) return PDPermReqUnknownObject;
    if (operation == 0 || operation >= PDPermReqOprLast) return PDPermReqUnknownOperation;
    if (operation == PDPermReqOprOpen) return PDPermReqGranted;
    const auto right = RightFor(object, operation);
    const bool allowed = held.pdf.Allows(right.value_or(PdfRight::ChangeSecurity));
    return allowed ? PDPermReqGranted : PDPermReqDenied;
}

PDPerms Permissions(PDDoc document) { return DocumentAt(document).pdf.PermissionWord(); }

/// Tries one password for the wanted rights and answers the rights that the document has then.
PDPerms Authorize(PDDoc document, PDPerms wanted, void* password)
{
    CHostDocument& held = DocumentAt(document);
    const bool wantsOwner = (wanted & (pdPermOwner | pdPermSecure)) != 0;
    if (password) {
        const char* const text = static_cast<const char*>(password);
        Translated([&] { return held.pdf.Authorize(text, wantsOwner ? WantedRights::Owner : WantedRights::Open); });
    }
    if (held.pdf.IsLocked()) return 0;
    return held.pdf.PermissionWord() | pdPermOpen;
}

}  // namespace

void OfferPermissionSlots(CTables& tables)
{
    OFFER(tables, PDModel, PDDocPermRequest, Request);
    OFFER(tables, PDModel, PDDocPermRequestNoUB, Request);
    OFFER(tables, PDModel, PDDocGetPermissions, Permissions);
    OFFER(tables, PDModel, PDDocAuthorize, Authorize);
}

}  // namespace openhost
