#include "commands/PasswordProtection.h"
#include "commands/SecuritySettings.h"
#include "common/Text.h"
#include "hostapi/HostConstants.h"
#include "hostcalls/Atoms.h"
#include "hostcalls/CabRecord.h"
#include "jobs/SequenceChecks.h"

#include <algorithm>
#include <cstdint>

namespace {

constexpr std::uint32_t kAllRights = 0xFFFFFFFF;

/// What both security steps have in common.
struct Protection {
    std::string openPassword, permissionsPassword;
    bool mayGetOpenPassword = false;  // from somewhere else
    bool restricts = false;
    bool isRc4 = false, isShortKey = false;
};

void CheckStrength(const Protection& protection, CSequenceFindings& findings)
{
    if (protection.isShortKey) {
        findings.Warning("weak-encryption", "A key this short is broken within minutes; use AES with 256 bits.");
    } else if (protection.isRc4) {
        findings.Warning("weak-encryption", "RC4 is not safe any more; use AES with 256 bits.");
    }
}

void CheckPasswords(const Protection& protection, CSequenceFindings& findings)
{
    const bool openToAll = protection.openPassword.empty(), owned = !protection.permissionsPassword.empty();
    if (openToAll && !owned && !protection.mayGetOpenPassword)
        findings.Warning("no-password",
                         "No password is set: everybody can open the documents and remove the protection.");
    if (protection.restricts && !owned)
        findings.Warning(
            "permissions-without-owner-password",
            "Rights are restricted but there is no password for the permissions, so whoever can open the "
            "document can lift the restrictions.");
    if (owned && !protection.restricts)
        findings.Note("nothing-restricted",
                      "There is a password for the permissions, but all rights are given anyway.");
    if (owned && protection.openPassword == protection.permissionsPassword)
        findings.Warning("same-password",
                         "Both passwords are the same: whoever can open a document may also change its permissions.");
}

/// Told of the password by its name, never by its text.
void CheckPasswordText(const char* which, const std::string& password, CSequenceFindings& findings)
{
    const std::string trimmed = Trim(password);
    if (trimmed.size() != password.size())
        findings.Warning("password-trimmed", std::string("Blanks around the ") + which + " password do not count.");
    if (trimmed.size() > kLongestPassword)
        findings.Warning("password-cut", std::string("Of the ") + which + " password only the first " +
                                             std::to_string(kLongestPassword) + " bytes count.");
}

// ---- our own step

void CheckTable(const SecuritySettings& settings, CSequenceFindings& findings)
{
    if (settings.useFileMapping && settings.fileMapping.empty())
        findings.Warning("empty-table", "The step is to look up passwords, but the table is empty.");
    if (!settings.useFileMapping && !settings.fileMapping.empty())
        findings.Warning("unused-table", "The step has a table of passwords but is not told to use it.");
    const auto isEmpty = [](const auto& pair) { return Trim(pair.second).empty(); };
    if (settings.useFileMapping && std::any_of(settings.fileMapping.begin(), settings.fileMapping.end(), isEmpty))
        findings.Warning(
            "no-password",
            "The table of passwords holds an empty one: the step fails for that file, which is not saved.");
}

void CheckUnusedSources(const SecuritySettings& settings, CSequenceFindings& findings)
{
    if (settings.useDataSourceForOpenPassword || settings.useDataSourceForPermissionsPassword ||
        settings.searchForPassword || settings.extractPasswordFromPage)
        findings.Error("password-source-unused",
                       "Passwords from a data source or from the pages cannot be had yet: the step fails for every "
                       "file.");
}

void CheckProtectStep(const SequenceStep& step, CSequenceFindings& findings)
{
    const CSettingsRecord record = RecordFromCab(step.parameters);
    const SecuritySettings settings = ReadSecuritySettings(record);
    CheckUnusedSources(settings, findings);
    if (record.Empty() || !HasSecurityWork(settings))
        return findings.Warning("protects-nothing",
                                "The step protects nothing: it has neither passwords that count nor "
                                "restrictions.");
    if (settings.encryptionMethod < 0 || settings.encryptionMethod > 3)
        findings.Error("parameter-value", "There is no encryption method " +
                                              std::to_string(settings.encryptionMethod) +
                                              "; use 3 for AES with 256 bits.");
    if (settings.encryptionMethod == 0)
        findings.Note("encryption-default", "The host chooses the encryption; use method 3 for AES with 256 bits.");
    Protection protection;
    protection.openPassword = Trim(settings.password);
    protection.permissionsPassword = Trim(settings.permPassword);
    protection.mayGetOpenPassword = settings.useFileMapping && !settings.fileMapping.empty();
    protection.restricts = PermissionWord(settings) != kAllRights;
    protection.isRc4 = settings.encryptionMethod == 1;
    CheckStrength(protection, findings);
    CheckPasswords(protection, findings);
    CheckPasswordText("open", record.String("Password", record.Wide("Password")), findings);
    CheckPasswordText("permissions", record.String("PermPassword", record.Wide("PermPassword")), findings);
    CheckTable(settings, findings);
}

// ---- the host's step

std::string PasswordOf(CCabView settings, const char* key, const char* hasKey)
{
    return settings.Bool(hasKey, true) ? settings.StringOrText(key).value_or("") : std::string();
}

void CheckHostStep(const SequenceStep& step, CSequenceFindings& findings)
{
    const auto atom = step.parameters.Atom("CryptHandler");
    const std::string handler = atom ? AtomText(*atom) : step.parameters.StringOrText("CryptHandler").value_or("");
    if (handler.empty())
        return findings.Warning("removes-security",
                                "The step names no security handler, so it removes the protection.");
    if (handler != "Standard") return;
    const CCabView settings = step.parameters.Cab("SecuritySettings");
    if (!settings)
        return findings.Error("no-settings", "The step names a security handler but has no settings for it.");
    const int keyLength = settings.Int("keyLength", 32), revision = settings.Int("revision", 6),
              method = settings.Int("encryptMethod", 7);
    Protection protection;
    protection.openPassword = PasswordOf(settings, "userPW", "hasUserPW");
    protection.permissionsPassword = PasswordOf(settings, "ownerPW", "hasOwnerPW");
    protection.restricts = static_cast<std::uint32_t>(settings.Int("perms", -1)) != kAllRights;
    protection.isShortKey = (keyLength > 0 && keyLength < STDSEC_KEYLENGTH_RC4_V2) || revision == 2;
    protection.isRc4 = method == STDSEC_METHOD_RC4_V2 || revision == 3;
    CheckStrength(protection, findings);
    CheckPasswords(protection, findings);
}

}  // namespace

void CheckSecurity(const SequenceStep& step, CSequenceFindings& findings)
{
    if (step.handler == kProtectStep) return CheckProtectStep(step, findings);
    if (step.handler == "DocSecurity") return CheckHostStep(step, findings);
}
