#include "sequence/Protection.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "base/Unicode.h"
#include "hostcalls/HostPath.h"
#include "sequence/Findings.h"

namespace {

struct Range {
    char32_t first, last;
};

/// Letters of scripts that are written from right to left.
constexpr Range kRightToLeft[] = {{0x5BE, 0x5BE},   {0x5C0, 0x5C0},   {0x5C3, 0x5C3},   {0x5D0, 0x5F4},
                                  {0x61B, 0x61B},   {0x61F, 0x63A},   {0x640, 0x64A},   {0x66D, 0x66F},
                                  {0x671, 0x6D5},   {0x6DD, 0x6DD},   {0x6E5, 0x6E6},   {0x6FA, 0x710},
                                  {0x712, 0x72C},   {0x780, 0x7A5},   {0x7B1, 0x7B1},   {0xFB1D, 0xFB1D},
                                  {0xFB1F, 0xFB28}, {0xFB2A, 0xFD3D}, {0xFD50, 0xFDFC}, {0xFE70, 0xFEFC}};

bool IsRightToLeft(char32_t character)
{
    return std::any_of(std::begin(kRightToLeft), std::end(kRightToLeft),
                       [&](const Range& range) { return character >= range.first && character <= range.last; });
}

bool IsLatinLetter(char32_t character)
{
    return (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z');
}

bool IsControl(char32_t character) { return character < 0x20 || (character >= 0x7F && character < 0xA0); }

/// Why AES with 256 bits does not take the password, as far as this can be told without the host's tables.
std::string RefusedByAes256(const std::string& password)
{
    const std::u32string text = Utf8ToUtf32(password);
    if (std::any_of(text.begin(), text.end(), IsControl))
        return "it has a control character, such as a tab or a line end; take that out";
    if (std::none_of(text.begin(), text.end(), IsRightToLeft)) return {};
    if (std::any_of(text.begin(), text.end(), IsLatinLetter))
        return "it mixes letters that are written from right to left with others; use one kind of them";
    if (!IsRightToLeft(text.front()) || !IsRightToLeft(text.back()))
        return "it is written from right to left, so it must begin and end with such a letter and not with a digit "
               "or a sign";
    return {};
}

/// Why the older methods do not take it.
std::string RefusedByOlder(const std::string& password)
{
    if (!CHostText::FromUtf8(password).ToPdText().starts_with("\xFE\xFF")) return {};
    return "it has characters that only AES with 256 bits can express; use that (method 3), or another password";
}

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

}  // namespace

void CheckProtection(const Protection& protection, CSequenceFindings& findings)
{
    CheckStrength(protection, findings);
    CheckPasswords(protection, findings);
}

void CheckPasswordIsTaken(const char* which, const std::string& password, bool aes256, CSequenceFindings& findings)
{
    if (password.empty()) return;
    const std::string reason = aes256 ? RefusedByAes256(password) : RefusedByOlder(password);
    if (reason.empty()) return;
    findings.Error("password-refused", std::string("The encryption does not take the ") + which +
                                           " password, and no document would be saved: " + reason + ".");
}
