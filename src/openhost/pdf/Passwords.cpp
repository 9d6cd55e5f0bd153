#include "openhost/pdf/Passwords.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <utility>

#include <qpdf/QUtil.hh>
#include <stringprep.h>

namespace openhost {
namespace {

struct SaslResult {
    int result = STRINGPREP_OK;  // of the library
    std::string text;
};

SaslResult PrepareBySasl(const std::string& utf8)
{
    char* prepared = nullptr;
    // Code points without a meaning when the profile was made (most emoji) pass: they occur in real passwords.
    const int result = stringprep_profile(utf8.c_str(), &prepared, "SASLprep", Stringprep_profile_flags{});
    if (result != STRINGPREP_OK) return {result, {}};
    const std::unique_ptr<char, decltype(&std::free)> owner(prepared, &std::free);
    return {STRINGPREP_OK, prepared};
}

std::optional<std::string> SaslPrepared(const std::string& utf8)
{
    SaslResult prepared = PrepareBySasl(utf8);
    if (prepared.result != STRINGPREP_OK) return std::nullopt;
    return std::move(prepared.text);
}

bool HasControlCharacter(std::string_view utf8)
{
    for (std::size_t at = 0; at < utf8.size(); ++at) {
        const auto byte = static_cast<unsigned char>(utf8[at]);
        if (byte < 0x20 || byte == 0x7F) return true;
        // Those beyond ASCII are C2 80 to C2 9F.
        if (byte == 0xC2 && at + 1 < utf8.size() && static_cast<unsigned char>(utf8[at + 1]) < 0xA0) return true;
    }
    return false;
}

std::string SaslObjection(const std::string& utf8)
{
    const SaslResult prepared = PrepareBySasl(utf8);
    switch (prepared.result) {
        case STRINGPREP_OK:
            return "none is left when those that do not count are taken away; choose another password";
        case STRINGPREP_BIDI_BOTH_L_AND_RAL:
            return "letters that are written from right to left are mixed with others; use one kind of them";
        case STRINGPREP_BIDI_LEADTRAIL_NOT_RAL:
            return "a text that is written from right to left must begin and end with such a letter and not with "
                   "a digit or a sign";
        case STRINGPREP_CONTAINS_PROHIBITED:
        case STRINGPREP_BIDI_CONTAINS_PROHIBITED:
            return "one is not allowed in passwords (for private use, invisible, or no character at all); take it "
                   "out";
        default:
            return "it is no valid UTF-8 text, or too long; write it anew";
    }
}

std::optional<std::string> InPdfDocEncoding(const std::string& utf8)
{
    // The library has a code for this character, although the encoding has none.
    constexpr std::string_view kReplacementCharacter = "\xEF\xBF\xBD";
    std::string encoded;
    if (utf8.find(kReplacementCharacter) != std::string::npos) return std::nullopt;
    if (!QUtil::utf8_to_pdf_doc(utf8, encoded)) return std::nullopt;
    return encoded;
}

std::optional<std::string> InLatin1(const std::string& utf8)
{
    std::string encoded;
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        const auto lead = static_cast<unsigned char>(utf8[i]);
        if (lead < 0x80) {
            encoded += utf8[i];
        } else if ((lead == 0xC2 || lead == 0xC3) && i + 1 < utf8.size()) {
            encoded += static_cast<char>(((lead & 3) << 6) | (static_cast<unsigned char>(utf8[++i]) & 0x3F));
        } else {
            return std::nullopt;
        }
    }
    return encoded;
}

std::size_t LongestPassword(int revision) { return revision <= 4 ? 32 : 127; }

}  // namespace

std::optional<std::string> PreparePassword(std::string_view utf8, int revision)
{
    if (utf8.empty()) return std::string();
    if (utf8.find('\0') != std::string_view::npos) return std::nullopt;
    const std::string text(utf8);
    auto prepared = revision <= 4 ? InPdfDocEncoding(text) : SaslPrepared(text);
    if (!prepared || prepared->empty()) return std::nullopt;
    prepared->resize(std::min(prepared->size(), LongestPassword(revision)));
    return prepared;
}

std::string PasswordObjection(std::string_view utf8, int revision)
{
    if (revision <= 4) return "use AES with 256 bits, which takes more of them, or another password";
    if (HasControlCharacter(utf8)) return "control characters, such as a tab or a line end; take them out";
    return SaslObjection(std::string(utf8));
}

std::vector<std::string> PasswordForms(std::string_view utf8, int revision)
{
    const std::string text(utf8.substr(0, utf8.find('\0')));
    std::vector<std::optional<std::string>> forms{SaslPrepared(text), text, InPdfDocEncoding(text), InLatin1(text)};
    if (revision <= 4) std::rotate(forms.begin(), forms.begin() + 2, forms.end());
    std::vector<std::string> result;
    for (auto& form : forms) {
        if (!form) continue;
        form->resize(std::min(form->size(), LongestPassword(revision)));
        if (std::find(result.begin(), result.end(), *form) == result.end()) result.push_back(*form);
    }
    return result;
}

std::string RandomPassword()
{
    static constexpr char kLetters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+-";
    std::array<unsigned char, 32> bytes;
    QUtil::initializeWithRandomBytes(bytes.data(), bytes.size());
    std::string password;
    for (const unsigned char byte : bytes) password += kLetters[byte & 63];
    return password;
}

}  // namespace openhost
