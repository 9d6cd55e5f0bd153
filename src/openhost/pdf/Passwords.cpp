#include "openhost/pdf/Passwords.h"

#include <stringprep.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <qpdf/QUtil.hh>

namespace openhost {
namespace {

struct CFree {
    void operator()(char* text) const { std::free(text); }
};

std::optional<std::string> SaslPrepared(const std::string& utf8)
{
    char* prepared = nullptr;
    // Code points without a meaning when the profile was made (most emoji) pass: they occur in real passwords.
    if (stringprep_profile(utf8.c_str(), &prepared, "SASLprep", Stringprep_profile_flags{}) != STRINGPREP_OK)
        return std::nullopt;
    const std::unique_ptr<char, CFree> owner(prepared);
    return std::string(prepared);
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
