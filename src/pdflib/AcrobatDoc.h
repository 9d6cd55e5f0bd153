// A document of the host as the plug-in works with it.
#pragma once

#include <string>

#include "hostcalls/Documents.h"

/// One document: the host document, the view when one was opened, and its path. Either owns the document or borrows
/// it.
///
/// The path is the one it was opened from or last saved to; it may differ from the document's own file.
/// Everything throws CHostException when the host raises, except the destructor.
class CAcrobatDoc {
public:
    enum class Closed { NothingOpen, Document, View };

    CAcrobatDoc() = default;

    /// Borrows a document, which must outlive this object; Close and the destructor leave it open.
    explicit CAcrobatDoc(PDDoc borrowed);

    CAcrobatDoc(CAcrobatDoc&& other) noexcept;
    CAcrobatDoc& operator=(CAcrobatDoc&& other) noexcept;

    /// Closes what is open without saving and without asking.
    ~CAcrobatDoc();

    /// Closes what is open, then opens a file.
    void Open(const std::string& path);

    /// Closes what is open, then takes over a document that stands for the file at `path`.
    void Adopt(CHostDocument document, const std::string& path);

    /// Opens a view unless the document has one; from then on the view is closed in the document's place. False when
    /// the host made none, and for a borrowed document.
    bool OpenView();

    /// Closes the view, or the document when it has none; says which. Nothing is saved. When the host refuses, it
    /// stays open. A borrowed document is only forgotten.
    Closed Close();

    explicit operator bool() const { return m_document != nullptr; }
    PDDoc Document() const { return m_document; }  // null when nothing is open
    AVDoc View() const { return m_view; }          // null without a view
    const std::string& FullPath() const { return m_path; }

    [[nodiscard]] int PageCount() const;

    /// What the document lost to damage when it was opened: one sentence. Empty when nothing is lost, as far as the
    /// host knows; a host that repaired it and cannot tell may have lost something. `repairIsLoss`: any repaired
    /// document may, as one that is only half copied.
    [[nodiscard]] std::string Loss(bool repairIsLoss) const;

    /// The path of the file behind the document at this moment; a step may have moved the document to another file.
    /// FullPath when it has none.
    [[nodiscard]] std::string CurrentFile() const;

    /// Saves to `path` with the document's own flags joined with `extraFlags`. The document's own flags are a full
    /// save when `path` is not the document's file, its security was changed or the host demands one, and else none.
    /// A save without the full flag goes to the document's own file.
    void SaveTo(const std::string& path, int extraFlags);

    [[nodiscard]] bool MayModify() const;
    [[nodiscard]] bool MayFullSave() const;

    [[nodiscard]] bool SecurityChanged() const { return m_securityChanged; }
    void MarkSecurityChanged() { m_securityChanged = true; }

    /// Sets new "Standard" security, marks it as changed and asks the host for a full save, so that others who hold
    /// the document know.
    void ApplyStandardSecurity(const StandardSecurityRequest& request);

private:
    int OwnSaveFlags(const std::string& path) const;
    AVDoc ViewToClose() const;
    void Forget() noexcept;

    PDDoc m_document = nullptr;
    AVDoc m_view = nullptr;
    std::string m_path;
    bool m_owned = false;
    bool m_shownByOthers = false;  // had a view before we opened it: that view is not ours to close
    bool m_securityChanged = false;
};
