// The metadata packet of a document, and the elements of the XML that it is made of.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace openhost {

struct XmlAttribute {
    std::string_view name, value;  ///< value as written, between its quotes
    std::size_t begin = 0;         ///< from the blank before it ...
    std::size_t end = 0;           ///< ... to behind its closing quote
};

/// An element of a text, by places in it.
struct XmlElement {
    std::string_view name;  ///< with its prefix
    std::size_t begin = 0;  ///< of the opening tag
    std::size_t content = 0;
    std::size_t contentEnd = 0;
    std::size_t end = 0;  ///< behind the closing tag
    std::optional<std::size_t> parent;
    std::vector<XmlAttribute> attributes;
};

/// All elements in the order of their opening tags. Nothing when tags do not pair, anything is cut off, the text
/// declares entities, or nests deeper than 100.
std::optional<std::vector<XmlElement>> ReadXmlElements(std::string_view text);

/// Which namespace the prefix of a name means there; attributes without a prefix have none.
std::string_view XmlNamespace(const std::vector<XmlElement>& elements, std::size_t at, std::string_view name);

/// A name without its prefix.
std::string_view XmlLocalName(std::string_view name);

}  // namespace openhost

class QPDF;

namespace openhost {

/// One property of a metadata packet as it is to be.
struct XmpProperty {
    std::string_view space;   ///< namespace
    std::string_view prefix;  ///< for a new one
    std::string_view name;
    std::string content;  ///< XML inside the property; empty takes it away
    /// Of a text in several languages: the XML of the default one. Where the packet has other languages, they stay.
    std::optional<std::string> defaultText = {};
    bool dropCopies = false;  ///< other languages go, too, where they have the text that the default one had
};

/// The packet with these properties in place of what it said of them; all else stays byte for byte. Nothing when the
/// packet is not well formed or holds no description.
std::optional<std::string> ChangedPacket(std::string_view packet, const std::vector<XmpProperty>& properties);

/// The counterpart of an information entry (text in UTF-8); nothing for keys without one and for impossible dates.
std::optional<XmpProperty> XmpCounterpart(std::string_view infoKey, const std::string& valueUtf8);

/// What a packet says of the document, by the keys of information entries; UTF-8. Of several languages the default
/// one, several names joined by "; ", no dates. Empty for a packet that is not well formed.
std::map<std::string, std::string> TextsInPacket(std::string_view packet);

/// What a packet says under the counterpart of an information entry, all statements, each item of a list by itself;
/// of several languages the default one. Empty for a packet that is not well formed.
std::vector<std::string> PacketTexts(std::string_view packet, std::string_view infoKey);

/// The list of subjects, in which many programs repeat the keywords one by one. Empty for a packet that is not well
/// formed.
std::vector<std::string> SubjectsInPacket(std::string_view packet);

/// The packet without these subjects; nothing when it has none of them.
std::optional<std::string> WithoutSubjects(std::string_view packet, const std::set<std::string>& subjects);

/// All that an XML text says: what stands between its tags and in attributes, with references resolved and, between
/// tags, also as it is written. No names of elements, namespaces and languages. Of a text that is not well formed all
/// of it.
std::vector<std::string> TextsInXml(std::string_view xml);

/// The document's packet; nothing when it has none that can be unpacked.
std::optional<std::string> MetadataPacket(QPDF& document);

/// The document's packet brought in step with these information entries; an entry that is gone is taken out of it.
/// Nothing when there is no sound packet, or nothing in it changes.
std::optional<std::string> SyncedPacket(QPDF& document, const std::set<std::string>& infoKeys,
                                        bool dropCopies = false);

/// Brings a document's metadata packet, where it has a sound one, in step with these information entries.
void SyncMetadata(QPDF& document, const std::set<std::string>& infoKeys, bool dropCopies = false);

}  // namespace openhost
