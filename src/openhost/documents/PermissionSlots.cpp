#include <optional>

#include "openhost/documents/DocumentSlots.h"
#include "openhost/documents/Documents.h"

namespace openhost {

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
