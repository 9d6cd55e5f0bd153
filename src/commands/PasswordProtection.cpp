#include "commands/PasswordProtection.h"

#include "base/Text.h"
#include "pdflib/AcrobatDoc.h"

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
    if (HasSecurityWork(settings))
        document.ApplyStandardSecurity(MakeSecurityRequest(settings, fileName, hostMajorVersion));
    return {};
}
