#include "openhost/pdf/Xmp.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include <qpdf/Buffer.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFExc.hh>

#include "base/Text.h"
#include "base/Xml.h"

namespace openhost {
namespace {

constexpr std::size_t kDeepest = 100;
constexpr std::string_view kBlanks = " \t\r\n";

class CTagReader {
public:
    explicit CTagReader(std::string_view text) : m_text(text) {}

    bool Read()
    {
        for (std::size_t at = m_text.find('<'); at != std::string_view::npos; at = m_text.find('<', m_next)) {
            if (!ReadMarkup(at)) return false;
        }
        return m_open.empty();
    }
    std::vector<XmlElement> Take() { return std::move(m_elements); }

private:
    bool StartsAt(std::size_t at, std::string_view what) const { return m_text.substr(at, what.size()) == what; }

    bool SkipPast(std::size_t at, std::string_view what)
    {
        const std::size_t found = m_text.find(what, at);
        if (found == std::string_view::npos) return false;
        m_next = found + what.size();
        return true;
    }

    bool ReadMarkup(std::size_t at)
    {
        if (StartsAt(at, "<!--")) return SkipPast(at + 4, "-->");
        if (StartsAt(at, "<?")) return SkipPast(at + 2, "?>");
        if (StartsAt(at, "<![CDATA[")) return SkipPast(at + 9, "]]>");
        if (StartsAt(at, "<!")) return false;
        return StartsAt(at, "</") ? ReadClosing(at) : ReadOpening(at);
    }

    std::string_view NameAt(std::size_t at) const
    {
        const std::size_t end = m_text.find_first_of(" \t\r\n/>=<'\"", at);
        return end == std::string_view::npos ? std::string_view() : m_text.substr(at, end - at);
    }

    bool ReadClosing(std::size_t at)
    {
        const std::string_view name = NameAt(at + 2);
        if (m_open.empty() || name.empty() || m_elements[m_open.back()].name != name) return false;
        const std::size_t end = m_text.find_first_not_of(kBlanks, at + 2 + name.size());
        if (end == std::string_view::npos || m_text[end] != '>') return false;
        XmlElement& element = m_elements[m_open.back()];
        element.contentEnd = at;
        element.end = m_next = end + 1;
        m_open.pop_back();
        return true;
    }

    bool ReadOpening(std::size_t at)
    {
        XmlElement element;
        element.begin = at;
        element.name = NameAt(at + 1);
        if (element.name.empty() || m_open.size() >= kDeepest) return false;
        if (!m_open.empty()) element.parent = m_open.back();
        std::size_t next = at + 1 + element.name.size();
        while (ReadAttribute(next, element)) next = element.attributes.back().end;
        next = m_text.find_first_not_of(kBlanks, next);
        if (next == std::string_view::npos) return false;
        const bool empty = m_text[next] == '/';
        if (empty) ++next;
        if (next >= m_text.size() || m_text[next] != '>') return false;
        element.content = element.contentEnd = element.end = m_next = next + 1;
        m_elements.push_back(std::move(element));
        if (!empty) m_open.push_back(m_elements.size() - 1);
        return true;
    }

    bool ReadAttribute(std::size_t at, XmlElement& element) const
    {
        XmlAttribute attribute;
        attribute.begin = at;
        const std::size_t start = m_text.find_first_not_of(kBlanks, at);
        if (start == at || start == std::string_view::npos) return false;
        attribute.name = NameAt(start);
        if (attribute.name.empty()) return false;
        std::size_t quote = m_text.find_first_not_of(kBlanks, start + attribute.name.size());
        if (quote == std::string_view::npos || m_text[quote] != '=') return false;
        quote = m_text.find_first_not_of(kBlanks, quote + 1);
        if (quote == std::string_view::npos || (m_text[quote] != '"' && m_text[quote] != '\'')) return false;
        const std::size_t close = m_text.find(m_text[quote], quote + 1);
        if (close == std::string_view::npos) return false;
        attribute.value = m_text.substr(quote + 1, close - quote - 1);
        attribute.end = close + 1;
        element.attributes.push_back(attribute);
        return true;
    }

