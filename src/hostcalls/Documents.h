// Documents of the host.
//
// Everything here throws CHostException when the host raises. Pages are counted from 0.
#pragma once

#include "hostapi/HostTypes.h"

#include <optional>
#include <string>
#include <utility>

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
