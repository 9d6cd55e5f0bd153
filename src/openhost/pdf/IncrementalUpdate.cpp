#include "openhost/pdf/IncrementalUpdate.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <string_view>

#include <qpdf/QUtil.hh>

#include "openhost/pdf/DocumentLoss.h"
#include "openhost/pdf/ObjectText.h"
#include "openhost/pdf/Xmp.h"

namespace openhost {
namespace {

constexpr qpdf_offset_t kReferenceWithin = 1054;      // bytes before the end, as far as the library looks back
constexpr qpdf_offset_t kLastOffset = 9'999'999'999;  // ten digits are all that a table has
constexpr int kFieldOfOffset = 8, kFieldOfGeneration = 2;

std::string BytesAt(InputSource& source, qpdf_offset_t offset, qpdf_offset_t count)
{
    std::string bytes(static_cast<std::size_t>(count), '\0');
    source.seek(offset, SEEK_SET);
    bytes.resize(source.read(bytes.data(), bytes.size()));
    return bytes;
}

/// The number behind the last "startxref".
std::optional<qpdf_offset_t> LastReference(std::string_view end)
{
    constexpr std::string_view word = "startxref";
    const std::size_t at = end.rfind(word);
    if (at == std::string_view::npos) return std::nullopt;
    end.remove_prefix(at + word.size());
    end.remove_prefix(std::min(end.find_first_not_of(" \t\r\n\f"), end.size()));
    qpdf_offset_t offset = 0;
    const auto [stop, error] = std::from_chars(end.data(), end.data() + end.size(), offset);
    if (error != std::errc() || offset <= 0) return std::nullopt;
    return offset;
}

UpdatePlace Obstacle(const char* reason)
{
    UpdatePlace none;
    none.obstacle = reason;
    return none;
}

}  // namespace

UpdatePlace FindUpdatePlace(QPDF& document, InputSource& source)
{
    UpdatePlace place;
    source.seek(0, SEEK_END);
    place.size = source.tell();
    place.header = HeaderOffset(source);
    const qpdf_offset_t length = std::min(place.size, kReferenceWithin);
    const std::string end = BytesAt(source, place.size - length, length);
    const auto reference = LastReference(end);
    if (!reference) return Obstacle("its end does not say where its cross-reference table is");
    place.previous = *reference;
    place.endsWithNewLine = end.ends_with('\n') || end.ends_with('\r');
    std::string section = BytesAt(source, place.header + place.previous, 64);
    section.erase(0, section.find_first_not_of(std::string_view(" \t\r\n\f\0", 6)));
    if (section.empty()) return Obstacle("its end does not lead to its cross-reference table");
    place.isStream = !section.starts_with("xref");
    QPDFObjectHandle trailer = document.getTrailer();
    if (place.isStream != trailer.getKey("/W").isArray())
        return Obstacle("its end does not lead to its cross-reference table");
    if (!trailer.getKey("/Root").isIndirect()) return Obstacle("its catalogue is no object of its own");
    if (!CObjectCipher(document).IsUsable()) return Obstacle("its encryption uses an unknown method");
    return place;
}

namespace {

/// The first number that no object has, and that no object had.
int FreeNumber(QPDF& document)
{
    int free = 1;
    if (QPDFObjectHandle size = document.getTrailer().getKey("/Size"); size.isInteger())
        free = std::max(free, size.getIntValueAsInt());
    for (const auto& [object, entry] : document.getXRefTable()) free = std::max(free, object.getObj() + 1);
    return free;
}

/// How the packet stands in the file, which may leave it readable in an encrypted document.
struct PacketForm {
    bool possible = true;
    bool encrypted = true;
    bool keepsCryptFilter = false;
};

PacketForm FormOf(QPDF& document, QPDFObjectHandle stream)
{
    PacketForm form;
    if (!document.isEncrypted()) return form;
    QPDFObjectHandle dictionary = stream.getDict();
    if (dictionary.getKey("/Filter").isOrHasName("/Crypt")) {
        QPDFObjectHandle parameters = dictionary.getKey("/DecodeParms");
        if (parameters.isArray() && parameters.getArrayNItems() > 0) parameters = parameters.getArrayItem(0);
        QPDFObjectHandle name = parameters.isDictionary() ? parameters.getKey("/Name") : QPDFObjectHandle::newNull();
        form.possible = name.isNull() || name.isNameAndEquals("/Identity");
        form.keepsCryptFilter = true;
        form.encrypted = false;
        return form;
    }
    QPDFObjectHandle encryption = document.getTrailer().getKey("/Encrypt");
    QPDFObjectHandle version = encryption.getKey("/V"), all = encryption.getKey("/EncryptMetadata");
    const bool leftOut = version.isInteger() && version.getIntValue() >= 4 && all.isBool() && !all.getBoolValue();
    form.encrypted = !(leftOut && dictionary.isDictionaryOfType("/Metadata"));
    return form;
}

std::string StreamText(const std::string& dictionary, const std::string& bytes)
{
    return dictionary + "\nstream\n" + bytes + "\nendstream";
}

/// The packet is written plain, so that every program finds it.
std::string PacketText(QPDFObjectHandle stream, const PacketForm& form, const std::string& packet,
                       const CObjectCipher& cipher)
{
    const QPDFObjGen object = stream.getObjGen();
    QPDFObjectHandle dictionary = stream.getDict().shallowCopy();
    for (const char* key : {"/Filter", "/DecodeParms", "/DL", "/F", "/FFilter", "/FDecodeParms"})
        dictionary.removeKey(key);
    if (form.keepsCryptFilter) {
        dictionary.replaceKey("/Filter", QPDFObjectHandle::parse("[/Crypt]"));
        dictionary.replaceKey("/DecodeParms", QPDFObjectHandle::parse("[<</Name/Identity>>]"));
    }
    const std::string bytes = form.encrypted ? cipher.Stream(packet, object) : packet;
    dictionary.replaceKey("/Length", QPDFObjectHandle::newInteger(static_cast<long long>(bytes.size())));
    return StreamText(ObjectText(dictionary, &cipher, object), bytes);
}

/// The first half of an identifier names the document, the second its present state.
QPDFObjectHandle NewIdentifier(QPDFObjectHandle old)
{
    if (!old.isArray() || old.getArrayNItems() < 1 || !old.getArrayItem(0).isString()) return old;
    std::string state(16, '\0');
    QUtil::initializeWithRandomBytes(reinterpret_cast<unsigned char*>(state.data()), state.size());
    QPDFObjectHandle identifier = QPDFObjectHandle::newArray();
    identifier.appendItem(old.getArrayItem(0));
    identifier.appendItem(QPDFObjectHandle::newString(state));
    return identifier;
}

QPDFObjectHandle NewTrailer(QPDFObjectHandle old, const UpdatePlace& place, int size)
{
    QPDFObjectHandle trailer = old.shallowCopy();
    for (const char* key : {"/Prev", "/XRefStm", "/Type", "/W", "/Index", "/Length", "/Filter", "/DecodeParms", "/DL",
                            "/F", "/FFilter", "/FDecodeParms"})
        trailer.removeKey(key);
    trailer.replaceKey("/Prev", QPDFObjectHandle::newInteger(place.previous));
    trailer.replaceKey("/Size", QPDFObjectHandle::newInteger(size));
    if (old.hasKey("/ID")) trailer.replaceKey("/ID", NewIdentifier(old.getKey("/ID")));
    return trailer;
}

std::string Table(const std::map<QPDFObjGen, qpdf_offset_t>& places)
{
    std::string table = "xref\n";
    for (const auto& [object, offset] : places) {
        char lines[64];
        std::snprintf(lines, sizeof lines, "%d 1\n%010lld %05d n \n", object.getObj(), static_cast<long long>(offset),
                      object.getGen());
        table += lines;
    }
    return table;
}

void AddNumber(std::string& bytes, std::uint64_t number, int width)
{
    for (int at = width - 1; at >= 0; --at) bytes += static_cast<char>(number >> (8 * at) & 0xFF);
}

/// A cross-reference stream is also its own trailer; it is never encrypted.
std::string CrossReferenceStream(QPDFObjectHandle trailer, const std::map<QPDFObjGen, qpdf_offset_t>& places)
{
    std::string entries, index;
    for (const auto& [object, offset] : places) {
        AddNumber(entries, 1, 1);
        AddNumber(entries, static_cast<std::uint64_t>(offset), kFieldOfOffset);
        AddNumber(entries, static_cast<std::uint64_t>(object.getGen()), kFieldOfGeneration);
        index += std::to_string(object.getObj()) + " 1 ";
    }
    trailer.replaceKey("/Type", QPDFObjectHandle::newName("/XRef"));
    trailer.replaceKey("/W", QPDFObjectHandle::parse("[1 8 2]"));
    trailer.replaceKey("/Index", QPDFObjectHandle::parse('[' + index + ']'));
    trailer.replaceKey("/Length", QPDFObjectHandle::newInteger(static_cast<long long>(entries.size())));
    return StreamText(ObjectText(trailer, nullptr, {}), entries);
}

/// Puts objects, cross-reference section and trailer behind the file.
class CUpdateWriter {
public:
    CUpdateWriter(const UpdatePlace& place, IncrementalUpdate& update) : m_place(place), m_update(update)
    {
        if (!place.endsWithNewLine) m_update.bytes = "\n";
    }
    void Object(QPDFObjGen object, const std::string& text)
    {
        m_update.places[object] = Here();
        m_update.bytes += object.unparse(' ') + " obj\n" + text + "\nendobj\n";
    }
    void Section(QPDFObjectHandle trailer, QPDFObjGen sectionObject)
    {
        const qpdf_offset_t start = Here();
        if (m_place.isStream) {
            m_update.places[sectionObject] = start;
            Object(sectionObject, CrossReferenceStream(trailer, m_update.places));
        } else {
            m_update.bytes += Table(m_update.places) + "trailer\n" + ObjectText(trailer, nullptr, {}) + '\n';
        }
        m_update.bytes += "startxref\n" + std::to_string(start) + "\n%%EOF\n";
    }
    qpdf_offset_t Here() const
    {
        return m_place.size - m_place.header + static_cast<qpdf_offset_t>(m_update.bytes.size());
    }

private:
    const UpdatePlace& m_place;
    IncrementalUpdate& m_update;
};

IncrementalUpdate NoUpdate(std::string obstacle)
{
    IncrementalUpdate none;
    none.obstacle = std::move(obstacle);
    return none;
}

}  // namespace

IncrementalUpdate MakeIncrementalUpdate(QPDF& document, InputSource& source, const std::set<std::string>& changedInfo)
{
    const UpdatePlace place = FindUpdatePlace(document, source);
    if (!place.obstacle.empty()) return NoUpdate(place.obstacle);
    const CObjectCipher cipher(document);
    QPDFObjectHandle trailer = document.getTrailer(), info = trailer.getKey("/Info");
    IncrementalUpdate update;
    CUpdateWriter writer(place, update);
    int next = FreeNumber(document);
    if (info.isDictionary()) {
        if (!info.isIndirect()) info = document.makeIndirectObject(info);
        trailer.replaceKey("/Info", info);
        const QPDFObjGen object = info.getObjGen();
        if (object == trailer.getKey("/Root").getObjGen()) return NoUpdate("its information is also its catalogue");
        next = std::max(next, object.getObj() + 1);
        writer.Object(object, ObjectText(info, &cipher, object));
    }
    update.packet = SyncedPacket(document, changedInfo);
    if (update.packet) {
        QPDFObjectHandle stream = document.getRoot().getKey("/Metadata");
        const PacketForm form = FormOf(document, stream);
        if (!form.possible) return NoUpdate("its metadata have an encryption of their own");
        writer.Object(stream.getObjGen(), PacketText(stream, form, *update.packet, cipher));
    }
    if (update.places.empty()) return NoUpdate("nothing of its properties has changed");
    if (!place.isStream && writer.Here() > kLastOffset) return NoUpdate("it is too large for its kind of table");
    const QPDFObjGen sectionObject(next, 0);
    const int size = place.isStream ? next + 1 : next;
    writer.Section(NewTrailer(trailer, place, size), sectionObject);
    return update;
}

}  // namespace openhost
