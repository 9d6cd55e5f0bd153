#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "openhost/pdf/PdfError.h"

namespace openhost {

/// The permission bits of an encrypted document; they are also those of the file format.
namespace pdfright {
constexpr std::uint32_t kPrint = 0x4;
constexpr std::uint32_t kChange = 0x8;
constexpr std::uint32_t kCopy = 0x10;
constexpr std::uint32_t kAnnotate = 0x20;
constexpr std::uint32_t kFillForms = 0x100;
constexpr std::uint32_t kAccessibility = 0x200;
constexpr std::uint32_t kAssemble = 0x400;
constexpr std::uint32_t kPrintHigh = 0x800;
constexpr std::uint32_t kAll = 0xFFFFFFFF;
}  // namespace pdfright

/// Password security as a client asks for it; what is written follows these rules, the first that fits:
///
/// revision 5 or 6, method 7 or a key of 32 bytes   AES, 256 bits, revision 6 (5 is never written)
/// method 6 or 5                                    AES, 128 bits, revision 4
/// method 2                                         RC4, 128 bits, revision 3
/// method 0 with a key of 16 bytes                  AES, 128 bits, revision 4
/// anything else                                    refused: BadSecuritySettings
struct StandardSecurity {
    bool hasUser = false;   ///< a password to open the document
    bool hasOwner = false;  ///< a password to change its permissions
    std::string userPasswordUtf8;
    std::string ownerPasswordUtf8;
    std::uint32_t permissions = pdfright::kAll;  ///< bits of pdfright; reserved ones are set as the format demands
    int keyLengthBytes = 16;
    int revision = 0;
    int method = 0;               ///< 0 the host's choice, 2 RC4, 5 and 6 AES with 128 bits, 7 AES with 256 bits
    bool encryptMetadata = true;  ///< RC4 encrypts them in any case
};

/// The security that a document has now, or will have after its next save.
struct SecurityInfo {
    bool encrypted = false;
    int version = 0;   ///< /V
    int revision = 0;  ///< /R
    int method = 0;    ///< as in StandardSecurity
    int keyLengthBytes = 0;
    std::uint32_t permissions = pdfright::kAll;
    bool hasUser = false;  ///< opening needs a password (false also when it is not known)
    bool hasOwner = false;
    bool encryptMetadata = true;
};

}  // namespace openhost

class QPDF;

namespace openhost {

class CPdfDocument;

/// By which password an encrypted document was opened. None: it is not encrypted, or it is still locked.
enum class OpenedWith { None, User, Owner };

/// What Authorize is asked to obtain.
enum class WantedRights { Open, Owner };

/// What a client may want to do with a document.
enum class PdfRight {
    Change,
    ChangeSecurity,
    PrintLow,
    PrintHigh,
    Copy,
    CopyForAccessibility,
    Annotate,
    FillForms,
    Assemble,
    FullSave,
};

struct PdfOpenOptions {
    bool repair = true;  ///< false: a damaged file is refused with NeedsRepair
    /// Called once with the locked document when the empty password does not open it; tries its candidates by
    /// Authorize and answers whether to go on. Absent, or the document still locked afterwards: NeedsPassword.
    std::function<bool(CPdfDocument&)> authorise = {};
};

/// Whether a save that changes nothing but properties is appended to the file.
enum class Appending {
    Never,
    WherePossible,  ///< else the whole document is written
    Only,           ///< else the save fails: CannotWrite
};

struct PdfSaveOptions {
    std::string path = {};    ///< empty: the document's own file
    std::string source = {};  ///< the file the content comes from: nobody may read more of the new one; empty: own
    bool linearise = false;   ///< as far as the library can; see remark
    Appending append = Appending::Never;
    /// The whole document is written, and the save fails (CannotWrite) when the new file still holds a text that an
    /// entry had before SetInfo, outside of what the document shows.
    bool forget = false;
    bool copy = false;          ///< the document keeps its old file, its modifications and its pending security
    bool mustNotExist = false;  ///< an existing target is left alone: Exists
    std::function<bool()> cancelled = {};  ///< asked now and then; true ends the save, nothing is changed
    std::function<void(int percent)> progress = {};
    /// The new file is complete under a temporary name and is going to be read back; tests damage it here.
    std::function<void(const std::string& temporaryPath)> beforeReadBack = {};
    /// The new file is complete and was read back: whoever has the target open lets go of it now.
    std::function<void()> beforeReplacing = {};
    std::function<void(const std::string&)> remark = {};  ///< gets what was done otherwise than asked
};

/// One PDF document.
///
/// Owns its open file and everything read from it; movable, not copyable. One thread at a time.
/// Pages count from 0. Paths are bytes as the system has them. Information values are the bytes of PDF strings.
/// Fails: every member may throw CPdfError and nothing else; a failed call leaves document and files as they were,
/// except that a refused SetSecurity makes the next save fail (see there).
/// While locked (only inside the authorise callback) only Path, IsLocked, IsEncrypted, Security and Authorize serve.
class CPdfDocument {
public:
    static CPdfDocument Open(const std::string& path, const PdfOpenOptions& options = {});
    /// Reads a document from memory; it has no path until its first save and counts as modified.
    static CPdfDocument FromMemory(std::string bytes, const std::string& description);

