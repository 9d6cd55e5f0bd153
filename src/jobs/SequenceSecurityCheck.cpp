#include "base/Text.h"
#include "commands/SecuritySettings.h"
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

/// What is true of all protection by this encryption.
void CheckReadable(CSequenceFindings& findings)
{
    findings.Note("metadata-readable",
                  "The descriptive metadata of the document (title, author, keywords and the like) stay readable "
                  "without a password; its pages do not.");
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

bool HasPassword(const SecuritySettings& settings)
{
    return !Trim(settings.password).empty() || !Trim(settings.permPassword).empty();
}

/// Why a step without work has none.
std::string WhyNothing(const SecuritySettings& settings)
{
    if (HasPassword(settings) && !settings.passwordProtect)
        return "all rights are given, and the passwords count only with \"PasswordProtect\" set to true (a boolean)";
    if (settings.useFileMapping && !settings.fileMapping.empty())
        return "all rights are given, and a table of passwords counts only beside a password for the other files and "
               "with \"PasswordProtect\" set to true";
    return "it has neither passwords nor restrictions";
}

/// Restrictions bring the passwords into force, too.
void CheckFlag(const SecuritySettings& settings, CSequenceFindings& findings)
{
    if (settings.passwordProtect || !HasPassword(settings)) return;
    findings.Note("passwords-count",
                  "\"PasswordProtect\" is not true, but the passwords count nevertheless, because the step restricts "
                  "rights.");
}

void CheckProtectStep(const SequenceStep& step, CSequenceFindings& findings)
{
    const CSettingsRecord record = RecordFromCab(step.parameters);
    const SecuritySettings settings = ReadSecuritySettings(record);
    CheckUnusedSources(settings, findings);
    if (record.Empty() || !HasSecurityWork(settings))
        return findings.Warning("protects-nothing", "The step protects nothing: " + WhyNothing(settings) + ".");
    CheckFlag(settings, findings);
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
    const bool aes256 = settings.encryptionMethod == 3;
    CheckPasswordIsTaken("open", protection.openPassword, aes256, findings);
    CheckPasswordIsTaken("permissions", protection.permissionsPassword, aes256, findings);
    if (!protection.isRc4) CheckReadable(findings);
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
    const bool aes256 = revision >= 5 || method == STDSEC_METHOD_AES_V3 || keyLength == 32;
    CheckPasswordIsTaken("open", protection.openPassword, aes256, findings);
    CheckPasswordIsTaken("permissions", protection.permissionsPassword, aes256, findings);
}

}  // namespace

void CheckSecurity(const SequenceStep& step, CSequenceFindings& findings)
{
    if (step.handler == kProtectStep) return CheckProtectStep(step, findings);
    if (step.handler == "DocSecurity") return CheckHostStep(step, findings);
}
