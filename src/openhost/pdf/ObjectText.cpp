#include "openhost/pdf/ObjectText.h"

#include <stdexcept>
#include <string_view>

#include <qpdf/QPDFCryptoImpl.hh>
#include <qpdf/QPDFCryptoProvider.hh>

namespace openhost {

namespace {

constexpr int kDeepestValue = 200;
constexpr std::size_t kAesBlock = QPDFCryptoImpl::rijndael_buf_size;

unsigned char* RawText(std::string& bytes) { return reinterpret_cast<unsigned char*>(bytes.data()); }

/// The initial vector, then the bytes filled up to whole blocks.
std::string AesText(std::string key, const std::string& bytes)
{
    const auto crypto = QPDFCryptoProvider::getImpl();
    std::string vector(kAesBlock, '\0');
    crypto->provideRandomData(RawText(vector), vector.size());
    const std::size_t filling = kAesBlock - bytes.size() % kAesBlock;
    std::string text = bytes + std::string(filling, static_cast<char>(filling));
    std::string result = vector;
    crypto->rijndael_init(true, RawText(key), key.size(), true, RawText(vector));
    std::string block(kAesBlock, '\0');
    for (std::size_t at = 0; at < text.size(); at += kAesBlock) {
        crypto->rijndael_process(RawText(text) + at, RawText(block));
        result += block;
    }
    crypto->rijndael_finalize();
    return result;
}

std::string Rc4Text(std::string key, std::string bytes)
{
    const auto crypto = QPDFCryptoProvider::getImpl();
    crypto->RC4_init(RawText(key), static_cast<int>(key.size()));
    std::string result(bytes.size(), '\0');
    crypto->RC4_process(RawText(bytes), bytes.size(), RawText(result));
    crypto->RC4_finalize();
    return result;
}

}  // namespace

CObjectCipher::Method CObjectCipher::MethodOf(QPDF::encryption_method_e method)
{
    switch (method) {
        case QPDF::e_none:
            return Method::None;
        case QPDF::e_rc4:
            return Method::Rc4;
        case QPDF::e_aes:
        case QPDF::e_aesv3:
            return Method::Aes;
        default:
            return Method::Unknown;
    }
}

CObjectCipher::CObjectCipher(QPDF& document)
{
    int permissions = 0;
    auto streams = QPDF::e_none, strings = QPDF::e_none, files = QPDF::e_none;
    if (!document.isEncrypted(m_revision, permissions, m_version, streams, strings, files)) return;
    m_key = document.getEncryptionKey();
    // Only newer encryption names a method for each kind.
    m_strings = m_version < 4 ? Method::Rc4 : MethodOf(strings);
    m_streams = m_version < 4 ? Method::Rc4 : MethodOf(streams);
}

bool CObjectCipher::IsUsable() const { return m_strings != Method::Unknown && m_streams != Method::Unknown; }

std::string CObjectCipher::String(const std::string& bytes, QPDFObjGen owner) const
{
    return Encrypted(m_strings, bytes, owner);
}

std::string CObjectCipher::Stream(const std::string& bytes, QPDFObjGen owner) const
{
    return Encrypted(m_streams, bytes, owner);
}

std::string CObjectCipher::Encrypted(Method method, const std::string& bytes, QPDFObjGen owner) const
{
    if (method == Method::None) return bytes;
    const bool aes = method == Method::Aes;
    const std::string key = QPDF::compute_data_key(m_key, owner.getObj(), owner.getGen(), aes, m_version, m_revision);
    return aes ? AesText(key, bytes) : Rc4Text(key, bytes);
}

namespace {

/// The library keeps the code of a null character in a name as it stood in the file, and gives all others decoded.
std::string NameText(const std::string& name)
{
    constexpr std::string_view digits = "0123456789abcdef", delimiters = "()<>[]{}/%";
    std::string text = "/";
    for (std::size_t at = 1; at < name.size(); ++at) {
        const auto byte = static_cast<unsigned char>(name[at]);
        const bool code = name.compare(at, 3, "#00") == 0;
        const bool plain = byte > 0x20 && byte < 0x7F && delimiters.find(name[at]) == std::string_view::npos;
        if (code || (plain && name[at] != '#'))
            text += name[at];
        else
            text += {'#', digits[byte >> 4], digits[byte & 15]};
    }
    return text;
}

class CTextWriter {
public:
    CTextWriter(const CObjectCipher* cipher, QPDFObjGen owner) : m_cipher(cipher), m_owner(owner) {}

    void Write(QPDFObjectHandle value, int depth)
    {
        if (depth > kDeepestValue) throw std::runtime_error("a value nests too deep");
        if (value.isName())
            text += NameText(value.getName());
        else if (value.isString())
            WriteString(value.getStringValue());
        else if (value.isArray())
            WriteArray(value, depth);
        else if (value.isDictionary())
            WriteDictionary(value, depth);
        else
            text += value.unparseResolved();
    }

    std::string text;

private:
    void WriteString(const std::string& bytes)
    {
        text += QPDFObjectHandle::newString(m_cipher ? m_cipher->String(bytes, m_owner) : bytes).unparse();
    }
    void WriteChild(QPDFObjectHandle child, int depth)
    {
        if (child.isIndirect())
            text += child.getObjGen().unparse(' ') + " R";
        else
            Write(child, depth + 1);
    }
    void WriteArray(QPDFObjectHandle array, int depth)
    {
        text += '[';
        for (QPDFObjectHandle item : array.aitems()) {
            if (text.back() != '[') text += ' ';
            WriteChild(item, depth);
        }
        text += ']';
    }
    void WriteDictionary(QPDFObjectHandle dictionary, int depth)
    {
        text += "<<";
        for (const std::string& key : dictionary.getKeys()) {
            text += NameText(key) + ' ';
            WriteChild(dictionary.getKey(key), depth);
            text += '\n';
        }
        text += ">>";
    }

    const CObjectCipher* m_cipher;
    QPDFObjGen m_owner;
};

}  // namespace

std::string ObjectText(QPDFObjectHandle value, const CObjectCipher* cipher, QPDFObjGen owner)
{
    CTextWriter writer(cipher, owner);
    writer.Write(value, 0);
    return writer.text;
}

}  // namespace openhost
