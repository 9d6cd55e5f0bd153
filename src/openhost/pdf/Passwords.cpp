#include "openhost/pdf/Passwords.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <numeric>
#include <stdexcept>
#include <utility>

#include <openssl/evp.h>
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

namespace {

constexpr std::size_t kLongestPassword = 127;
constexpr std::size_t kKeyBytes = 32, kSaltBytes = 8, kBlockBytes = 16;
constexpr std::size_t kCopies = 64;
constexpr int kFewestRounds = 64;

using Bytes = unsigned char;

Bytes* Raw(std::string& text) { return reinterpret_cast<Bytes*>(text.data()); }
const Bytes* Raw(std::string_view text) { return reinterpret_cast<const Bytes*>(text.data()); }

template <auto free>
struct CFree {
    template <class T>
    void operator()(T* object) const
    {
        free(object);
    }
};
template <class T, auto free>
using Owned = std::unique_ptr<T, CFree<free>>;

void Check(bool worked)
{
    if (!worked) throw std::runtime_error("the cryptographic library failed");
}

/// Looking the algorithms up and making contexts costs more than a round, so both are done once.
class CAlgorithms {
public:
    std::string Hash(int bits, std::string_view data)
    {
        const EVP_MD* const kind = bits == 256 ? m_sha256.get() : bits == 384 ? m_sha384.get() : m_sha512.get();
        std::string digest(EVP_MAX_MD_SIZE, '\0');
        unsigned length = 0;
        Check(EVP_DigestInit_ex2(m_digest.get(), kind, nullptr) == 1 &&
              EVP_DigestUpdate(m_digest.get(), data.data(), data.size()) == 1 &&
              EVP_DigestFinal_ex(m_digest.get(), Raw(digest), &length) == 1);
        digest.resize(length);
        return digest;
    }
    /// In place; whole blocks.
    void EncryptCbc128(std::string_view key, std::string_view start, std::string& data)
    {
        Encrypt(m_cbc128.get(), key, start, data);
    }
    std::string EncryptCbc256(std::string_view key, std::string data)
    {
        const std::string zeros(kBlockBytes, '\0');
        Encrypt(m_cbc256.get(), key, zeros, data);
        return data;
    }

private:
    void Encrypt(const EVP_CIPHER* kind, std::string_view key, std::string_view start, std::string& data)
    {
        int length = 0;
        Check(EVP_EncryptInit_ex2(m_cipher.get(), kind, Raw(key), Raw(start), nullptr) == 1 &&
              EVP_CIPHER_CTX_set_padding(m_cipher.get(), 0) == 1 &&
              EVP_EncryptUpdate(m_cipher.get(), Raw(data), &length, Raw(data), static_cast<int>(data.size())) == 1);
    }
    template <class T>
    static T Found(T algorithm)
    {
        Check(algorithm != nullptr);
        return algorithm;
    }

    using DigestContext = Owned<EVP_MD_CTX, &EVP_MD_CTX_free>;
    using CipherContext = Owned<EVP_CIPHER_CTX, &EVP_CIPHER_CTX_free>;
    using Digest = Owned<EVP_MD, &EVP_MD_free>;
    using Cipher = Owned<EVP_CIPHER, &EVP_CIPHER_free>;
    Digest m_sha256 = Found(Digest(EVP_MD_fetch(nullptr, "SHA2-256", nullptr)));
    Digest m_sha384 = Found(Digest(EVP_MD_fetch(nullptr, "SHA2-384", nullptr)));
    Digest m_sha512 = Found(Digest(EVP_MD_fetch(nullptr, "SHA2-512", nullptr)));
    Cipher m_cbc128 = Found(Cipher(EVP_CIPHER_fetch(nullptr, "AES-128-CBC", nullptr)));
    Cipher m_cbc256 = Found(Cipher(EVP_CIPHER_fetch(nullptr, "AES-256-CBC", nullptr)));
    DigestContext m_digest = Found(DigestContext(EVP_MD_CTX_new()));
    CipherContext m_cipher = Found(CipherContext(EVP_CIPHER_CTX_new()));
};

CAlgorithms& Algorithms()
{
    static CAlgorithms algorithms;
    return algorithms;
}

std::string Random(std::size_t count)
{
    std::string bytes(count, '\0');
    QUtil::initializeWithRandomBytes(Raw(bytes), count);
    return bytes;
}

/// Which hash ends a round: the first block as a number, modulo 3. 256 leaves 1, so the sum of the bytes does as
/// well.
int BitsFor(std::string_view encrypted)
{
    const Bytes* const first = Raw(encrypted);
    const int sum = std::accumulate(first, first + kBlockBytes, 0);
    constexpr std::array kBits = {256, 384, 512};
    return kBits[static_cast<std::size_t>(sum % 3)];
}

void FillWithCopies(std::string& text, std::string_view password, std::string_view key, std::string_view further)
{
    text.clear();
    text.append(password).append(key).append(further);
    const std::size_t length = text.size();
    text.resize(length * kCopies);
    for (std::size_t filled = length; filled < text.size(); filled *= 2)
        std::copy_n(text.begin(), filled, text.begin() + static_cast<std::ptrdiff_t>(filled));
}

/// The hash of this revision. `further` is empty for the user's, and U for the owner's password.
std::string SlowHash(std::string_view password, std::string_view salt, std::string_view further)
{
    CAlgorithms& algorithms = Algorithms();
    std::string text(password);
    text.append(salt).append(further);
    std::string key = algorithms.Hash(256, text);
    for (int round = 1;; ++round) {
        FillWithCopies(text, password, key, further);
        algorithms.EncryptCbc128(std::string_view(key).substr(0, 16), std::string_view(key).substr(16, 16), text);
        key = algorithms.Hash(BitsFor(text), text);
        if (round >= kFewestRounds && static_cast<Bytes>(text.back()) <= round - 32) break;
    }
    key.resize(kKeyBytes);
    return key;
}

struct Guard {
    std::string check;      // proves the password
    std::string encrypted;  // the file key
};

Guard GuardKey(std::string_view password, const std::string& fileKey, std::string_view further)
{
    const std::string checkSalt = Random(kSaltBytes), keySalt = Random(kSaltBytes);
    return {SlowHash(password, checkSalt, further) + checkSalt + keySalt,
            Algorithms().EncryptCbc256(SlowHash(password, keySalt, further), fileKey)};
}

/// One block alone: no chaining comes into play.
std::string SealedPermissions(const std::string& fileKey, std::uint32_t permissions, bool encryptMetadata)
{
    std::string block;
    for (int shift = 0; shift < 32; shift += 8) block += static_cast<char>(permissions >> shift);
    block += std::string("\xFF\xFF\xFF\xFF") + (encryptMetadata ? 'T' : 'F') + "adb" + Random(4);
    return Algorithms().EncryptCbc256(fileKey, block);
}

}  // namespace

KeysRevision6 MakeKeysRevision6(const std::string& userPassword, const std::string& ownerPassword,
                                std::uint32_t permissions, bool encryptMetadata)
{
    KeysRevision6 keys;
    keys.fileKey = Random(kKeyBytes);
    const Guard user = GuardKey(std::string_view(userPassword).substr(0, kLongestPassword), keys.fileKey, {});
    const Guard owner =
        GuardKey(std::string_view(ownerPassword).substr(0, kLongestPassword), keys.fileKey, user.check);
    keys.u = user.check;
    keys.ue = user.encrypted;
    keys.o = owner.check;
    keys.oe = owner.encrypted;
    keys.perms = SealedPermissions(keys.fileKey, permissions, encryptMetadata);
    return keys;
}

}  // namespace openhost
