// Objects as they stand in a file.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include <qpdf/QPDF.hh>
#include <qpdf/QPDFObjGen.hh>
#include <qpdf/QPDFObjectHandle.hh>

namespace openhost {

/// Encrypts what is added to a document as the rest of the document is encrypted; leaves all as it is where that is
/// not. `document` is unlocked and must outlive the object.
class CObjectCipher {
public:
    explicit CObjectCipher(QPDF& document);

    /// Whether the methods are known that strings and streams have.
    bool IsUsable() const;
    std::string String(const std::string& bytes, QPDFObjGen owner) const;
    std::string Stream(const std::string& bytes, QPDFObjGen owner) const;

private:
    enum class Method { None, Rc4, Aes, Unknown };
    static Method MethodOf(QPDF::encryption_method_e method);
    std::string Encrypted(Method method, const std::string& bytes, QPDFObjGen owner) const;

    Method m_strings = Method::None, m_streams = Method::None;
    int m_version = 0, m_revision = 0;
    std::string m_key;
};

/// A value as PDF source. What it refers to stays a reference; only an indirect `value` itself is written out.
/// Strings are encrypted for the object that they stand in; without a cipher, as in trailers, they are not.
/// Fails: std::runtime_error when the value nests deeper than 200.
std::string ObjectText(QPDFObjectHandle value, const CObjectCipher* cipher, QPDFObjGen owner);

}  // namespace openhost
