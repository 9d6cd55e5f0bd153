#include "sequence/GuardedXml.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

#include <tinyxml.h>

#include "base/Text.h"
#include "base/Unicode.h"

namespace {

constexpr std::string_view kBlanks = " \t\r\n";
constexpr std::size_t kNone = std::string_view::npos;

int DigitValue(char c, bool hexadecimal)
{
    if (c >= '0' && c <= '9') return c - '0';
    if (hexadecimal && c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (hexadecimal && c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

bool IsCharacter(unsigned long code)
{
    return code == 9 || code == 10 || code == 13 || (code >= 0x20 && code < 0xD800) ||
           (code >= 0xE000 && code <= 0x10FFFF);
}

/// `rest` begins behind the number sign of a reference.
bool IsCharacterReference(std::string_view rest)
{
    const bool hexadecimal = rest.starts_with('x');
    if (hexadecimal) rest.remove_prefix(1);
    unsigned long code = 0;
    for (std::size_t at = 0; at < rest.size(); ++at) {
        if (rest[at] == ';') return at > 0 && IsCharacter(code);
        const int digit = DigitValue(rest[at], hexadecimal);
        if (digit < 0 || code > 0x10FFFF) return false;
        code = code * (hexadecimal ? 16 : 10) + static_cast<unsigned long>(digit);
    }
    return false;
}

/// `rest` begins behind the ampersand.
bool IsEntityReference(std::string_view rest)
{
    for (const char* entity : {"amp;", "lt;", "gt;", "quot;", "apos;"})
        if (rest.starts_with(entity)) return true;
    return false;
}

bool StartsName(char c)
{
    const auto byte = static_cast<unsigned char>(c);
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || byte == '_' || byte >= 0x80;
}

/// Whether the parser reads an instruction as an XML declaration with values in quotes, in which it does not see the
/// end of the instruction. It takes every instruction whose name begins with "xml" for a declaration.
bool LooksLikeDeclaration(std::string_view instruction)
{
    if (!EqualsIgnoreCaseAscii(instruction.substr(0, 5), "<?xml")) return false;
    if (instruction.size() < 6 || instruction[5] != '-') return true;
    const std::string lower = ToLowerAscii(instruction);
    for (const char* word : {"version", "encoding", "standalone"})
        if (lower.find(word) != kNone) return true;
    return false;
}

/// Walks over the tags of a text and stops at the first thing that the parser should not see. Where the parser reads
/// a construct in a way of its own (it ends instructions at the first ">"), the scan reads it alike or refuses it:
/// nothing may look like a comment here and like elements there.
class CXmlScan {
public:
    CXmlScan(std::string_view text, const XmlLimits& limits, std::vector<XmlPart>* outline)
        : m_text(text), m_limits(limits), m_outline(outline)
    {
    }

    std::string Problem()
    {
        while (m_at < m_text.size() && m_problem.empty()) {
            m_construct = m_at;
            if (m_text[m_at] == '<') {
                Markup();
            } else {
                CharacterData();
            }
        }
        if (!m_problem.empty()) return m_problem;
        if (m_elements == 0) Fail("The file does not contain an XML document.");
        if (!m_open.empty()) Fail("The XML document is cut off: an element is not closed.");
        return m_problem;
    }

    /// Where the problem is, in bytes from the start of the text.
    std::size_t ProblemAt() const { return m_problemAt; }

private:
    bool StartsWith(std::string_view what) const { return m_text.substr(m_at, what.size()) == what; }
    void Fail(const char* sentence) { FailAt(m_at == kNone ? m_construct : m_at, sentence); }
    void FailAt(std::size_t at, const char* sentence)
    {
        m_problem = sentence;
        m_problemAt = at;
    }

    void Skip(std::string_view start, std::string_view end)
    {
        const std::size_t found = m_text.find(end, m_at + start.size());
        if (found == kNone) return Fail("The XML document is cut off inside a tag or a comment.");
        m_at = found + end.size();
    }

    void CharacterData()
    {
        const std::size_t end = std::min(m_text.find('<', m_at), m_text.size());
        const std::string_view data = m_text.substr(m_at, end - m_at);
        if (const std::size_t text = data.find_first_not_of(kBlanks); m_open.empty() && text != kNone)
            return FailAt(m_at + text, "There is text outside of the root element.");
        CheckReferences(data);
        m_at = end;
    }

    void Markup()
    {
        if (StartsWith("<!--")) return Skip("<!--", "-->");
        if (StartsWith("<![CDATA[")) return Skip("<![CDATA[", "]]>");
        if (StartsWith("<!")) return Fail("Document type and entity declarations are not allowed.");
        if (StartsWith("<?")) return Instruction();
        if (StartsWith("</")) return EndTag();
        StartTag();
    }

    void Instruction()
    {
        const std::size_t start = m_at;
        Skip("<?", ">");
        if (!m_problem.empty()) return;
        const std::string_view instruction = m_text.substr(start, m_at - start);
        if (LooksLikeDeclaration(instruction))
            return FailAt(start, "There is an XML declaration inside of the document.");
        if (!instruction.ends_with("?>")) FailAt(start, "An instruction is not closed.");
    }

    void EndTag()
    {
        if (m_open.empty()) return Fail("An element is closed that was not opened.");
        const std::size_t start = m_at;
        Skip("</", ">");
        if (!m_problem.empty()) return;
        std::string_view name = m_text.substr(start + 2, m_at - start - 3);
        name = name.substr(0, name.find_last_not_of(kBlanks) + 1);
        if (name != m_open.back().name) return FailAt(start, "An element is closed under the name of another.");
        Close();
    }

    void Close()
    {
        if (m_open.back().part != kNone) (*m_outline)[m_open.back().part].end = m_at;
        m_open.pop_back();
    }

    void StartTag()
    {
        if (m_open.empty() && m_elements > 0) return Fail("There is more than one root element.");
        if (++m_elements > m_limits.elements) return Fail("The XML document has too many elements.");
        if (static_cast<int>(m_open.size()) == m_limits.depth) return Fail("The elements are nested too deeply.");
        if (m_at + 1 >= m_text.size() || !StartsName(m_text[m_at + 1])) return Fail("An element has no proper name.");
        const std::size_t start = m_at;
        m_at = m_text.find_first_of(" \t\r\n/>", m_at);
        Open(start);
        for (int attributes = 0; m_problem.empty(); ++attributes) {
            if (EndOfTag()) return;
            if (attributes >= m_limits.attributesOfOneElement) return Fail("An element has too many attributes.");
            Attribute();
        }
    }

    void Open(std::size_t start)
    {
        m_open.push_back({m_text.substr(start + 1, std::min(m_at, m_text.size()) - start - 1), kNone});
        const int depth = static_cast<int>(m_open.size());
        if (!m_outline || depth > kOutlineDepth) return;
        m_open.back().part = m_outline->size();
        m_outline->push_back({depth, start, start, start});
    }

    /// Steps over blanks and the end of the tag; false when an attribute follows.
    bool EndOfTag()
    {
        SkipBlanks();
        if (m_at == kNone) {
            Fail("The XML document is cut off inside an element.");
            return true;
        }
        const bool empty = StartsWith("/>");
        if (!empty && m_text[m_at] != '>') return false;
        m_at += empty ? 2 : 1;
        if (m_open.back().part != kNone) (*m_outline)[m_open.back().part].tagEnd = m_at;
        if (empty) Close();
        return true;
    }

    void SkipBlanks()
    {
        if (m_at != kNone) m_at = m_text.find_first_not_of(kBlanks, m_at);
    }

    void Attribute()
    {
        m_at = m_text.find_first_of(" \t\r\n=<>/&\"'", m_at);
        SkipBlanks();
        if (m_at == kNone || m_text[m_at] != '=') return Fail("An attribute has no value.");
        ++m_at;
        SkipBlanks();
        if (m_at == kNone || (m_text[m_at] != '"' && m_text[m_at] != '\''))
            return Fail("An attribute has no value in quotes.");
        const std::size_t end = m_text.find(m_text[m_at], m_at + 1);
        if (end == kNone) return Fail("The XML document is cut off inside an attribute.");
        CheckReferences(m_text.substr(m_at + 1, end - m_at - 1));
        m_at = end + 1;
    }

    /// The parser drops the ampersand of a reference that it does not know, so there must be none. `data` is a part
    /// of the text.
    void CheckReferences(std::string_view data)
    {
        const auto start = static_cast<std::size_t>(data.data() - m_text.data());
        for (std::size_t at = data.find('&'); at != kNone; at = data.find('&', at + 1)) {
            const std::string_view rest = data.substr(at + 1);
            if (rest.starts_with('#')) {
                if (!IsCharacterReference(rest.substr(1)))
                    return FailAt(start + at, "A reference names a character that does not exist.");
            } else if (!IsEntityReference(rest)) {
                return FailAt(start + at, "A reference names an unknown entity.");
            }
        }
    }

    std::string_view m_text;
    XmlLimits m_limits;
    std::size_t m_at = 0, m_construct = 0, m_problemAt = 0;
    int m_elements = 0;
    struct OpenElement {
        std::string_view name;
        std::size_t part;  // its place in the outline
    };
    std::vector<OpenElement> m_open;
    std::vector<XmlPart>* m_outline;  // borrowed, may be null
    std::string m_problem;
};

}  // namespace

Expected<std::string_view> CheckedXml(std::string_view bytes, const XmlLimits& limits, std::size_t* faultAt,
                                      std::vector<XmlPart>* outline)
{
    const std::string_view whole = bytes;
    const auto place = [&](std::string_view rest) { return static_cast<std::size_t>(rest.data() - whole.data()); };
    const auto fail = [&](std::size_t at, std::string sentence) {
        if (faultAt) *faultAt = at;
        return Failure(std::move(sentence));
    };
    if (bytes.size() > limits.bytes) return fail(kNone, "The file is too large for a sequence.");
    if (bytes.starts_with("\xEF\xBB\xBF")) bytes.remove_prefix(3);
    bytes.remove_prefix(std::min(bytes.find_first_not_of(kBlanks), bytes.size()));
    if (bytes.empty()) return fail(kNone, "The file is empty.");
    if (bytes.find('\0') != kNone || !IsValidUtf8(bytes)) return fail(kNone, "The file is not UTF-8 text.");
    if (bytes.starts_with("<?xml")) {
        const std::size_t end = bytes.find("?>");
        if (end == kNone) return fail(place(bytes), "The XML document is cut off inside a tag or a comment.");
        bytes.remove_prefix(end + 2);
    }
    CXmlScan scan(bytes, limits, outline);
    if (std::string problem = scan.Problem(); !problem.empty())
        return fail(place(bytes) + scan.ProblemAt(), std::move(problem));
    if (outline) {
        for (XmlPart& part : *outline)
            for (std::size_t* at : {&part.begin, &part.tagEnd, &part.end}) *at += place(bytes);
    }
    return bytes;
}

namespace {

bool ContinuesCharacter(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

/// The places of bytes that are asked for from front to back. A line ends with a line feed, a carriage return, or
/// both.
class CPlaces {
public:
    explicit CPlaces(std::string_view bytes) : m_bytes(bytes), m_at(bytes.starts_with("\xEF\xBB\xBF") ? 3 : 0) {}

    TextPlace Of(std::size_t at)
    {
        for (; m_at < at && m_at < m_bytes.size(); ++m_at) {
            const char c = m_bytes[m_at];
            const bool halfOfTwo = c == '\r' && m_at + 1 < m_bytes.size() && m_bytes[m_at + 1] == '\n';
            if ((c == '\n' || c == '\r') && !halfOfTwo)
                m_place = {m_place.line + 1, 1};
            else if (!ContinuesCharacter(c))
                ++m_place.column;
        }
        return m_place;
    }

private:
    std::string_view m_bytes;
    std::size_t m_at;
    TextPlace m_place{1, 1};
};

/// What is parsed of an element: all of it, or its first tag, closed.
std::string TextOf(std::string_view bytes, const XmlPart& part)
{
    if (part.depth == kOutlineDepth) return std::string(bytes.substr(part.begin, part.end - part.begin));
    std::string tag(bytes.substr(part.begin, part.tagEnd - part.begin));
    if (!tag.ends_with("/>")) tag.insert(tag.size() - 1, "/");
    return tag;
}

}  // namespace

std::optional<XmlFault> WalkGuardedXml(std::string_view bytes,
                                       const std::function<bool(const VisitedElement&)>& visit)
{
    CPlaces places(bytes);
    std::size_t faultAt = 0;
    std::vector<XmlPart> outline;
    if (const auto checked = CheckedXml(bytes, {}, &faultAt, &outline); !checked)
        return XmlFault{checked.Error(), faultAt == bytes.npos ? TextPlace{} : places.Of(faultAt)};
    for (const XmlPart& part : outline) {
        const TextPlace start = places.Of(part.begin);
        TiXmlDocument document;
        document.SetTabSize(1);
        document.Parse(TextOf(bytes, part).c_str(), nullptr, TIXML_ENCODING_UTF8);
        if (document.Error() || !document.RootElement())
            return XmlFault{document.ErrorDesc(), PlaceFrom(start, document.ErrorRow(), document.ErrorCol()), true};
        if (!visit({*document.RootElement(), part.depth, start})) break;
    }
    return std::nullopt;
}

std::string FaultSentence(const XmlFault& fault)
{
    return fault.byParser ? fault.sentence + " (line " + std::to_string(fault.place.line) + ")" : fault.sentence;
}

bool IsNamed(const TiXmlElement& element, const char* name) { return std::strcmp(element.Value(), name) == 0; }

std::string AttributeText(const TiXmlElement& element, const char* name)
{
    const std::string* value = element.Attribute(std::string(name));
    return value ? *value : std::string();
}

TextPlace PlaceFrom(TextPlace start, int row, int column)
{
    if (row <= 0) return {};
    return {start.line + row - 1, row == 1 ? start.column + column - 1 : column};
}
