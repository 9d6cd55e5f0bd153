#include "openhost/pdf/XmlTags.h"

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

std::string XmlEscaped(std::string_view utf8)
{
    std::string escaped;
    for (const char c : utf8) {
        const bool control = static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r';
        if (c == '&') {
            escaped += "&amp;";
        } else if (c == '<') {
            escaped += "&lt;";
        } else if (c == '>') {
            escaped += "&gt;";
        } else if (c == '\r') {
            escaped += "&#13;";
        } else if (!control) {
            escaped += c;
        }
    }
    return escaped;
}

}  // namespace openhost
