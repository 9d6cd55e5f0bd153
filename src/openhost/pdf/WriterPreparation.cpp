#include "openhost/pdf/WriterPreparation.h"

#include <algorithm>
#include <functional>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>

#include <qpdf/Buffer.hh>
#include <qpdf/InputSource.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFObjectHandle.hh>
#include <qpdf/QPDFXRefEntry.hh>

#include "openhost/pdf/Encryption.h"

namespace openhost {
namespace {

constexpr std::string_view kEscapedNumberSign = "#23";
constexpr std::string_view kCryptFilter = "/Crypt";

// ---- what a file holds

struct Signs {
    bool numberSign = false;
    bool cryptFilter = false;

    void LookIn(std::string_view bytes)
    {
        numberSign = numberSign || bytes.find(kEscapedNumberSign) != std::string_view::npos;
        cryptFilter = cryptFilter || bytes.find(kCryptFilter) != std::string_view::npos;
    }
};

Signs SignsIn(InputSource& source)
{
    constexpr std::size_t kPiece = 256 * 1024;
    const std::size_t overlap = std::max(kEscapedNumberSign.size(), kCryptFilter.size()) - 1;
    Signs signs;
    std::string piece(kPiece + overlap, '\0');
    std::size_t kept = 0;
    source.seek(0, SEEK_SET);
    while (const std::size_t got = source.read(piece.data() + kept, kPiece)) {
        const std::size_t filled = kept + got;
        signs.LookIn(std::string_view(piece).substr(0, filled));
        kept = std::min(overlap, filled);
        std::copy_n(piece.data() + filled - kept, kept, piece.data());
    }
    return signs;
}

/// The numbers of the streams that hold other objects.
std::set<int> ObjectStreams(QPDF& document)
{
    std::set<int> streams;
    for (const auto& [object, entry] : document.getXRefTable())
        if (entry.getType() == 2) streams.insert(entry.getObjStreamNumber());
    return streams;
}

void LookInObjectStreams(QPDF& document, Signs& signs)
{
    for (const int number : ObjectStreams(document)) {
        QPDFObjectHandle stream = document.getObject(number, 0);
        if (signs.numberSign || !stream.isStream()) continue;
        try {
            const auto content = stream.getStreamData(qpdf_dl_generalized);
            signs.LookIn({reinterpret_cast<const char*>(content->getBuffer()), content->getSize()});
        } catch (const std::runtime_error&) {  // nothing of what it holds is written either
        }
    }
}

// ---- names

bool IsHexDigit(char c) { return std::string_view("0123456789abcdefABCDEF").find(c) != std::string_view::npos; }

/// The writer writes a null character as a number sign, so that one in front of "23" comes out as the escape. What
/// the reader keeps as "#00" stands for an escaped null character and is written as it is.
std::string EscapedName(const std::string& name)
{
    std::string escaped;
    for (std::size_t i = 0; i < name.size(); ++i) {
        const bool readAsEscape =
            name[i] == '#' && i + 2 < name.size() && IsHexDigit(name[i + 1]) && IsHexDigit(name[i + 2]);
        if (readAsEscape && name.compare(i, 3, "#00") != 0)
            escaped += std::string(
                "\0"
                "23",
                3);
        else
            escaped += name[i];
    }
    return escaped;
}

class CNameMender {
public:
    /// Of what hangs directly on the object; references are not followed. Answers what takes its place.
    QPDFObjectHandle Mended(QPDFObjectHandle object)
    {
        if (object.isName()) {
            const std::string name = object.getName(), escaped = EscapedName(name);
            return escaped == name ? object : QPDFObjectHandle::newName(escaped);
        }
        if (object.isStream()) MendDictionary(object.getDict());
        if (object.isDictionary()) MendDictionary(object);
        if (object.isArray()) MendArray(object);
        return object;
    }

private:
    QPDFObjectHandle MendedChild(QPDFObjectHandle child) { return child.isIndirect() ? child : Mended(child); }

    void MendDictionary(QPDFObjectHandle dictionary)
    {
        for (const std::string& key : dictionary.getKeys()) {
            QPDFObjectHandle child = MendedChild(dictionary.getKey(key));
            const std::string escaped = EscapedName(key);
            if (escaped != key) dictionary.removeKey(key);
            dictionary.replaceKey(escaped, child);
        }
    }

    void MendArray(QPDFObjectHandle array)
    {
        for (int i = 0; i < array.getArrayNItems(); ++i) {
            QPDFObjectHandle child = array.getArrayItem(i);
            if (child.isName() || child.isArray() || child.isDictionary()) array.setArrayItem(i, MendedChild(child));
        }
    }
};

void MendNames(QPDF& document)
{
    CNameMender mender;
    for (QPDFObjectHandle object : document.getAllObjects()) {
        QPDFObjectHandle mended = mender.Mended(object);
        if (object.isName() && mended.getName() != object.getName())
            document.replaceObject(object.getObjGen(), mended);
    }
    mender.Mended(document.getTrailer());
}

// ---- crypt filters

/// The stream keeps its bytes, decrypted, and its other filters.
void TakeOutCryptFilters(QPDFObjectHandle stream)
{
    QPDFObjectHandle filters = stream.getDict().getKey("/Filter");
    QPDFObjectHandle parameters = stream.getDict().getKey("/DecodeParms");
    if (!filters.isArray() || !filters.isOrHasName(kCryptFilter.data())) return;
    QPDFObjectHandle others = QPDFObjectHandle::newArray(), othersParameters = QPDFObjectHandle::newArray();
    for (int i = 0; i < filters.getArrayNItems(); ++i) {
        if (filters.getArrayItem(i).isNameAndEquals(kCryptFilter.data())) continue;
        others.appendItem(filters.getArrayItem(i));
        const bool has = parameters.isArray() && i < parameters.getArrayNItems();
        othersParameters.appendItem(has ? parameters.getArrayItem(i) : QPDFObjectHandle::newNull());
    }
    stream.replaceStreamData(stream.getRawStreamData(), others, othersParameters);
}

// ---- trailer

std::string FirstIdentifier(QPDFObjectHandle trailer)
{
    QPDFObjectHandle id = trailer.getKey("/ID");
    const bool usable = id.isArray() && id.getArrayNItems() > 0 && id.getArrayItem(0).isString();
    return usable ? id.getArrayItem(0).getStringValue() : std::string();
}

/// Answers whether the identifier may be changed as the writer likes.
bool MendTrailer(QPDF& document)
{
    QPDFObjectHandle trailer = document.getTrailer();
    if (!trailer.hasKey("/Size"))
        trailer.replaceKey("/Size", QPDFObjectHandle::newInteger(0));  // the writer's to fill
    if (!FirstIdentifier(trailer).empty()) return true;
    const auto encryption = ReadEncryption(document);
    if (encryption && encryption->info.version < 5) return false;
    QPDFObjectHandle id = QPDFObjectHandle::newString(IdentifierOf(document));
    trailer.replaceKey("/ID", QPDFObjectHandle::newArray(std::vector<QPDFObjectHandle>{id, id}));
    return true;
}

}  // namespace

PreparedDocument PrepareForWriter(QPDF& document, InputSource* source)
{
    Signs signs;
    if (source) signs = SignsIn(*source);
    LookInObjectStreams(document, signs);
    if (signs.numberSign) MendNames(document);
    if (signs.cryptFilter && document.isEncrypted())
        for (QPDFObjectHandle object : document.getAllObjects())
            if (object.isStream()) TakeOutCryptFilters(object);
    const bool identifierIsFree = MendTrailer(document);
    return {.mayLinearise = identifierIsFree};
}

}  // namespace openhost
