#include "openhost/documents/Documents.h"

#include <filesystem>
#include <utility>

#include "base/Overseer.h"
#include "openhost/documents/Objects.h"
#include "openhost/files/Files.h"
#include "platform/Files.h"
#include "platform/NarrowText.h"

namespace openhost {

namespace {

/// Names a file by where it really is, so that two spellings of one path find the same document.
std::string KeyOf(const std::string& path)
{
    if (path.empty()) return {};
    if (std::string canonical = platform::CanonicalPath(path); !canonical.empty()) return canonical;
    // Not there, or not any more: its folder tells.
    const auto given = platform::StandardPath(path);
    const std::string folder = platform::CanonicalPath(platform::TextOf(given.parent_path()));
    return folder.empty() ? path : platform::TextOf(platform::StandardPath(folder) / given.filename());
}

void Tell(const std::function<void(PDDoc)>& listener, PDDoc document)
{
    if (listener) listener(document);
}

bool IsSigned(CPdfDocument& pdf)
{
    try {
        return pdf.IsSigned();
    } catch (const CPdfError&) {
        return false;  // nobody finds signatures in what cannot be read
    }
}

bool IsCertified(CPdfDocument& pdf)
{
    try {
        return pdf.IsCertified();
    } catch (const CPdfError&) {
        return false;
    }
}

bool Pretending()
{
    const COverseer* const overseer = Overseer();
    return overseer && overseer->Pretends();
}

void DropFile(CHostDocument& document)
{
    if (document.file) CloseFile(std::exchange(document.file, nullptr));
}

/// The document's file is closed while another one is put in its place, and plug-ins that have it keep their handle.
class CFileForReplacing {
public:
    explicit CFileForReplacing(ASFile file) : m_file(file) {}
    CFileForReplacing(const CFileForReplacing&) = delete;
    ~CFileForReplacing()
    {
        if (m_hasLetGo) TakeUpFile(m_file);
    }
    void LetGo()
    {
        m_hasLetGo = m_file && !Pretending();
        if (m_hasLetGo) LetGoOfFile(m_file);
    }

private:
    ASFile m_file;
    bool m_hasLetGo = false;
};

/// A handler without settings would write the document open to everybody, although protection was asked for.
void RequireSecurityData(const CHostDocument& document)
{
    if (const auto& refusal = document.pdf.SecurityRefusal()) RaisePdfError(*refusal);
    if (document.newHandler && *document.newHandler != kNullAtom && !document.newHandlerHasData)
        Raise(pdErrNeedCryptHandler, document.pdf.Path() +
                                         ": protection was asked for, but its settings were not given; "
                                         "the document is not written without it");
}

}  // namespace

const std::string& RealFileOf(const CHostDocument& document)
{
    if (!document.standIn.empty()) return document.standIn;
    return document.pdf.Path().empty() ? document.madeFrom : document.pdf.Path();
}

PDDoc CDocuments::Open(const std::string& path, bool repair, const Authorise& authorise)
{
    const std::string key = KeyOf(path);
    const auto known = m_byKey.find(key);
    if (known != m_byKey.end()) {
        CHostDocument& document = At(known->second);
        if (!document.openedFully) Raise(pdErrAlreadyOpen, path + ": the document is just being opened");
        ++document.openCount;
        return known->second;
    }
    return OpenNew(path, key, repair, authorise);
}

/// A locked document needs a handle already while its password is asked for, so the library's document moves into its
/// final place for the time of the question.
PDDoc CDocuments::OpenNew(const std::string& path, const std::string& key, bool repair, const Authorise& authorise)
{
    PDDoc asked = nullptr;
    std::exception_ptr raisedByPrompt;
    PdfOpenOptions options;
    options.repair = repair;
    if (authorise) {
        options.authorise = [&](CPdfDocument& locked) {
            auto holder = std::make_unique<CHostDocument>(std::move(locked));
            holder->key = key;
            CHostDocument* const document = holder.get();
            asked = m_documents.Add(std::move(holder));
            m_byKey[key] = asked;
            bool allowed = false;
            try {
                allowed = authorise(asked);
            } catch (...) {
                raisedByPrompt = std::current_exception();
            }
            locked = std::move(document->pdf);
            return allowed;
        };
    }
    try {
        auto opened = Translated([&] { return CPdfDocument::Open(path, options); });
        if (raisedByPrompt) std::rethrow_exception(raisedByPrompt);
        if (asked) {
            At(asked).pdf = std::move(opened);
        } else {
            auto holder = std::make_unique<CHostDocument>(std::move(opened));
            holder->key = key;
            asked = m_documents.Add(std::move(holder));
            m_byKey[key] = asked;
        }
    } catch (...) {
        if (asked) Forget(asked);
        if (raisedByPrompt) std::rethrow_exception(raisedByPrompt);
        throw;
    }
    CHostDocument& document = At(asked);
    document.openedFully = true;
    if (document.pdf.IsEncrypted() && document.pdf.OpenedBy() == OpenedWith::User && !document.candidatesTried)
        AskPassword(asked);
    if (document.pdf.WasRepaired())
        Diagnose(path + ": the file is damaged; its content was recovered as far as possible");
    if (events.didLookAtSecurity) events.didLookAtSecurity(path, document.pdf.Security());
    Tell(events.didOpen, asked);
    return asked;
}

PDDoc CDocuments::Adopt(CPdfDocument document)
{
    auto holder = std::make_unique<CHostDocument>(std::move(document));
    holder->openedFully = true;
    holder->key = KeyOf(holder->pdf.Path());
    const std::string key = holder->key;
    const PDDoc handle = m_documents.Add(std::move(holder));
    if (!key.empty()) m_byKey[key] = handle;
    return handle;
}

void CDocuments::Close(PDDoc handle)
{
    CHostDocument& document = At(handle);
    if (document.openCount > 1) {
        --document.openCount;
        return;
    }
    if (document.acquireCount > 0)
        Raise(pdErrUnableToCloseDueToRefs, document.pdf.Path() + ": something of the document is still in use");
    Tell(events.willClose, handle);
    Forget(handle);
    Tell(events.didClose, handle);
}

void CDocuments::Forget(PDDoc handle)
{
    const auto document = m_documents.Take(handle);
    if (!document) return;
    Part<CObjects>().Forget(handle);
    DropFile(*document);
    const auto known = m_byKey.find(document->key);
    if (known != m_byKey.end() && known->second == handle) m_byKey.erase(known);
}

ASFile CDocuments::FileOf(PDDoc handle)
{
    CHostDocument& document = At(handle);
    if (document.file || document.pdf.Path().empty()) return document.file;
    const CFilePath path(document.pdf.Path());
    const ASErrorCode failed = document.standIn.empty() ? OpenFile(path, ASFILE_READ, &document.file)
                                                        : OpenStandIn(path, document.standIn, &document.file);
    if (failed != 0) Raise(failed, document.pdf.Path() + ": the document's file cannot be read");
    return document.file;
}

std::vector<PDDoc> CDocuments::All() const
{
    std::vector<PDDoc> all;
    m_documents.ForEach([&](const CHostDocument& document) { all.push_back(m_documents.HandleOf(document)); });
    return all;
}

void CDocuments::Save(PDDoc handle, const DocumentSaveRequest& request)
{
    CHostDocument& document = At(handle);
    const bool mustNotExist = std::exchange(document.nextSaveIsNew, false) || request.mustNotExist;
    const Appending asked = std::exchange(document.nextSaveAppends, Appending::Never);
    const bool forgets = std::exchange(document.nextSaveForgets, false);
    RequireSecurityData(document);
    const std::string target = request.path.empty() ? document.pdf.Path() : request.path;
    const std::string key = KeyOf(target);
    const auto other = m_byKey.find(key);
    if (other != m_byKey.end() && other->second != handle)
        Raise(pdErrAlreadyOpen, target + ": cannot be replaced, because it is open as another document");
    Tell(events.willSave, handle);
    if (events.willProtect) events.willProtect(target, document.pdf.Security());
    const std::string realFile = RealFileOf(document);
    const bool isSigned = IsSigned(document.pdf), isCertified = isSigned && IsCertified(document.pdf);
    ASErrorCode failed = 0;
    try {
        CFileForReplacing file(document.file);
        PdfSaveOptions options;
        options.beforeReplacing = [&] { file.LetGo(); };
        options.path = target;
        options.source = realFile;
        options.linearise = request.linearise;
        options.copy = request.copy;
        options.mustNotExist = mustNotExist;
        options.append = asked != Appending::Never ? asked : request.append;
        options.forget = forgets;
        options.cancelled = request.cancelled;
        options.progress = request.progress;
        options.remark = [](const std::string& text) { Diagnose(text); };
        Translated([&] { document.pdf.Save(options); });
        if (!request.copy) {
            DropFile(document);
            Part<CObjects>().Forget(handle);
        }
    } catch (const CHostRaise& raise) {
        failed = raise.Code();
        if (failed == fileErrExists) {  // the client goes on with another name
            document.nextSaveAppends = asked;
            document.nextSaveForgets = forgets;
        }
        if (events.didSave) events.didSave(handle, failed);
        throw;
    }
    const bool appended = document.pdf.WrittenWhole() == std::string();
    if (isCertified || (isSigned && !appended)) {
        Diagnose(target + ": signatures broken");
        Tell(events.didBreakSignatures, handle);
    }
    if (!request.copy) {
        document.standIn = Pretending() ? realFile : std::string();
        if (const auto old = m_byKey.find(document.key); old != m_byKey.end() && old->second == handle)
            m_byKey.erase(old);
        document.key = KeyOf(document.pdf.Path());
        m_byKey[document.key] = handle;
        document.newHandler.reset();
        document.newHandlerHasData = false;
        document.setFlags = document.clearedFlags = 0;
    }
    if (events.didSave) events.didSave(handle, 0);
}

bool CDocuments::AskPassword(PDDoc handle)
{
    CHostDocument& document = At(handle);
    document.candidatesTried = true;
    for (const std::string& candidate : passwordCandidates) {
        if (document.pdf.OpenedBy() == OpenedWith::Owner) break;
        Translated([&] { return document.pdf.Authorize(candidate, WantedRights::Owner); });
    }
    return !document.pdf.IsLocked();
}

namespace {

constexpr int kAlways = 4;
constexpr int kPDDocSystem = 3;

/// Clients compare system and number; these two arrive with the highest severity.
constexpr ASErrorCode Always(ASErrorCode code)
{
    return HOST_ERROR_CODE(kAlways, kPDDocSystem, static_cast<unsigned>(code) & 0xFFFFu);
}

ASErrorCode CodeOf(PdfProblem problem)
{
    switch (problem) {
        case PdfProblem::NotFound:
            return fileErrFNF;
        case PdfProblem::NoAccess:
            return fileErrPerm;
        case PdfProblem::NotAFile:
            return pdErrUnableToOpenDoc;
        case PdfProblem::CannotRead:
            return pdErrUnableToRead;
        case PdfProblem::NotAPdf:
            return pdErrUnknownFileType;
        case PdfProblem::NeedsRepair:
            return pdErrNeedRebuild;
        case PdfProblem::Damaged:
            return pdErrUnableToRecover;
        case PdfProblem::NoPages:
            return pdErrZeroPageFile;
        case PdfProblem::BadPage:
            return pdErrInvalidPageNumber;
        case PdfProblem::LastPage:
            return pdErrCannotDeleteAllPages;
        case PdfProblem::NeedsPassword:
            return Always(pdErrNeedPassword);
        case PdfProblem::UnsupportedSecurity:
            return pdErrNoCryptHandler;
        case PdfProblem::NotPermitted:
            return Always(pdErrOpNotPermitted);
        case PdfProblem::PasswordNotExpressible:
            return genErrBadParm;
        case PdfProblem::BadSecuritySettings:
        case PdfProblem::BadParameter:
            return genErrBadParm;
        case PdfProblem::NoPath:
            return genErrBadParm;
        case PdfProblem::Exists:
            return fileErrExists;
        case PdfProblem::DiskFull:
            return fileErrDiskFull;
        case PdfProblem::CannotWrite:
        case PdfProblem::NotReadBack:
            return pdErrUnableToWrite;
        case PdfProblem::InputChanged:
            return fileErrWrPerm;
        case PdfProblem::UnsupportedInput:
            return pdErrUnknownFileType;
        case PdfProblem::OutOfMemory:
            return genErrNoMemory;
        case PdfProblem::Cancelled:
            return pdErrCancelSave;
        case PdfProblem::Internal:
            return genErrGeneral;
    }
    return genErrGeneral;
}

}  // namespace

void RaisePdfError(const CPdfError& error)
{
    const bool needsPassword = error.Problem() == PdfProblem::NeedsPassword;
    Raise(CodeOf(error.Problem()),
          error.ReasonFirst(needsPassword ? "; put it into a file and name that with --password-file" : ""));
}

}  // namespace openhost