    std::string_view m_text;
    std::size_t m_next = 0;
    std::vector<XmlElement> m_elements;
    std::vector<std::size_t> m_open;
};

std::string_view PrefixOf(std::string_view name)
{
    const std::size_t colon = name.find(':');
    return colon == std::string_view::npos ? std::string_view() : name.substr(0, colon);
}

}  // namespace

std::optional<std::vector<XmlElement>> ReadXmlElements(std::string_view text)
{
    CTagReader reader(text);
    if (!reader.Read()) return std::nullopt;
    return reader.Take();
}

std::string_view XmlLocalName(std::string_view name) { return name.substr(name.find(':') + 1); }

std::string_view XmlNamespace(const std::vector<XmlElement>& elements, std::size_t at, std::string_view name)
{
    const std::string_view prefix = PrefixOf(name);
    const std::string wanted = prefix.empty() ? "xmlns" : "xmlns:" + std::string(prefix);
    for (std::optional<std::size_t> place = at; place; place = elements[*place].parent) {
        for (const XmlAttribute& attribute : elements[*place].attributes) {
            if (attribute.name == wanted) return attribute.value;
        }
    }
    return {};
}

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

struct Edit {
    std::size_t begin, end;
    std::string text = {};  // what takes the place
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
    void Collect(const XmpProperty& property, std::vector<Edit>& edits) const
    {
        for (std::size_t at = 0; at < m_elements.size(); ++at) {
            const XmlElement& element = m_elements[at];
            if (element.parent && IsDescription(*element.parent) && Is(at, property.space, property.name)) {
                const bool alone = SaysNothingElse(*element.parent, at);
                edits.push_back(alone ? WholeLine(*element.parent) : Edit{element.begin, element.end});
            }
            if (!IsDescription(at)) continue;
            for (const XmlAttribute& attribute : element.attributes) {
                const bool prefixed = attribute.name.find(':') != std::string_view::npos;
                if (prefixed && XmlLocalName(attribute.name) == property.name &&
                    XmlNamespace(m_elements, at, attribute.name) == property.space) {
                    edits.push_back({attribute.begin, attribute.end});
                }
            }
        }
    }

    /// The changes of a text whose packet has it in other languages, too; none when there are none.
    std::vector<Edit> DefaultLanguageEdits(const XmpProperty& property) const
    {
        if (!property.defaultText) return {};
        const auto statement = OnlyStatement(property);
        const auto alternative = statement ? OnlyChild(*statement) : std::nullopt;
        if (!alternative || !Is(*alternative, kRdf, "Alt")) return {};
        std::optional<std::size_t> first, standard;
        std::vector<std::size_t> others;
        for (std::size_t at = 0; at < m_elements.size(); ++at) {
            if (m_elements[at].parent != alternative || !Is(at, kRdf, "li")) continue;
            if (!first) first = at;
            const bool isDefault = IsDefaultLanguage(at);
            if (isDefault && standard) return {};
            if (isDefault)
                standard = at;
            else
                others.push_back(at);
        }
        if (others.empty()) return {};
        const XmlElement& place = m_elements[standard.value_or(*first)];
        const std::string name(place.name);
        std::vector<Edit> edits{{place.begin, standard ? place.end : place.begin}};
        if (!property.content.empty())
            edits.front().text = '<' + name + " xml:lang=\"x-default\">" + *property.defaultText + "</" + name + '>';
        if (!property.dropCopies) return edits;
        const std::string former = ContentOf(standard.value_or(*first));
        for (const std::size_t other : others)
            if (ContentOf(other) == former) edits.push_back({m_elements[other].begin, m_elements[other].end});
        return edits.size() > others.size() ? std::vector<Edit>() : edits;
    }

