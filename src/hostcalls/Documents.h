#pragma once

#include <optional>
#include <string>
#include <utility>

#include "hostapi/HostTypes.h"

// Documents of the host.
//
// Everything here throws CHostException when the host raises. Pages are counted from 0.

/// Owns one open of a document, or nothing. Closing does not save.
class CHostDocument {
public:
    CHostDocument() = default;
    explicit CHostDocument(PDDoc adopted) noexcept : m_document(adopted) {}
    CHostDocument(CHostDocument&& other) noexcept : m_document(other.Release()) {}
    CHostDocument& operator=(CHostDocument&& other) noexcept
    {
        std::swap(m_document, other.m_document);
        return *this;
    }
    ~CHostDocument();

    /// Opens a file, repaired when it is damaged; an encrypted one through the host's own password prompt.
    [[nodiscard]] static CHostDocument Open(const std::string& path);

    explicit operator bool() const { return m_document != nullptr; }
    PDDoc Get() const { return m_document; }                                 // borrowed
    PDDoc Release() noexcept { return std::exchange(m_document, nullptr); }  // the caller closes from here on

    /// Closes the document. When the host refuses, it stays open and owned.
    void Close();

private:
    PDDoc m_document = nullptr;
};

[[nodiscard]] int PageCount(PDDoc document);

/// The platform path of the file behind a document; nothing when it has none.
[[nodiscard]] std::optional<std::string> FilePath(PDDoc document);

/// The flag word: PDDocNeedsSave and its like.
[[nodiscard]] int DocumentFlags(PDDoc document);
void SetDocumentFlags(PDDoc document, int flags);

/// Saves with the host's flags (PDSaveFull and its like). Without a path the document's own file is written.
void SaveDocument(PDDoc document, int saveFlags, const std::optional<std::string>& path);

/// Whether the document's security allows an operation on a kind of object (PDPermReqObj..., PDPermReqOpr...).
[[nodiscard]] bool PermissionGranted(PDDoc document, unsigned object, unsigned operation);

// Changing the security of a document. Everything takes effect at the next full save.

/// What the "Standard" security handler is asked for. An empty password is not set.
struct StandardSecurityRequest {
    std::string openPassword;
    std::string permissionsPassword;
    unsigned permissions = 0xFFFFFFFF;  // the word of the document's /P entry
    int keyLengthBytes = 16;
    int revision = 0;     // 0 = the host chooses
    int cryptMethod = 0;  // 0 = the host chooses
};

/// Chooses the security handler by name; an empty name takes the security away. Throws CHostException.
void SetCryptHandler(PDDoc document, const std::string& name);

/// Hands a new record to the "Standard" handler. Throws CHostException: not permitted, no such handler, or a password
/// that the record has no room for (255 bytes).
void ApplyStandardSecurity(PDDoc document, const StandardSecurityRequest& request);

// Views (windows) of documents. A view owns its document: closing the view closes the document too.

/// Makes a view of an open document, under a title of its own unless that is empty. From now on close the view, not
/// the document. Null when the host makes none; throws CHostException.
[[nodiscard]] AVDoc OpenView(PDDoc document, const std::string& title);

/// The view of a document, null when it has none. Borrowed.
[[nodiscard]] AVDoc ViewOf(PDDoc document);

/// Closes a view and its document; false when the host kept it open. Without `noSave` the host may ask the user.
[[nodiscard]] bool CloseView(AVDoc view, bool noSave);
