// Documents as plug-ins hold them, and the raises that problems with their files become.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "hostapi/HostRecords.h"
#include "openhost/core/Atoms.h"
#include "openhost/core/Handles.h"
#include "openhost/core/Host.h"
#include "openhost/pdf/PdfDocument.h"
#include "openhost/pdf/TextCache.h"

namespace openhost {

/// One open document as plug-ins hold it.
struct CHostDocument {
    explicit CHostDocument(CPdfDocument opened) : pdf(std::move(opened)) {}

    CPdfDocument pdf;
    std::string key;           // canonical path, under which a second opening finds it; empty when it has no file
    int openCount = 1;         // openings, each matched by one closing
    int acquireCount = 0;      // acquisitions beyond the openings
    bool openedFully = false;  // false while its password is still being asked for
    bool candidatesTried = false;
    std::optional<ASAtom> newHandler;  // security handler chosen for the next save; the null atom removes security
    bool newHandlerHasData = false;    // the chosen handler got its settings
    bool nextSaveIsNew = false;        // the next save replaces no file
    Appending nextSaveAppends = Appending::Never;
    bool nextSaveForgets = false;  // the next save leaves no trace of old information
    ASInt32 setFlags = 0;          // flags that plug-ins switched on or off by hand
    ASInt32 clearedFlags = 0;
    ASFile file = nullptr;  // made when somebody asks for it
    std::string standIn;    // after the pretended saves of a trial run: the file that the document really is in
    std::string madeFrom;   // the file that a converter made the document from; it never becomes the document's own
};

/// The file on disk that the document's content comes from; empty for one made in memory.
const std::string& RealFileOf(const CHostDocument& document);

struct DocumentSaveRequest {
    std::string path = {};  // empty: the document's own file
    bool linearise = false;
    bool copy = false;
    bool mustNotExist = false;
    Appending append = Appending::Never;
    std::function<bool()> cancelled = {};
    std::function<void(int percent)> progress = {};
};

/// What other parts of the host want to hear about documents.
struct DocumentEvents {
    std::function<void(PDDoc)> didOpen, willSave, willClose, didClose;
    std::function<void(PDDoc, ASErrorCode)> didSave;
    /// A signed document was written as a whole, which makes its signatures worthless.
    std::function<void(PDDoc)> didBreakSignatures;
    /// What protects the file that a document was opened from.
    std::function<void(const std::string& path, const SecurityInfo&)> didLookAtSecurity;
    /// What is going to protect the file, if the save succeeds.
    std::function<void(const std::string& path, const SecurityInfo&)> willProtect;
};

/// All open documents. Every failure is a CHostRaise whose message names the file and the reason.
class CDocuments {
public:
    /// Asks for the password of a locked document; answers whether it now may be read.
    using Authorise = std::function<bool(PDDoc)>;

    /// Opens a file, or counts one more opening of the document that already has it open.
    PDDoc Open(const std::string& path, bool repair, const Authorise& authorise);
    /// Takes over a document that a converter made.
    PDDoc Adopt(CPdfDocument document);
    /// Undoes one opening. Raises pdErrUnableToCloseDueToRefs while something of the document is still held.
    void Close(PDDoc handle);
    void Save(PDDoc handle, const DocumentSaveRequest& request);
    /// The file behind the document, open for reading; null when it has none yet. It belongs to the document.
    ASFile FileOf(PDDoc handle);

    CHostDocument& At(const void* document) const { return m_documents.At(document); }
    bool Known(const void* document) const { return m_documents.Find(document) != nullptr; }
    std::size_t Live() const { return m_documents.Live(); }
    std::vector<PDDoc> All() const;

    /// Answers of the host's own password prompt, in the order in which they are tried (UTF-8).
    std::vector<std::string> passwordCandidates;
    /// What was read of documents before; null when nothing of them may be kept.
    std::unique_ptr<CTextCache> textCache;
    DocumentEvents events;

    /// The host's own password prompt: tries the candidates, for the owner's rights first, and answers whether the
    /// document may now be read.
    bool AskPassword(PDDoc handle);

private:
    PDDoc OpenNew(const std::string& path, const std::string& key, bool repair, const Authorise& authorise);
    void Forget(PDDoc handle);

    CHandles<CHostDocument, PDDoc> m_documents{"document"};
    std::unordered_map<std::string, PDDoc> m_byKey;
};

inline CHostDocument& DocumentAt(PDDoc document) { return Part<CDocuments>().At(document); }

/// The raise that stands for a failure of the document layer.
[[noreturn]] void RaisePdfError(const CPdfError& error);

/// Runs work of the document layer and turns its failures into raises.
template <class Work>
auto Translated(Work work)
{
    try {
        return work();
    } catch (const CPdfError& error) {
        RaisePdfError(error);
    }
}

}  // namespace openhost
