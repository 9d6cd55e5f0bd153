#include "openhost/pdf/Xmp.h"

#include <algorithm>

#include <qpdf/Buffer.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFExc.hh>

#include "openhost/pdf/XmlTags.h"

namespace openhost {
namespace {

constexpr std::string_view kRdf = "http://www.w3.org/1999/02/22-rdf-syntax-ns#";
constexpr std::string_view kDublinCore = "http://purl.org/dc/elements/1.1/";
constexpr std::string_view kPdf = "http://ns.adobe.com/pdf/1.3/";
constexpr std::string_view kXmp = "http://ns.adobe.com/xap/1.0/";

enum class Form { Text, Languages, List, Date };

const struct {
    std::string_view infoKey, space, prefix, name;
    Form form;
} kCounterparts[] = {
    {"Title", kDublinCore, "dc", "title", Form::Languages},
    {"Author", kDublinCore, "dc", "creator", Form::List},
    {"Subject", kDublinCore, "dc", "description", Form::Languages},
    {"Keywords", kPdf, "pdf", "Keywords", Form::Text},
    {"Producer", kPdf, "pdf", "Producer", Form::Text},
    {"Creator", kXmp, "xmp", "CreatorTool", Form::Text},
    {"CreationDate", kXmp, "xmp", "CreateDate", Form::Date},
    {"ModDate", kXmp, "xmp", "ModifyDate", Form::Date},
};

struct Range {
    std::size_t begin, end;
};

/// A packet's elements, and which of them carry its statements.
class CPacket {
public:
    CPacket(std::string_view text, const std::vector<XmlElement>& elements) : m_text(text), m_elements(elements)
    {
        for (std::size_t at = 0; at < elements.size(); ++at) {
            if (Is(at, kRdf, "RDF")) m_roots.push_back(at);
        }
    }
    /// The one root element, if it is one.
    std::optional<std::size_t> Root() const
    {
        return m_roots.size() == 1 ? std::optional(m_roots.front()) : std::nullopt;
    }
    bool Is(std::size_t at, std::string_view space, std::string_view name) const
    {
        return XmlLocalName(m_elements[at].name) == name &&
               XmlNamespace(m_elements, at, m_elements[at].name) == space;
    }
    /// Statements nested in others are about something else than the document.
    bool IsDescription(std::size_t at) const
    {
        return m_elements[at].parent == Root() && Is(at, kRdf, "Description");
    }
    /// What the packet calls the document; all its descriptions must agree.
    std::string_view About() const
    {
        for (std::size_t at = 0; at < m_elements.size(); ++at) {
            if (!IsDescription(at)) continue;
            for (const XmlAttribute& attribute : m_elements[at].attributes) {
                if (XmlLocalName(attribute.name) == "about") return attribute.value;
            }
        }
        return {};
    }
    void Collect(const XmpProperty& property, std::vector<Range>& ranges) const
    {
        for (std::size_t at = 0; at < m_elements.size(); ++at) {
            const XmlElement& element = m_elements[at];
            if (element.parent && IsDescription(*element.parent) && Is(at, property.space, property.name)) {
                const bool alone = SaysNothingElse(*element.parent, at);
                ranges.push_back(alone ? WholeLine(*element.parent) : Range{element.begin, element.end});
            }
            if (!IsDescription(at)) continue;
            for (const XmlAttribute& attribute : element.attributes) {
                const bool prefixed = attribute.name.find(':') != std::string_view::npos;
                if (prefixed && XmlLocalName(attribute.name) == property.name &&
                    XmlNamespace(m_elements, at, attribute.name) == property.space) {
                    ranges.push_back({attribute.begin, attribute.end});
                }
            }
        }
    }

private:
    /// Whether a description would be left with nothing but its subject.
    bool SaysNothingElse(std::size_t description, std::size_t statement) const
    {
        for (const XmlAttribute& attribute : m_elements[description].attributes) {
            const bool declares = attribute.name == "xmlns" || attribute.name.starts_with("xmlns:");
            if (!declares && XmlLocalName(attribute.name) != "about") return false;
        }
        for (std::size_t at = 0; at < m_elements.size(); ++at) {
            if (at != statement && m_elements[at].parent == description) return false;
        }
        return true;
    }
    Range WholeLine(std::size_t at) const
    {
        const std::size_t end = m_elements[at].end;
        return {m_elements[at].begin, end < m_text.size() && m_text[end] == '\n' ? end + 1 : end};
    }

