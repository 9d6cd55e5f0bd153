#include "commands/SecuritySettings.h"

#include <string_view>
#include <utility>

#include "base/Names.h"
#include "base/Text.h"
#include "commands/PagePassword.h"
#include "pdflib/AcrobatDoc.h"

namespace {

constexpr std::uint32_t kAllAllowed = 0xFFFFFFFF;
constexpr std::uint32_t kNothingAllowed = 0xFFFDF243;
constexpr std::uint32_t kNothingButCopying = 0xFFFDF253;

constexpr char kOpenPassword[] = "Password";
constexpr char kPermissionsPassword[] = "PermPassword";

// The one list of the record's keys, in the order in which they are stored.
template <class Settings, class Visitor>
void VisitFields(Settings& s, const Visitor& visitor)
{
    visitor.Integer("EncryptionMethod", s.encryptionMethod, 0);
    visitor.Flag("PasswordProtect", s.passwordProtect, false);
    visitor.Text(kOpenPassword, s.password);
    visitor.Text(kPermissionsPassword, s.permPassword);
    visitor.Flag("UseDataSourceForOpenPassword", s.useDataSourceForOpenPassword, false);
    visitor.Text("PasswordField", s.passwordField);
    visitor.Flag("UseDataSourceForPermissionsPassword", s.useDataSourceForPermissionsPassword, false);
    visitor.Text("PermPasswordField", s.permPasswordField);
    visitor.Flag("CanCopy", s.canCopy, true);
    visitor.Flag("CanEdit", s.canEdit, true);
    visitor.Flag("CanEditNotes", s.canEditNotes, true);
    visitor.Flag("CanPrint", s.canPrint, true);
    visitor.Flag("CanFillForms", s.canFillForms, true);
    visitor.Flag("CanAssemble", s.canAssemble, true);
    visitor.Flag("CanCreateTemplates", s.canCreateTemplates, true);
    visitor.Flag("AllowAll", s.allowAll, false);
    visitor.Flag("HiResPrinting", s.hiResPrinting, true);
    visitor.Flag("CanExtractPages", s.canExtractPages, false);  // Kept: unlike in a fresh record.
    visitor.Map("FileMapping", s.fileMapping);
    visitor.Flag("UseFileMapping", s.useFileMapping, false);
    visitor.Text("SearchRegex", s.searchRegex);
    visitor.Text("SearchRegexFormat", s.searchRegexFormat);
    visitor.Flag("SearchForPassword", s.searchForPassword, false);
    visitor.Integer("FirstPageToSearch", s.firstPageToSearch, 0);
    visitor.Integer("LastPageToSearch", s.lastPageToSearch, -1);
    visitor.Rectangle("ExtractionArea", s.extractionArea);
    visitor.Flag("ExtractPasswordFromPage", s.extractPasswordFromPage, false);
}

struct Reader {
    const CSettingsRecord& record;

    void Integer(const char* key, std::int32_t& value, std::int32_t absent) const { value = record.Int(key, absent); }
    void Flag(const char* key, bool& value, bool absent) const { value = record.Bool(key, absent); }
    void Text(const char* key, std::string& value) const { value = record.AnyText(key); }
    void Map(const char* key, TextPairs& value) const { value = ReadMap(record, key); }
    void Rectangle(const char* key, SettingsRectangle& value) const { value = ReadRectangle(record, key, {}); }
};

struct Writer {
    CSettingsRecord& record;

    void Integer(const char* key, std::int32_t value, std::int32_t) const { record.PutInt(key, value); }
    void Flag(const char* key, bool value, bool) const { record.PutBool(key, value); }
    void Text(const char* key, const std::string& value) const { record.PutString(key, value); }
    void Map(const char* key, const TextPairs& value) const { PutMap(record, key, value); }
    void Rectangle(const char* key, const SettingsRectangle& value) const { PutRectangle(record, key, value); }
};

struct OpenLister {
    using Kind = OpenParameter::Kind;
    std::vector<OpenParameter>& open;

    void Integer(const char* key, std::int32_t, std::int32_t) const { open.push_back({key}); }
    void Flag(const char* key, bool, bool) const { open.push_back({key}); }
    void Text(const char* key, const std::string&) const
    {
        const std::string_view name = key;
        if (name != kOpenPassword && name != kPermissionsPassword) open.push_back({key});
    }
    void Map(const char* key, const TextPairs&) const { open.push_back({key, Kind::PasswordTable}); }
    void Rectangle(const char* key, const SettingsRectangle&) const { open.push_back({key, Kind::Rectangle}); }
};

}  // namespace

std::int32_t EncryptionCode(ProtectMethod method) { return static_cast<std::int32_t>(method) + 1; }

SecuritySettings SettingsFor(ProtectMethod method, const DocumentRights& rights)
{
    const std::pair<DocumentRight, bool SecuritySettings::*> flags[] = {
        {DocumentRight::Print, &SecuritySettings::canPrint},
        {DocumentRight::PrintHigh, &SecuritySettings::hiResPrinting},
        {DocumentRight::Copy, &SecuritySettings::canCopy},
        {DocumentRight::Edit, &SecuritySettings::canEdit},
        {DocumentRight::Annotate, &SecuritySettings::canEditNotes},
        {DocumentRight::FillForms, &SecuritySettings::canFillForms},
        {DocumentRight::Assemble, &SecuritySettings::canAssemble},
        {DocumentRight::Templates, &SecuritySettings::canCreateTemplates},
        {DocumentRight::Extract, &SecuritySettings::canExtractPages}};
    SecuritySettings settings;
    settings.encryptionMethod = EncryptionCode(method);
    for (const auto& [right, flag] : flags) settings.*flag = rights.contains(right);
    return settings;
}