    /// What under a name says one of `texts`: items of lists, or statements that are no lists.
    void CollectItems(std::string_view space, std::string_view name, const std::set<std::string>& texts,
                      std::vector<Edit>& edits) const
    {
        std::optional<std::size_t> statement;
        for (std::size_t at = 0; at < m_elements.size(); ++at) {
            const XmlElement& element = m_elements[at];
            if (element.parent && IsDescription(*element.parent) && Is(at, space, name)) statement = at;
            const bool isInside = statement && element.begin >= m_elements[*statement].begin &&
                                  element.end <= m_elements[*statement].end;
            if (isInside && texts.contains(Trim(ContentOf(at)))) edits.push_back({element.begin, element.end});
            if (!IsDescription(at)) continue;
            for (const XmlAttribute& attribute : element.attributes)
                if (XmlLocalName(attribute.name) == name && XmlNamespace(m_elements, at, attribute.name) == space &&
                    texts.contains(Trim(XmlUnescaped(attribute.value))))
                    edits.push_back({attribute.begin, attribute.end});
        }
    }
    /// What the packet says under a name, statement by statement.
    std::vector<std::vector<std::string>> TextsOf(std::string_view space, std::string_view name) const
    {
        std::vector<std::vector<std::string>> texts;
        for (std::size_t at = 0; at < m_elements.size(); ++at) {
            const XmlElement& element = m_elements[at];
            if (element.parent && IsDescription(*element.parent) && Is(at, space, name)) texts.push_back(TextsIn(at));
            if (!IsDescription(at)) continue;
            for (const XmlAttribute& attribute : element.attributes)
                if (attribute.name.find(':') != std::string_view::npos && XmlLocalName(attribute.name) == name &&
                    XmlNamespace(m_elements, at, attribute.name) == space)
                    texts.push_back({XmlUnescaped(attribute.value)});
        }
        return texts;
    }

private:
    /// A plain text, the default of an alternative, or all of a list.
    std::vector<std::string> TextsIn(std::size_t statement) const
    {
        std::vector<std::string> texts;
        bool isPlain = true;
        for (std::size_t at = statement + 1;
             at < m_elements.size() && m_elements[at].begin < m_elements[statement].end; ++at) {
            isPlain = false;
            if (!Is(at, kRdf, "li")) continue;
            const bool isAlternative = m_elements[at].parent && Is(*m_elements[at].parent, kRdf, "Alt");
            if (isAlternative && IsDefaultLanguage(at)) return {ContentOf(at)};
            if (!isAlternative || texts.empty()) texts.push_back(ContentOf(at));
        }
        if (isPlain) texts.push_back(ContentOf(statement));
        return texts;
    }
    std::string ContentOf(std::size_t at) const
    {
        const XmlElement& element = m_elements[at];
        if (element.contentEnd < element.content) return {};
        return XmlUnescaped(m_text.substr(element.content, element.contentEnd - element.content));
    }

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
    Edit WholeLine(std::size_t at) const
    {
        const std::size_t end = m_elements[at].end;
        return {m_elements[at].begin, end < m_text.size() && m_text[end] == '\n' ? end + 1 : end};
    }

    /// The one element that says the property of the document; nothing when there is none, or several.
    std::optional<std::size_t> OnlyStatement(const XmpProperty& property) const
    {
        std::optional<std::size_t> found;
        for (std::size_t at = 0; at < m_elements.size(); ++at) {
            const auto parent = m_elements[at].parent;
            if (!parent || !IsDescription(*parent) || !Is(at, property.space, property.name)) continue;
            if (found) return std::nullopt;
            found = at;
        }
        return found;
    }
    std::optional<std::size_t> OnlyChild(std::size_t parent) const
    {
        std::optional<std::size_t> found;
        for (std::size_t at = 0; at < m_elements.size(); ++at) {
            if (m_elements[at].parent != parent) continue;
            if (found) return std::nullopt;
            found = at;
        }
        return found;
    }
    /// Some programs leave the mark out.
    bool IsDefaultLanguage(std::size_t at) const
    {
        for (const XmlAttribute& attribute : m_elements[at].attributes)
            if (attribute.name == "xml:lang") return attribute.value == "x-default";
        return true;
    }

    std::string_view m_text;
    const std::vector<XmlElement>& m_elements;
    std::vector<std::size_t> m_roots;
};

std::string Edited(std::string_view packet, std::vector<Edit> edits)
{
    std::ranges::stable_sort(edits, {}, &Edit::begin);
    std::string result;
    std::size_t copied = 0;
    for (const Edit& edit : edits) {
        result += std::string(packet.substr(copied, edit.begin - copied)) + edit.text;
        copied = edit.end;
    }
    return result += packet.substr(copied);
}

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
    std::vector<Edit> edits;
    std::vector<XmpProperty> stated;  // anew, in a description of their own
    for (const XmpProperty& property : properties) {
        if (auto own = view.DefaultLanguageEdits(property); !own.empty()) {
            std::ranges::move(own, std::back_inserter(edits));
            continue;
        }
        view.Collect(property, edits);
        stated.push_back(property);
    }
    edits.push_back({insertAt, insertAt, Description(view.About(), stated)});
    return Edited(packet, std::move(edits));
}