    std::string_view m_text;
    const std::vector<XmlElement>& m_elements;
    std::vector<std::size_t> m_roots;
};

std::string Description(std::string_view about, const std::vector<XmpProperty>& properties)
{
    std::string text;
    for (const XmpProperty& property : properties) {
        if (property.content.empty()) continue;
        const std::string name = std::string(property.prefix) + ':' + std::string(property.name);
        text += "<rdf:Description xmlns:rdf=\"" + std::string(kRdf) + "\" rdf:about=\"" + std::string(about) +
                "\" xmlns:" + std::string(property.prefix) + "=\"" + std::string(property.space) + "\"><" + name +
                '>' + property.content + "</" + name + "></rdf:Description>\n";
    }
    return text;
}

/// D:YYYYMMDDHHmmSS+hh'mm' as 2024-01-31T12:00:00+01:00, as far as it goes.
std::optional<std::string> IsoDate(std::string text)
{
    if (text.starts_with("D:")) text.erase(0, 2);
    const std::size_t digits = std::min(text.find_first_not_of("0123456789"), text.size());
    if (digits < 4 || digits > 14 || digits % 2 != 0) return std::nullopt;
    // A time needs its minutes.
    std::string date = text.substr(0, digits == 10 ? 8 : digits);
    const std::string zone = text.substr(digits);
    const char* separators[] = {"-", "-", "T", ":", ":"};
    std::string result = date.substr(0, 4);
    for (std::size_t at = 4, i = 0; at < date.size(); at += 2, ++i) result += separators[i] + date.substr(at, 2);
    if (date.size() < 12) return result;
    if (zone.starts_with('Z')) return result + 'Z';
    if (!zone.starts_with('+') && !zone.starts_with('-')) return zone.empty() ? std::optional(result) : std::nullopt;
    std::string offset;
    for (const char c : zone.substr(1)) {
        if (c >= '0' && c <= '9') offset += c;
    }
    offset.resize(4, '0');
    return result + zone[0] + offset.substr(0, 2) + ':' + offset.substr(2);
}

}  // namespace

std::optional<std::string> ChangedPacket(std::string_view packet, const std::vector<XmpProperty>& properties)
{
    const auto elements = ReadXmlElements(packet);
    if (!elements) return std::nullopt;
    const CPacket view(packet, *elements);
    const auto root = view.Root();
    if (!root || (*elements)[*root].content == (*elements)[*root].end) return std::nullopt;

    const std::size_t insertAt = (*elements)[*root].contentEnd;
    std::vector<Range> ranges;
    for (const XmpProperty& property : properties) view.Collect(property, ranges);
    std::sort(ranges.begin(), ranges.end(), [](const Range& a, const Range& b) { return a.begin < b.begin; });

    std::string result;
    std::size_t copied = 0;
    for (const Range& range : ranges) {
        result += packet.substr(copied, range.begin - copied);
        copied = range.end;
    }
    result += packet.substr(copied, insertAt - copied);
    result += Description(view.About(), properties);
    return result += packet.substr(insertAt);
}

std::optional<XmpProperty> XmpCounterpart(std::string_view infoKey, const std::string& valueUtf8)
{
    for (const auto& row : kCounterparts) {
        if (row.infoKey != infoKey) continue;
        XmpProperty property{row.space, row.prefix, row.name, XmlEscaped(valueUtf8)};
        if (property.content.empty()) return property;
        if (row.form == Form::Languages) {
            property.content = "<rdf:Alt><rdf:li xml:lang=\"x-default\">" + property.content + "</rdf:li></rdf:Alt>";
        } else if (row.form == Form::List) {
            property.content = "<rdf:Seq><rdf:li>" + property.content + "</rdf:li></rdf:Seq>";
        } else if (row.form == Form::Date) {
            const auto date = IsoDate(valueUtf8);
            if (!date) return std::nullopt;
            property.content = *date;
        }
        return property;
    }
    return std::nullopt;
}

std::optional<std::string> MetadataPacket(QPDF& document)
{
    QPDFObjectHandle stream = document.getRoot().getKey("/Metadata");
    if (!stream.isStream()) return std::nullopt;
    try {
        const auto data = stream.getStreamData(qpdf_dl_all);
        return std::string(reinterpret_cast<const char*>(data->getBuffer()), data->getSize());
    } catch (const QPDFExc&) {
        return std::nullopt;  // it stays as it is, like a malformed one
    }
}

void SyncMetadata(QPDF& document, const std::set<std::string>& infoKeys)
{
    QPDFObjectHandle info = document.getTrailer().getKey("/Info");
    QPDFObjectHandle stream = document.getRoot().getKey("/Metadata");
    if (infoKeys.empty() || !info.isDictionary() || !stream.isStream()) return;
    std::vector<XmpProperty> properties;
    for (const std::string& key : infoKeys) {
        QPDFObjectHandle value = info.getKey('/' + key);
        if (!value.isString()) continue;
        if (auto property = XmpCounterpart(key, value.getUTF8Value())) properties.push_back(std::move(*property));
    }
    if (properties.empty()) return;
    const auto packet = MetadataPacket(document);
    const auto changed = packet ? ChangedPacket(*packet, properties) : std::nullopt;
    if (changed) stream.replaceStreamData(*changed, QPDFObjectHandle::newNull(), QPDFObjectHandle::newNull());
}

}  // namespace openhost
