#include <array>
#include <new>

#include <openssl/evp.h>

#include "base/Sha256.h"

struct CSha256::State {
    EVP_MD_CTX* context = EVP_MD_CTX_new();
    ~State() { EVP_MD_CTX_free(context); }
};

CSha256::CSha256() : m_state(std::make_unique<State>())
{
    // Without the algorithm nothing about a run could be proved; the library only lacks it when memory is short.
    if (!m_state->context || EVP_DigestInit_ex(m_state->context, EVP_sha256(), nullptr) != 1) throw std::bad_alloc();
}

CSha256::~CSha256() = default;

void CSha256::Add(const char* bytes, std::size_t length) { EVP_DigestUpdate(m_state->context, bytes, length); }

std::string CSha256::Digest()
{
    static constexpr char kDigits[] = "0123456789abcdef";
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned length = 0;
    EVP_DigestFinal_ex(m_state->context, digest.data(), &length);
    std::string text;
    for (unsigned i = 0; i < length; ++i) {
        text += kDigits[digest[i] >> 4];
        text += kDigits[digest[i] & 15];
    }
    return text;
}
