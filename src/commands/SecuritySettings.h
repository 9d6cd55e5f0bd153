#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "common/SettingsRecord.h"
#include "hostcalls/Documents.h"
#include "protocol/ProtectOrder.h"
#include "sequence/StepDescription.h"

// How documents are to be secured: passwords, permissions, encryption, and where a password comes from.

/// Narrow code page texts. A fresh record allows everything and asks for no password.
struct SecuritySettings {
    std::int32_t encryptionMethod = 0;  // 0 host default, 1 RC4 128, 2 AES 128, 3 AES 256; anything else counts as 0
    bool passwordProtect = false;
    std::string password;      // opens the document
    std::string permPassword;  // grants all permissions
    bool useDataSourceForOpenPassword = false;
    std::string passwordField;
    bool useDataSourceForPermissionsPassword = false;
    std::string permPasswordField;
    bool canCopy = true;
    bool canEdit = true;
    bool canEditNotes = true;
    bool canPrint = true;
    bool canFillForms = true;
    bool canAssemble = true;
    bool canCreateTemplates = true;
    bool allowAll = false;
    bool hiResPrinting = true;
    bool canExtractPages = true;  // Kept: a record read from parameters without this key holds false.
    TextPairs fileMapping;        // file name without its folder, and its password
    bool useFileMapping = false;
    std::string searchRegex;
    std::string searchRegexFormat;
    bool searchForPassword = false;
    std::int32_t firstPageToSearch = 0;  // counted from 0
    std::int32_t lastPageToSearch = -1;  // -1: to the last page
    SettingsRectangle extractionArea;    // all zero: none
    bool extractPasswordFromPage = false;

    bool operator==(const SecuritySettings&) const = default;
};

/// The number of a method in the record.
[[nodiscard]] std::int32_t EncryptionCode(ProtectMethod method);
/// A fresh record with these rights and this method.
[[nodiscard]] SecuritySettings SettingsFor(ProtectMethod method, const DocumentRights& rights);

/// The name of the record inside a larger settings container.
inline constexpr char kSecuritySettingsKey[] = "SecuritySettings";

/// Absent keys take their defaults; white space in front of the two passwords is dropped. A text counts whether it is
/// stored narrow or wide.
[[nodiscard]] SecuritySettings ReadSecuritySettings(const CSettingsRecord& parameters);

/// Every key, in the fixed order of the record.
[[nodiscard]] CSettingsRecord WriteSecuritySettings(const SecuritySettings& settings);

/// The parameters that are no passwords: all but the two of the record; of the table only the file names.
[[nodiscard]] std::vector<OpenParameter> OpenSecurityParameters();

/// The permission bits for the host's security record; all bits set means no restriction.
[[nodiscard]] std::uint32_t PermissionWord(const SecuritySettings& settings);

/// Whether applying the settings would change a document at all.
[[nodiscard]] bool HasSecurityWork(const SecuritySettings& settings);

/// Why the document must not be secured with these settings; empty when it may. A password that should come from
/// somewhere is never replaced by none, nor by another one. `fileName` as for FindMappedPassword.
[[nodiscard]] std::string PasswordSourceProblem(const SecuritySettings& settings, const std::string& fileName);

/// The password listed for this file, whatever the letter case of its name; empty when its entry has none. `fileName`
/// is without its folder.
[[nodiscard]] std::optional<std::string> FindMappedPassword(const SecuritySettings& settings,
                                                            const std::string& fileName);

// Turns security settings into a request for the host's standard security handler and applies it.

class CAcrobatDoc;

/// The longest password that is handed to the host, in bytes of the narrow code page.
inline constexpr std::size_t kLongestPassword = 255;

/// What to ask of the host for one document: passwords trimmed and cut, permission word, key length and method.
/// `fileName` is without its folder; the lookup table overrides the open password for listed files only.
[[nodiscard]] StandardSecurityRequest MakeSecurityRequest(const SecuritySettings& settings,
                                                          const std::string& fileName, int hostMajorVersion);

/// Prepares the document's new security; it takes effect when the document is saved. With nothing to do the document
/// is left as it is. Answers why a password cannot be had; then, too, the document is as it was. Empty when all is
/// well. `fileName` as above. Throws CHostException when the host refuses.
[[nodiscard]] std::string ApplySecurity(CAcrobatDoc& document, const SecuritySettings& settings,
                                        const std::string& fileName, int hostMajorVersion);
