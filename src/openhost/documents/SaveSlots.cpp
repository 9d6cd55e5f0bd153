#include "openhost/core/Records.h"
#include "openhost/documents/DocumentSlots.h"
#include "openhost/documents/Documents.h"
#include "openhost/files/FilePaths.h"

namespace openhost {

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

/// Saving in small additions is not there: an incremental save writes the whole document to its own file, which has
/// the same effect on everything but the size of the write.
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

}  // namespace openhost
