#include <cstdlib>

#include "openhost/documents/DocumentSlots.h"
#include "openhost/documents/Documents.h"
#include "openhost/documents/Slots.h"
#include "openhost/files/FilePaths.h"

namespace openhost {

namespace {

PDDoc Open(ASPathName path, ASFileSys fileSys, PDAuthProc authorise, ASBool repair)
{
    RequireFileSys(fileSys);
    CDocuments::Authorise ask;
    if (authorise) ask = [authorise](PDDoc document) { return CallPlugIn(authorise, document) != 0; };
    return Part<CDocuments>().Open(PathAt(path).Native(), repair != 0, ask);
}

PDDoc OpenEx(ASPathName path, ASFileSys fileSys, PDAuthProcEx authorise, void* clientData, ASBool repair)
{
    RequireFileSys(fileSys);
    CDocuments::Authorise ask;
    if (authorise) ask = [=](PDDoc document) { return CallPlugIn(authorise, document, clientData) != 0; };
    return Part<CDocuments>().Open(PathAt(path).Native(), repair != 0, ask);
}

PDDoc OpenWithParams(PDDocOpenParams params)
{
    Require(params && params->size >= offsetof(PDDocOpenParamsRec, restrictPerms), "unusable parameters for opening");
    Require(params->fileName != nullptr, "opening needs the path of a file");
    return OpenEx(params->fileName, params->fileSys, params->authProcEx, params->authProcClientData,
                  params->doRepair);
}

void Close(PDDoc document) { Part<CDocuments>().Close(document); }

void Acquire(PDDoc document) { ++DocumentAt(document).acquireCount; }

void Release(PDDoc document)
{
    CHostDocument& held = DocumentAt(document);
    Require(held.acquireCount > 0, "the document was not acquired");
    --held.acquireCount;
}

void EnumDocuments(PDDocEnumProc procedure, void* clientData)
{
    Require(procedure != nullptr, "no procedure to call");
    for (PDDoc document : Part<CDocuments>().All())
        if (!CallPlugIn(procedure, document, clientData)) return;
}

ASInt32 PageCount(PDDoc document)
{
    return Translated([&] { return DocumentAt(document).pdf.PageCount(); });
}

void Version(PDDoc document, ASInt16* major, ASInt16* minor)
{
    const std::string version = Translated([&] { return DocumentAt(document).pdf.PdfVersion(); });
    const auto dot = version.find('.');
    if (major) *major = static_cast<ASInt16>(std::atoi(version.c_str()));
    if (minor)
        *minor = dot == std::string::npos ? ASInt16{0} : static_cast<ASInt16>(std::atoi(version.c_str() + dot + 1));
}

ASFile DocumentFile(PDDoc document) { return Part<CDocuments>().FileOf(document); }

ASBool AskPassword(PDDoc document) { return Part<CDocuments>().AskPassword(document); }

}  // namespace

void OfferOpenSlots(CTables& tables)
{
    OFFER(tables, PDModel, PDDocOpen, Open);
    OFFER(tables, PDModel, PDDocOpenEx, OpenEx);
    OFFER(tables, PDModel, PDDocOpenWithParams, OpenWithParams);
    OFFER(tables, PDModel, PDDocClose, Close);
    OFFER(tables, PDModel, PDDocAcquire, Acquire);
    OFFER(tables, PDModel, PDDocRelease, Release);
    OFFER(tables, PDModel, PDEnumDocs, EnumDocuments);
    OFFER(tables, PDModel, PDDocGetNumPages, PageCount);
    OFFER(tables, PDModel, PDDocGetVersion, Version);
    OFFER(tables, PDModel, PDDocGetFile, DocumentFile);
    OFFER(tables, AcroView, AVAuthOpen, AskPassword);
}

void OfferDocumentsSlots(CTables& tables)
{
    OfferOpenSlots(tables);
    OfferSaveSlots(tables);
    OfferInfoSlots(tables);
    OfferSecuritySlots(tables);
    OfferPermissionSlots(tables);
}

}  // namespace openhost
