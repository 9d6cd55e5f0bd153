#include "openhost/documents/Slots.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "openhost/core/Memory.h"
#include "openhost/documents/Documents.h"
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
    OfferObjectSlots(tables);
    OfferFormSlots(tables);
    OfferWordSlots(tables);
}

namespace {

constexpr ASInt32 kProgressSteps = 100;

/// Drives a plug-in's progress monitor, as far as it has the members; the host only says how far it is.
class CMonitor {
public:
    CMonitor(ASProgressMonitor monitor, void* data) : m_monitor(monitor), m_data(data)
    {
        Tell(&ASProgressMonitorRec::beginOperation);
        Tell(&ASProgressMonitorRec::setDuration, static_cast<ASDuration>(kProgressSteps));
    }
    void At(int percent) { Tell(&ASProgressMonitorRec::setCurrValue, static_cast<ASDuration>(percent)); }
    void End() { Tell(&ASProgressMonitorRec::endOperation); }

private:
    template <class Procedure, class... Values>
    void Tell(Procedure ASProgressMonitorRec::*member, Values... values)
    {
        const Procedure procedure = m_monitor ? MemberOf(m_monitor, member) : nullptr;
        if (procedure) CallPlugIn(procedure, values..., m_data);
    }

    ASProgressMonitor m_monitor;
    void* m_data;
};

/// An incremental save appends what changed, as far as that can be done: when more than properties has changed, the
/// whole document is written to its own file, which has the same effect on everything but the size of the write.
DocumentSaveRequest RequestOf(PDDoc document, ASInt32 flags, ASPathName path, ASFileSys fileSys)
{
    RequireFileSys(fileSys);
    DocumentSaveRequest request;
    const bool full = (flags & PDSaveFull) != 0;
    if (full) {
        Require(path != nullptr, "a full save needs a path");
        request.path = PathAt(path).Native();
        request.copy = (flags & PDSaveCopy) != 0;
        request.linearise = (flags & PDSaveLinearized) != 0;
    } else {
        Require(path == nullptr, "an incremental save writes to the document's own file and takes no path");
        if (DocumentAt(document).pdf.Path().empty())
            Raise(genErrBadParm, "the document has no file yet to be saved to");
        request.append = Appending::WherePossible;
    }
    return request;
}

void Save(PDDoc document, PDSaveFlags flags, ASPathName path, ASFileSys fileSys, ASProgressMonitor monitor,
          void* monitorData)
{
    DocumentSaveRequest request = RequestOf(document, flags, path, fileSys);
    CMonitor progress(monitor, monitorData);
    request.progress = [&](int percent) { progress.At(percent); };
    Part<CDocuments>().Save(document, request);
    progress.End();
}

void SaveWithParams(PDDoc document, PDDocSaveParams params)
{
    Require(params && params->size >= offsetof(PDDocSaveParamsRec, major), "unusable parameters for saving");
    DocumentSaveRequest request = RequestOf(document, params->saveFlags, params->newPath, params->fileSys);
    CMonitor progress(params->mon, params->monClientData);
    request.progress = [&](int percent) { progress.At(percent); };
    if (const auto cancel = params->cancelProc)
        request.cancelled = [cancel, data = params->cancelProcClientData] { return CallPlugIn(cancel, data) != 0; };
    Part<CDocuments>().Save(document, request);
    progress.End();
}

ASInt32 Flags(PDDoc document)
{
    CHostDocument& held = DocumentAt(document);
    return Translated([&] {
        ASInt32 flags = PDDocIsOpen;
        if (held.pdf.IsModified()) flags |= PDDocNeedsSave | PDDocIsModified;
        if (held.pdf.HasPendingSecurity() || held.newHandler) flags |= PDDocNeedsSave | PDDocRequiresFullSave;
        if (held.pdf.Path().empty()) flags |= PDDocNeedsSave | PDDocRequiresFullSave;
        if (held.pdf.WasRepaired()) flags |= PDDocWasRepaired | PDDocRequiresFullSave;
        if (held.pdf.IsLinearised()) flags |= PDDocIsLinearized;
        return (flags | held.setFlags) & ~held.clearedFlags;
    });
}

void SetFlags(PDDoc document, ASInt32 flags)
{
    CHostDocument& held = DocumentAt(document);
    held.setFlags |= flags;
    held.clearedFlags &= ~flags;
    if (flags & (PDDocNeedsSave | PDDocIsModified)) held.pdf.SetModified(true);
}

/// Clearing "needs save" only keeps later closings from asking; what was changed stays changed.
void ClearFlags(PDDoc document, ASInt32 flags)
{
    CHostDocument& held = DocumentAt(document);
    held.setFlags &= ~flags;
    held.clearedFlags |= flags & PDDocNeedsSave;
}

}  // namespace

void OfferSaveSlots(CTables& tables)
{
    OFFER(tables, PDModel, PDDocSave, Save);
    OFFER(tables, PDModel, PDDocSaveWithParams, SaveWithParams);
    OFFER(tables, PDModel, PDDocGetFlags, Flags);
    OFFER(tables, PDModel, PDDocSetFlags, SetFlags);
    OFFER(tables, PDModel, PDDocClearFlags, ClearFlags);
}

namespace {

/// The length of the value; with a buffer as much of it as fits, ended by a zero where there is room.
ASInt32 GetInfo(PDDoc document, const char* key, char* buffer, ASInt32 size)
{
    Require(key && *key, "an information entry needs a key");
    const std::string value =
        Translated([&] { return DocumentAt(document).pdf.InfoOrMetadata(key).value_or(std::string()); });
    if (buffer && size > 0) {
        const std::size_t copied = std::min(value.size(), static_cast<std::size_t>(size));
        std::memcpy(buffer, value.data(), copied);
        if (copied < static_cast<std::size_t>(size)) buffer[copied] = 0;
    }
    return static_cast<ASInt32>(value.size());
}

void SetInfo(PDDoc document, const char* key, const char* value, ASInt32 length)
{
    Require(key && *key, "an information entry needs a key");
    Require(length >= 0 && (value || length == 0), "an information entry needs a value");
    CHostDocument& held = DocumentAt(document);
    const std::string bytes = length > 0 ? std::string(value, static_cast<std::size_t>(length)) : std::string();
    Translated([&] { held.pdf.SetInfo(key, bytes); });
    held.clearedFlags &= ~PDDocNeedsSave;
}

}  // namespace

void OfferInfoSlots(CTables& tables)
{
    OFFER(tables, PDModel, PDDocGetInfo, GetInfo);
    OFFER(tables, PDModel, PDDocSetInfo, SetInfo);
}

}  // namespace openhost