SecuritySettings ReadSecuritySettings(const CSettingsRecord& parameters)
{
    SecuritySettings settings;
    VisitFields(settings, Reader{parameters});
    settings.password = TrimLeft(settings.password);
    settings.permPassword = TrimLeft(settings.permPassword);
    return settings;
}

CSettingsRecord WriteSecuritySettings(const SecuritySettings& settings)
{
    CSettingsRecord record;
    VisitFields(settings, Writer{record});
    return record;
}

std::vector<OpenParameter> OpenSecurityParameters()
{
    std::vector<OpenParameter> open;
    const SecuritySettings any;
    VisitFields(any, OpenLister{open});
    return open;
}

std::uint32_t PermissionWord(const SecuritySettings& settings)
{
    if (settings.allowAll) return kAllAllowed;
    const struct {
        bool allowed;
        std::uint32_t bit;
    } rights[] = {
        {settings.canEdit, 0x8},         {settings.canEditNotes, 0x20},          {settings.canPrint, 0x4},
        {settings.canFillForms, 0x100},  {settings.canCreateTemplates, 0x20000}, {settings.canAssemble, 0x400},
        {settings.hiResPrinting, 0x800}, {settings.canExtractPages, 0x80}};
    std::uint32_t word = settings.canCopy ? kNothingButCopying : kNothingAllowed;
    for (const auto& right : rights) {
        if (right.allowed) word |= right.bit;
    }
    return word;
}

bool HasSecurityWork(const SecuritySettings& settings)
{
    if (PermissionWord(settings) != kAllAllowed || WantsPagePassword(settings)) return true;
    return settings.passwordProtect &&
           (!settings.password.empty() || !settings.permPassword.empty() || settings.useDataSourceForOpenPassword ||
            settings.useDataSourceForPermissionsPassword);
}

std::string PasswordSourceProblem(const SecuritySettings& settings, const std::string& fileName)
{
    if (settings.useDataSourceForOpenPassword || settings.useDataSourceForPermissionsPassword)
        return "Passwords cannot be taken from the fields of a data source yet.";
    if (!settings.useFileMapping || !(settings.passwordProtect || HasSecurityWork(settings))) return {};
    const auto listed = FindMappedPassword(settings, fileName);
    if (!listed || !Trim(*listed).empty()) return {};
    return "The lookup table lists " + fileName + " without a password.";
}

std::optional<std::string> FindMappedPassword(const SecuritySettings& settings, const std::string& fileName)
{
    const std::string wanted = MatchedName(fileName);
    for (const auto& [name, password] : settings.fileMapping) {
        if (MatchedName(name) == wanted) return password;
    }
    return std::nullopt;
}

namespace {

struct EncryptionMethod {
    int keyLengthBytes;
    int revision;     // 0: the host chooses
    int cryptMethod;  // 0: the host chooses
};

constexpr int kFirstHostWithMethods = 9;

constexpr EncryptionMethod MethodFor(int number, int hostMajorVersion)
{
    constexpr EncryptionMethod methods[] = {{16, 0, 0}, {16, 3, 2}, {16, 4, 6}, {32, 5, 7}};
    const bool known = number >= 0 && number < static_cast<int>(std::size(methods));
    return methods[known && hostMajorVersion >= kFirstHostWithMethods ? number : 0];
}

// The host's record holds bytes; a character that would not fit as a whole is left out.
std::string CleanPassword(const std::string& password)
{
    std::string clean = Trim(password);
    if (clean.size() <= kLongestPassword) return clean;
    std::size_t end = kLongestPassword;
    const auto continues = [&clean](std::size_t at) {
        return (static_cast<unsigned char>(clean[at]) & 0xC0) == 0x80;
    };
    while (end > kLongestPassword - 3 && continues(end)) --end;
    if (continues(end)) end = kLongestPassword;  // no text at all: cut as it stands
    clean.resize(end);
    return clean;
}

}  // namespace

StandardSecurityRequest MakeSecurityRequest(const SecuritySettings& settings, const std::string& fileName,
                                            int hostMajorVersion)
{
    std::string openPassword = settings.password;
    if (settings.useFileMapping) openPassword = FindMappedPassword(settings, fileName).value_or(openPassword);
    const EncryptionMethod method = MethodFor(settings.encryptionMethod, hostMajorVersion);

    StandardSecurityRequest request;
    request.openPassword = CleanPassword(openPassword);
    request.permissionsPassword = CleanPassword(settings.permPassword);
    request.permissions = PermissionWord(settings);
    request.keyLengthBytes = method.keyLengthBytes;
    request.revision = method.revision;
    request.cryptMethod = method.cryptMethod;
    return request;
}

std::string ApplySecurity(CAcrobatDoc& document, const SecuritySettings& settings, const std::string& fileName,
                          int hostMajorVersion)
{
    if (std::string problem = PasswordSourceProblem(settings, fileName); !problem.empty()) return problem;
    if (!HasSecurityWork(settings)) return {};
    SecuritySettings own = settings;
    const bool listed = settings.useFileMapping && FindMappedPassword(settings, fileName);
    if (WantsPagePassword(settings) && !listed) {
        auto password = PagePassword(document.Document(), settings);
        if (!password) return password.Error();
        own.password = std::move(*password);
    }
    document.ApplyStandardSecurity(MakeSecurityRequest(own, fileName, hostMajorVersion));
    return {};
}