    CPdfDocument(CPdfDocument&&) noexcept;
    CPdfDocument& operator=(CPdfDocument&&) noexcept;
    ~CPdfDocument();

    /// The file the document lives in; empty for one that was never saved.
    const std::string& Path() const;
    /// What messages call the document: its path, or what it was made from.
    const std::string& Description() const;
    /// 0 while locked.
    int PageCount();
    std::string PdfVersion();

    bool IsLocked() const;
    bool IsEncrypted() const;
    bool IsModified() const;
    void SetModified(bool modified);
    /// What was changed is allowed by a right of its own: the document may be saved without the right to change
    /// everything. Holds until the next save.
    void PermitSave();
    /// Whether reading Path() with PasswordBytes() gives the document as it is now, pending security aside.
    bool FileShowsPresentState() const;
    bool WasRepaired() const;
    /// What of the file did not come through the repair, or cannot be read: one sentence, empty when nothing is known
    /// to be lost. The first call reads every object, so that it costs time, and belongs before the first change;
    /// the answer then stays, also after a save.
    const std::string& Loss();
    bool IsLinearised();
    /// Has a filled signature field, a certification or usage rights.
    bool IsSigned();
    /// Signed in a way that makes any change of its properties a breach, also an appended one: a certification
    /// whatever level of changes it allows, a signature that limits later changes, or usage rights.
    bool IsCertified();
    /// What the library complained about, one line each.
    std::vector<std::string> Warnings() const;

    /// Tries one password (UTF-8) in each form that readers use. Answers whether the document now has at least the
    /// wanted rights; rights already obtained are never lost. Also serves later, to rise from user to owner.
    bool Authorize(std::string_view candidateUtf8, WantedRights wanted);
    OpenedWith OpenedBy() const;
    /// The stored permission word as an unsigned number; all ones without encryption and for the owner.
    std::uint32_t PermissionWord() const;
    bool Allows(PdfRight right) const;
    SecurityInfo Security() const;

    /// Prepares new security for the next full save.
    /// Fails: NotPermitted without owner rights, PasswordNotExpressible, BadSecuritySettings; and then every later
    /// save fails, too, until a SetSecurity or RemoveSecurity succeeds: a document whose protection was refused is
    /// not written without it.
    void SetSecurity(const StandardSecurity& security);
    /// The same for a request that is refused before it comes to SetSecurity.
    void RefuseSecurity(const CPdfError& reason);
    /// The next full save writes without encryption. Fails: NotPermitted; all stays as it was.
    void RemoveSecurity();
    /// Why the last security request was refused, so that every save fails; nothing when none was.
    const std::optional<CPdfError>& SecurityRefusal() const;
    /// True when the next save cannot leave the encryption as it is in the file.
    bool HasPendingSecurity() const;

    /// The value's bytes: PDFDocEncoding, or UTF-16BE behind its mark. Nothing when absent or not a string.
    std::optional<std::string> Info(const std::string& key);
    /// The same; what the information does not have is taken from the metadata packet, unless it was just taken away.
    std::optional<std::string> InfoOrMetadata(const std::string& key);
    std::vector<std::string> InfoKeys();
    /// Key without a slash; unknown keys are added, an empty value takes the entry away. Marks modified.
    /// Fails: NotPermitted; UnsupportedInput for an empty key or one with a number sign.
    void SetInfo(const std::string& key, const std::string& value);

    /// Whether the metadata packet, which a save brings in step with changed entries, has this text in it already;
    /// true when there is no packet that could be read.
    bool MetadataHold(const std::string& utf8);

    /// Writes the whole document: beside the target under a temporary name, flushed, read back, then put in its place
    /// at once. What does not come back is written once more without linearisation, and else fails: NotReadBack.
    /// The target may be the file being read and may be a symbolic link, which stays one; the document's own file is
    /// not replaced when it changed since it was opened: InputChanged. Without `copy` the document then lives in the
    /// new file and is no longer modified, and what was derived from it is stale.
    void Save(const PdfSaveOptions& options);
    /// Why the present state, and what SetInfo makes of it, cannot be saved by appending: one clause for people;
    /// empty when nothing is known to stand against it, which a save with Appending::Only may find out. An appended
    /// save leaves the bytes of the file as they are and adds the changed entries behind them, encrypted like the
    /// document: the information dictionary, and the metadata packet where it has a sound one. Modification dates are
    /// the caller's.
    std::string AppendObstacle();
    /// Why the last save wrote the whole document: one clause, empty when it appended; nothing before the first.
    const std::optional<std::string>& WrittenWhole() const;
    /// The present state without encryption, for other libraries.
    std::string WriteToMemory();
    /// The password's bytes that opened the file, for other libraries; empty when none was needed.
    const std::string& PasswordBytes() const;

    /// The library's view, for the layers above that read pages and objects; valid until the next Save.
    QPDF& Library();

    struct State;  ///< of the implementation
    explicit CPdfDocument(std::unique_ptr<State> state);

private:
    std::unique_ptr<State> m_state;
};

}  // namespace openhost