std::optional<XmpProperty> XmpCounterpart(std::string_view infoKey, const std::string& valueUtf8)
{
    for (const auto& row : kCounterparts) {
        if (row.infoKey != infoKey) continue;
        XmpProperty property{row.space, row.prefix, row.name, XmlEscaped(valueUtf8)};
        if (row.form == Form::Languages) property.defaultText = property.content;
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

std::map<std::string, std::string> TextsInPacket(std::string_view packet)
{
    std::map<std::string, std::string> texts;
    const auto elements = ReadXmlElements(packet);
    if (!elements) return texts;
    const CPacket view(packet, *elements);
    if (!view.Root()) return texts;
    for (const auto& row : kCounterparts) {
        if (row.form == Form::Date) continue;
        const auto statements = view.TextsOf(row.space, row.name);
        if (statements.empty()) continue;
        std::string joined;  // of several statements the first
        for (const std::string& text : statements.front()) joined += (joined.empty() ? "" : "; ") + text;
        if (!joined.empty()) texts.emplace(row.infoKey, std::move(joined));
    }
    return texts;
}

std::vector<std::string> PacketTexts(std::string_view packet, std::string_view infoKey)
{
    std::vector<std::string> texts;
    const auto elements = ReadXmlElements(packet);
    if (!elements) return texts;
    const CPacket view(packet, *elements);
    for (const auto& row : kCounterparts)
        if (row.infoKey == infoKey)
            for (auto& statement : view.TextsOf(row.space, row.name))
                std::ranges::move(statement, std::back_inserter(texts));
    return texts;
}

std::vector<std::string> SubjectsInPacket(std::string_view packet)
{
    std::vector<std::string> subjects;
    if (const auto elements = ReadXmlElements(packet))
        for (auto& statement : CPacket(packet, *elements).TextsOf(kDublinCore, "subject"))
            std::ranges::move(statement, std::back_inserter(subjects));
    return subjects;
}

std::optional<std::string> WithoutSubjects(std::string_view packet, const std::set<std::string>& subjects)
{
    const auto elements = ReadXmlElements(packet);
    if (!elements) return std::nullopt;
    std::vector<Edit> edits;
    CPacket(packet, *elements).CollectItems(kDublinCore, "subject", subjects, edits);
    if (edits.empty()) return std::nullopt;
    return Edited(packet, edits);
}

std::vector<std::string> TextsInXml(std::string_view xml)
{
    const auto elements = ReadXmlElements(xml);
    if (!elements) return {std::string(xml), XmlUnescaped(xml)};
    std::vector<std::pair<std::size_t, std::size_t>> tags;
    std::vector<std::string> texts;
    for (const XmlElement& element : *elements) {
        tags.emplace_back(element.begin, element.content);
        tags.emplace_back(element.contentEnd, element.end);
        for (const XmlAttribute& attribute : element.attributes)
            if (!attribute.name.starts_with("xml") && XmlLocalName(attribute.name) != "parseType")
                texts.push_back(XmlUnescaped(attribute.value));
    }
    std::ranges::sort(tags);
    std::size_t at = 0;
    const auto add = [&](std::size_t end) {
        if (at >= end) return;
        texts.emplace_back(xml.substr(at, end - at));
        if (std::string plain = XmlUnescaped(texts.back()); plain != texts.back()) texts.push_back(std::move(plain));
    };
    for (const auto& [begin, end] : tags) {
        add(begin);
        at = std::max(at, end);
    }
    add(xml.size());
    return texts;
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

std::optional<std::string> SyncedPacket(QPDF& document, const std::set<std::string>& infoKeys, bool dropCopies)
{
    QPDFObjectHandle info = document.getTrailer().getKey("/Info");
    std::vector<XmpProperty> properties;
    for (const std::string& key : infoKeys) {
        QPDFObjectHandle value = info.isDictionary() ? info.getKey('/' + key) : QPDFObjectHandle::newNull();
        if (!value.isString() && !value.isNull()) continue;
        const std::string text = value.isString() ? value.getUTF8Value() : std::string();
        if (auto property = XmpCounterpart(key, text)) {
            property->dropCopies = dropCopies;
            properties.push_back(std::move(*property));
        }
    }
    if (properties.empty()) return std::nullopt;
    const auto packet = MetadataPacket(document);
    auto changed = packet ? ChangedPacket(*packet, properties) : std::nullopt;
    if (changed == packet) return std::nullopt;
    return changed;
}

void SyncMetadata(QPDF& document, const std::set<std::string>& infoKeys, bool dropCopies)
{
    QPDFObjectHandle nothing = QPDFObjectHandle::newNull();
    if (const auto packet = SyncedPacket(document, infoKeys, dropCopies))
        document.getRoot().getKey("/Metadata").replaceStreamData(*packet, nothing, nothing);
}

}  // namespace openhost
