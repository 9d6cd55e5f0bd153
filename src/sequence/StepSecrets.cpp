#include "sequence/StepSecrets.h"

#include "base/Text.h"
#include "hostapi/HostConstants.h"

#include <algorithm>
#include <set>

namespace {

constexpr char kHostSecurityStep[] = "DocSecurity";
constexpr char kTable[] = "FileMapping";
constexpr char kTableCount[] = "NumItems";

/// What our own steps have besides passwords.
constexpr const char* kOfProtectStep[] = {"EncryptionMethod",
                                          "PasswordProtect",
                                          "UseDataSourceForOpenPassword",
                                          "PasswordField",
                                          "UseDataSourceForPermissionsPassword",
                                          "PermPasswordField",
                                          "CanCopy",
                                          "CanEdit",
                                          "CanEditNotes",
                                          "CanPrint",
                                          "CanFillForms",
                                          "CanAssemble",
                                          "CanCreateTemplates",
                                          "AllowAll",
                                          "HiResPrinting",
                                          "CanExtractPages",
                                          "UseFileMapping",
                                          "SearchRegex",
                                          "SearchRegexFormat",
                                          "SearchForPassword",
                                          "FirstPageToSearch",
                                          "LastPageToSearch",
                                          "ExtractPasswordFromPage",
                                          nullptr};
constexpr const char* kOfFileSteps[] = {"File", nullptr};
constexpr const char* kNoNames[] = {nullptr};

struct OwnStep {
    const char* handler;
    const char* const* harmless;
};
constexpr OwnStep kOwnSteps[] = {{"QLNX_FerrulePasswordProtectCommand", kOfProtectStep},
                                 {"QLNX_FerruleProcessWithExternalAppCommand", kOfFileSteps},
                                 {"QLNX_FerrulePurgeIndexCommand", kOfFileSteps},
                                 {"QLNX_FerruleRebuildIndexCommand", kOfFileSteps}};

const char* const* HarmlessNames(const std::string& handler)
{
    for (const OwnStep& step : kOwnSteps)
        if (handler == step.handler) return step.harmless;
    return kNoNames;
}

bool IsAmong(const char* const* names, const std::string& key)
{
    for (; *names; ++names)
        if (key == *names) return true;
    return false;
}

/// Names of any maker's parameters, slips of the pen included. A password's field in a table of data is none.
bool SoundsLikePassword(const std::string& key)
{
    const std::string name = ToLowerAscii(key);
    if (name.ends_with("field")) return false;
    for (const char* word : {"passw", "pasw", "passphrase", "passcode", "paswd", "pwd", "kennwort", "secret"})
        if (name.find(word) != std::string::npos) return true;
    return name.ends_with("pw");
}

bool IsOneOf(const std::string& key, std::initializer_list<const char*> names)
{
    return std::any_of(names.begin(), names.end(), [&](const char* name) { return key == name; });
}

/// In a flat list each file name is followed by its password.
bool IsFirstOfPair(const std::string& key)
{
    return !key.empty() && key.find_first_not_of("0123456789") == std::string::npos && (key.back() - '0') % 2 == 0;
}

/// Whether the list has as many entries as it says, all there, in pairs. In another one nobody knows what is what.
bool IsWholeTable(CCabView cab)
{
    const auto keys = cab.Keys();
    const std::set<std::string> names(keys.begin(), keys.end());
    const int count = cab.Int(kTableCount, -1);
    if (count < 0 || count % 2 != 0 || names.size() != static_cast<std::size_t>(count) + 1) return false;
    for (int number = 0; number < count; ++number)
        if (!names.contains(std::to_string(number))) return false;
    return true;
}

bool IsFilledSecret(const CSecretEntries& secrets, CCabView cab, const std::string& key)
{
    switch (cab.Type(key.c_str())) {
        case kASValueText:
        case kASValueString:
            return secrets.HidesText(key) && !cab.StringOrText(key.c_str()).value_or("").empty();
        case kASValueBinary:
            return secrets.HidesText(key) && !cab.Binary(key.c_str()).value_or("").empty();
        case kASValueAtom:
            return secrets.HidesText(key);
        case kASValueInteger:
        case kASValueDouble:
            return secrets.HidesNumber(key);
        default:
            return false;
    }
}

bool AnySecret(const CSecretEntries& secrets, CCabView cab)
{
    const auto keys = cab.Keys();
    return std::any_of(keys.begin(), keys.end(), [&](const std::string& key) {
        const CCabView nested = cab.Cab(key.c_str());
        return nested ? AnySecret(secrets.Under(key, nested), nested) : IsFilledSecret(secrets, cab, key);
    });
}

}  // namespace

CSecretEntries::CSecretEntries(const std::string& handler) : m_place(Place::Elsewhere)
{
    if (MeansOwnStep(handler)) {
        m_place = Place::OwnStep;
        m_harmless = HarmlessNames(handler);
    } else if (EqualsIgnoreCaseAscii(handler, kHostSecurityStep)) {
        m_place = Place::SecurityStep;
    }
}

CSecretEntries CSecretEntries::Table(CCabView cab)
{
    CSecretEntries table(Place::PasswordTable);
    table.m_wholeTable = IsWholeTable(cab);
    return table;
}

CSecretEntries CSecretEntries::Under(const std::string& key, CCabView cab) const
{
    switch (m_place) {
        case Place::OwnStep:
            if (m_harmless == kOfProtectStep && key == kTable) return Table(cab);
            return CSecretEntries(m_harmless == kOfProtectStep && key == "ExtractionArea" ? Place::Rectangle
                                                                                          : Place::Hidden);
        case Place::SecurityStep:
        case Place::SecuritySettings:
            return CSecretEntries(Place::SecuritySettings);
        case Place::Elsewhere:
            if (key == kTable) return Table(cab);
            return CSecretEntries(SoundsLikePassword(key) ? Place::Hidden : Place::Elsewhere);
        default:
            return CSecretEntries(Place::Hidden);
    }
}

bool CSecretEntries::HidesText(const std::string& key) const
{
    switch (m_place) {
        case Place::OwnStep:
            return !IsAmong(m_harmless, key);
        case Place::SecurityStep:
            return key != "CryptHandler";
        case Place::PasswordTable:
            return !m_wholeTable || !IsFirstOfPair(key);
        case Place::Elsewhere:
            return SoundsLikePassword(key);
        default:
            return true;
    }
}

bool CSecretEntries::HidesNumber(const std::string& key) const
{
    switch (m_place) {
        case Place::SecurityStep:
        case Place::SecuritySettings:
            return SoundsLikePassword(key);
        case Place::Rectangle:
            return !IsOneOf(key, {"Left", "Right", "Top", "Bottom"});
        case Place::PasswordTable:
            return key != kTableCount && HidesText(key);
        default:
            return HidesText(key);
    }
}

bool HoldsPassword(const std::string& handler, CCabView parameters)
{
    return AnySecret(CSecretEntries(handler), parameters);
}

bool MeansOwnStep(const std::string& handler)
{
    const std::string name = ToLowerAscii(handler);
    return name.starts_with("qlnx") || name.find("ferrule") != std::string::npos;
}
