#include "pdflib/AcrobatDoc.h"

#include <utility>

#include "hostapi/HostConstants.h"
#include "hostapi/HostErrors.h"
#include "hostcalls/Documents.h"
#include "hostcalls/HostFrame.h"
#include "hostcalls/Jobs.h"

CAcrobatDoc::CAcrobatDoc(PDDoc borrowed) : m_document(borrowed), m_path(::FilePath(borrowed).value_or("")) {}

CAcrobatDoc::CAcrobatDoc(CAcrobatDoc&& other) noexcept { *this = std::move(other); }

CAcrobatDoc& CAcrobatDoc::operator=(CAcrobatDoc&& other) noexcept
{
    std::swap(m_document, other.m_document);
    std::swap(m_view, other.m_view);
    std::swap(m_path, other.m_path);
    std::swap(m_owned, other.m_owned);
    std::swap(m_shownByOthers, other.m_shownByOthers);
    std::swap(m_securityChanged, other.m_securityChanged);
    return *this;
}

CAcrobatDoc::~CAcrobatDoc()
{
    // A passing error must not leave the document open, hence the second attempt; there is nobody to tell of a third.
    for (int attempt = 0; attempt < 2; ++attempt) {
        try {
            Close();
            return;
        } catch (...) {
        }
    }
}

void CAcrobatDoc::Open(const std::string& path)
{
    Close();
    Adopt(CHostDocument::Open(path), path);
}

void CAcrobatDoc::Adopt(CHostDocument document, const std::string& path)
{
    Close();
    const bool shownByOthers = document && ViewOf(document.Get()) != nullptr;
    m_path = path;
    m_document = document.Release();
    m_owned = m_document != nullptr;
    m_shownByOthers = shownByOthers;
}

bool CAcrobatDoc::OpenView()
{
    if (!m_owned) return false;
    if (ViewOf(m_document)) return true;
    m_view = ::OpenView(m_document, {});
    return m_view != nullptr;
}

AVDoc CAcrobatDoc::ViewToClose() const
{
    if (m_view || m_shownByOthers) return m_view;
    return ViewOf(m_document);  // a step may have opened one, which owns the document from then on
}

CAcrobatDoc::Closed CAcrobatDoc::Close()
{
    if (!m_owned) {
        Forget();
        return Closed::NothingOpen;
    }
    if (AVDoc view = ViewToClose()) {
        if (!CloseView(view, true))
            throw CHostException({pdErrUnableToCloseDueToRefs, HostErrorText(pdErrUnableToCloseDueToRefs)});
        Forget();
        return Closed::View;
    }
    CHostDocument document(m_document);
    m_document = nullptr;
    try {
        document.Close();
    } catch (...) {
        m_document = document.Release();
        throw;
    }
    Forget();
    return Closed::Document;
}

void CAcrobatDoc::Forget() noexcept
{
    m_document = nullptr;
    m_view = nullptr;
    m_path.clear();
    m_owned = false;
    m_shownByOthers = false;
    m_securityChanged = false;
}

int CAcrobatDoc::PageCount() const { return ::PageCount(m_document); }

std::string CAcrobatDoc::Loss(bool repairIsLoss) const
{
    const auto told = JobDocumentLoss(m_document);
    if (told && !(repairIsLoss && told->empty())) return *told;
    const bool repaired = (DocumentFlags(m_document) & PDDocWasRepaired) != 0;
    return repaired ? "The document was damaged, and what its repair has lost is not known." : "";
}

std::string CAcrobatDoc::CurrentFile() const { return ::FilePath(m_document).value_or(m_path); }

int CAcrobatDoc::OwnSaveFlags(const std::string& path) const
{
    const bool full = m_securityChanged || path != ::FilePath(m_document).value_or("") ||
                      (DocumentFlags(m_document) & PDDocRequiresFullSave) != 0;
    return full ? PDSaveFull : PDSaveIncremental;
}

void CAcrobatDoc::SaveTo(const std::string& path, int extraFlags)
{
    const int flags = OwnSaveFlags(path) | extraFlags;
    if ((flags & PDSaveFull) == 0) return SaveDocument(m_document, flags, std::nullopt);
    SaveDocument(m_document, flags, path);
    if ((flags & PDSaveCopy) != 0) return;  // the document stays what and where it was
    m_path = path;
    m_securityChanged = false;
}

bool CAcrobatDoc::MayModify() const { return PermissionGranted(m_document, PDPermReqObjDoc, PDPermReqOprModify); }

bool CAcrobatDoc::MayFullSave() const { return PermissionGranted(m_document, PDPermReqObjDoc, PDPermReqOprFullSave); }

void CAcrobatDoc::ApplyStandardSecurity(const StandardSecurityRequest& request)
{
    m_securityChanged = true;  // also when it fails half way: the next save must be one that takes all of it
    ::ApplyStandardSecurity(m_document, request);
    SetDocumentFlags(m_document, PDDocNeedsSave | PDDocRequiresFullSave);
}
