#include "openhost/pdf/FormerTexts.h"

#include <algorithm>
#include <optional>
#include <set>
#include <string_view>

#include <qpdf/Buffer.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFObjectHandle.hh>
#include <qpdf/QPDFXRefEntry.hh>
#include <qpdf/QUtil.hh>

#include "base/Text.h"
#include "base/Unicode.h"
#include "openhost/pdf/Xmp.h"

namespace openhost {
namespace {

constexpr std::size_t kShortestAmongOthers = 4;  // characters; below that a text is found everywhere

std::string Utf8Of(const std::string& pdfText) { return QPDFObjectHandle::newString(pdfText).getUTF8Value(); }

bool IsDate(const std::string& key) { return key == "CreationDate" || key == "ModDate"; }

std::string InfoText(QPDF& document, const std::string& key)
{
    QPDFObjectHandle info = document.getTrailer().getKey("/Info");
    QPDFObjectHandle value = info.isDictionary() ? info.getKey('/' + key) : QPDFObjectHandle::newNull();
    return value.isString() ? value.getUTF8Value() : std::string();
}

std::vector<std::string> OwnTexts(QPDF& document, const std::string& key, const std::optional<std::string>& packet)
{
    std::vector<std::string> texts{InfoText(document, key)};
    if (packet)
        for (std::string& text : PacketTexts(*packet, key)) texts.push_back(std::move(text));
    return texts;
}

}  // namespace

std::vector<FormerText> FormerTextsOf(QPDF& document, const std::map<std::string, std::string>& oldInfo)
{
    const auto packet = MetadataPacket(document);
    std::vector<FormerText> former;
    for (const auto& [key, bytes] : oldInfo) {
        std::set<std::string> texts{Trim(Utf8Of(bytes))};
        if (packet)
            for (const std::string& text : PacketTexts(*packet, key)) texts.insert(Trim(text));
        texts.erase(std::string());
        const std::string now = InfoText(document, key);
        texts.erase(Trim(now));
        if (const auto inPacket = XmpCounterpart(key, now)) texts.erase(inPacket->content);  // of dates
        for (const std::string& text : texts) former.push_back({key, text});
    }
    return former;
}

namespace {

std::set<std::string> KeywordsIn(const std::string& text)
{
    std::set<std::string> keywords;
    for (const std::string& keyword : Split(text, ",;")) keywords.insert(Trim(keyword));
    keywords.erase(std::string());
    return keywords;
}

std::set<std::string> FormerKeywords(QPDF& document, const std::vector<FormerText>& former)
{
    std::set<std::string> keywords;
    for (const FormerText& text : former)
        if (text.key == "Keywords") keywords.merge(KeywordsIn(text.utf8));
    for (const std::string& now : KeywordsIn(InfoText(document, "Keywords"))) keywords.erase(now);
    return keywords;
}

}  // namespace

void DropFormerSubjects(QPDF& document, const std::vector<FormerText>& former)
{
    const auto packet = MetadataPacket(document);
    const auto changed = packet ? WithoutSubjects(*packet, FormerKeywords(document, former)) : std::nullopt;
    QPDFObjectHandle nothing = QPDFObjectHandle::newNull();
    if (changed) document.getRoot().getKey("/Metadata").replaceStreamData(*changed, nothing, nothing);
}

namespace {

// ---- texts among bytes

enum class Encoding { Utf8, Pdf, Utf16Big, Utf16Little };

/// Nothing when the encoding has no form of it, or the same as UTF-8.
std::optional<std::string> Encoded(const std::string& utf8, Encoding encoding)
{
    std::string bytes;
    switch (encoding) {
        case Encoding::Utf8:
            return utf8;
        case Encoding::Pdf:
            if (!QUtil::utf8_to_pdf_doc(utf8, bytes) || bytes == utf8) return std::nullopt;
            return bytes;
        case Encoding::Utf16Big:
        case Encoding::Utf16Little:
            return Utf8ToUtf16Bytes(utf8, encoding == Encoding::Utf16Big);
    }
    return std::nullopt;
}

bool IsAsciiWord(char c) { return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

/// The character that begins at a place, when it is one of ASCII that makes words.
bool IsWordAt(std::string_view bytes, std::size_t at, Encoding encoding)
{
    const bool wide = encoding == Encoding::Utf16Big || encoding == Encoding::Utf16Little;
    if (at >= bytes.size() || (wide && bytes.size() - at < 2)) return false;
    if (!wide) return IsAsciiWord(bytes[at]);
    const std::size_t low = encoding == Encoding::Utf16Big ? 1 : 0;
    return bytes[at + 1 - low] == '\0' && IsAsciiWord(bytes[at + low]);
}

bool HasLetter(const std::string& utf8)
{
    for (std::size_t at = 0; at < utf8.size();)
        if (IsLetter(NextUtf8(utf8, at))) return true;
    return false;
}

/// Texts may hold the code of their language between two escape characters.
std::string WithoutLanguageCodes(std::string utf8)
{
    for (std::size_t at = utf8.find('\x1B'); at != std::string::npos; at = utf8.find('\x1B', at)) {
        const std::size_t end = utf8.find('\x1B', at + 1);
        if (end == std::string::npos) break;
        utf8.erase(at, end + 1 - at);
    }
    return utf8;
}

/// One text in one encoding, and the texts that were asked for and may hold it.
class CSoughtBytes {
public:
    CSoughtBytes(std::string bytes, Encoding encoding, const std::vector<std::string>& wanted)
        : m_bytes(std::move(bytes)), m_encoding(encoding), m_width(encoding < Encoding::Utf16Big ? 1 : 2)
    {
        for (const std::string& utf8 : wanted)
            if (auto around = Encoded(utf8, encoding); around && around->find(m_bytes) != std::string::npos)
                m_wanted.push_back(std::move(*around));
    }
    bool StandsIn(std::string_view text) const
    {
        for (std::size_t at = text.find(m_bytes); at != std::string_view::npos; at = text.find(m_bytes, at + 1))
            if (!IsInsideWord(text, at) && !IsWanted(text, at)) return true;
        return false;
    }

private:
    bool IsInsideWord(std::string_view text, std::size_t at) const
    {
        const std::size_t end = at + m_bytes.size();
        if (IsWordAt(text, end, m_encoding) && IsWordAt(text, end - m_width, m_encoding)) return true;
        return at >= m_width && IsWordAt(text, at - m_width, m_encoding) && IsWordAt(text, at, m_encoding);
    }
    bool IsWanted(std::string_view text, std::size_t at) const
    {
        return std::ranges::any_of(m_wanted, [&](const std::string& around) {
            for (std::size_t in = around.find(m_bytes); in != std::string::npos; in = around.find(m_bytes, in + 1))
                if (in <= at && text.substr(at - in, around.size()) == around) return true;
            return false;
        });
    }

    std::string m_bytes;
    Encoding m_encoding;
    std::size_t m_width;  // bytes
    std::vector<std::string> m_wanted;
};

class CSought {
public:
    CSought(const FormerText& former, const std::vector<std::string>& wanted)
        : m_former(former), m_alone(Utf8ToUtf32(former.utf8).size() < kShortestAmongOthers || !HasLetter(former.utf8))
    {
        if (m_alone) m_isWanted = std::ranges::find(wanted, former.utf8) != wanted.end();
        for (const auto encoding : {Encoding::Utf8, Encoding::Pdf, Encoding::Utf16Big, Encoding::Utf16Little})
            if (auto bytes = Encoded(former.utf8, encoding); bytes && !m_alone)
                m_forms.emplace_back(std::move(*bytes), encoding, wanted);
    }
    const FormerText& Former() const { return m_former; }
    bool StandsInText(const std::string& utf8) const
    {
        return m_alone ? !m_isWanted && Trim(utf8) == m_former.utf8 : StandsInBytes(utf8);
    }
    bool StandsInBytes(std::string_view bytes) const
    {
        return std::ranges::any_of(m_forms, [&](const CSoughtBytes& form) { return form.StandsIn(bytes); });
    }

private:
    FormerText m_former;
    bool m_alone, m_isWanted = false;
    std::vector<CSoughtBytes> m_forms;
};

// ---- places in a document

/// Entries of the catalogue that lead to what the document shows, or to what its signatures rest on.
constexpr std::string_view kContent[] = {
    "/Pages",          "/Outlines",   "/Dests",        "/Names",         "/AcroForm",
    "/StructTreeRoot", "/PageLabels", "/OCProperties", "/OutputIntents", "/AF",
    "/OpenAction",     "/AA",         "/Collection",   "/DSS",           "/Perms"};
/// Entries of any object that do not belong to what it shows.
constexpr std::string_view kDescriptions[] = {"/Metadata", "/PieceInfo"};

bool IsAmong(std::string_view key, auto& keys) { return std::ranges::find(keys, key) != std::end(keys); }

/// The objects that make up what a document shows, and what is attached to them and describes them.
class CContent {
public:
    explicit CContent(QPDF& document)
    {
        QPDFObjectHandle root = document.getRoot();
        m_seen = {root.getObjGen(), document.getTrailer().getKey("/Info").getObjGen()};
        for (const std::string& key : root.getKeys())
            if (IsAmong(key, kContent)) m_open.push_back(root.getKey(key));
        while (!m_open.empty()) {
            QPDFObjectHandle next = m_open.back();
            m_open.pop_back();
            Enter(next);
        }
    }
    bool Holds(QPDFObjGen object) const { return m_content.contains(object); }
    /// Those that are no objects of their own.
    const std::vector<QPDFObjectHandle>& Descriptions() const { return m_descriptions; }

private:
    void Enter(QPDFObjectHandle value)
    {
        if (value.isIndirect()) {
            if (!m_seen.insert(value.getObjGen()).second) return;
            m_content.insert(value.getObjGen());
        }
        if (value.isArray())
            for (QPDFObjectHandle item : value.aitems()) Add(item);
        QPDFObjectHandle dictionary = value.isStream() ? value.getDict() : value;
        if (!dictionary.isDictionary()) return;
        const bool isPage = dictionary.isDictionaryOfType("/Page");
        for (const std::string& key : dictionary.getKeys()) {
            QPDFObjectHandle child = dictionary.getKey(key);
            const bool describes = IsAmong(key, kDescriptions);
            if (describes && !child.isIndirect()) m_descriptions.push_back(child);
            if (!describes && !(isPage && key == "/B")) Add(child);  // beads lead to threads, which have titles
        }
    }
    void Add(QPDFObjectHandle value)
    {
        if (value.isArray() || value.isDictionary() || value.isStream() || value.isIndirect())
            m_open.push_back(value);
    }

    std::set<QPDFObjGen> m_seen, m_content;
    std::vector<QPDFObjectHandle> m_open, m_descriptions;
};

class CTraceSearch {
public:
    CTraceSearch(QPDF& written, const std::vector<FormerText>& former, const std::vector<std::string>& wanted)
        : m_written(written)
    {
        for (const FormerText& text : former)
            if (!IsDate(text.key)) m_sought.emplace_back(text, wanted);
    }

    /// Empty when nothing is found.
    std::string Finding()
    {
        if (m_sought.empty()) return {};
        const CContent content(m_written);
        QPDFObjectHandle trailer = m_written.getTrailer(), root = m_written.getRoot(), info = trailer.getKey("/Info");
        if (LookInInformation(info)) return m_finding;
        if (LookIn(root.getKey("/Metadata"), "its metadata packet") || LookIn(trailer, "its trailer"))
            return m_finding;
        for (QPDFObjectHandle description : content.Descriptions())
            if (LookIn(description, "the description of one of its parts")) return m_finding;
        for (QPDFObjectHandle object : m_written.getAllObjects()) {
            const QPDFObjGen number = object.getObjGen();
            if (number == info.getObjGen() || number == root.getKey("/Metadata").getObjGen()) continue;
            const std::string place = " (object " + std::to_string(number.getObj()) + " of the new file)";
            if (IsPacket(object) && LookIn(object, "the metadata of one of its parts" + place)) return m_finding;
            if (number == root.getObjGen()) {
                if (LookInCatalogue(root, place)) return m_finding;
            } else if (!content.Holds(number) && !IsOfTheFile(object) && LookIn(object, "its private data" + place)) {
                return m_finding;
            }
        }
        return {};
    }

private:
    static bool IsPacket(QPDFObjectHandle value)
    {
        return value.isStream() && value.getDict().isDictionaryOfType("/Metadata");
    }
    /// What holds other objects, or says where they are.
    static bool IsOfTheFile(QPDFObjectHandle value)
    {
        return value.isStream() &&
               (value.getDict().isDictionaryOfType("/ObjStm") || value.getDict().isDictionaryOfType("/XRef"));
    }

    bool LookInInformation(QPDFObjectHandle info)
    {
        if (!info.isDictionary()) return false;
        for (const std::string& key : info.getKeys())
            if (LookIn(info.getKey(key), "the entry \"" + key.substr(1) + "\" of its information")) {
                m_finding += ", which needs another text, too";
                return true;
            }
        return false;
    }
    bool LookInCatalogue(QPDFObjectHandle root, const std::string& place)
    {
        return std::ranges::any_of(root.getKeys(), [&](const std::string& key) {
            QPDFObjectHandle value = root.getKey(key);
            return !value.isIndirect() && !IsAmong(key, kContent) && LookIn(value, "its catalogue" + place);
        });
    }
    /// Follows no references below `value`; they are objects that are looked at by themselves.
    bool LookIn(QPDFObjectHandle value, const std::string& place)
    {
        if (value.isString()) return FindInString(value, place);
        if (value.isStream()) return LookIn(value.getDict(), place) || FindInStream(value, place);
        if (value.isArray())
            for (QPDFObjectHandle item : value.aitems())
                if (!item.isIndirect() && LookIn(item, place)) return true;
        if (value.isDictionary())
            for (const std::string& key : value.getKeys())
                if (QPDFObjectHandle child = value.getKey(key); !child.isIndirect() && LookIn(child, place))
                    return true;
        return false;
    }

    bool FindInString(QPDFObjectHandle string, const std::string& place)
    {
        const std::string bytes = string.getStringValue();
        const std::string text = WithoutLanguageCodes(string.getUTF8Value());
        return Find([&](const CSought& sought) { return sought.StandsInText(text) || sought.StandsInBytes(bytes); },
                    place);
    }
    bool FindInStream(QPDFObjectHandle stream, const std::string& place)
    {
        bool isUnpacked = true;
        const std::string bytes = BytesOf(stream, isUnpacked);
        if (IsPacket(stream) && !isUnpacked) {
            m_finding = place + " cannot be unpacked, so that nobody can tell what it says";
            return true;
        }
        if (!IsPacket(stream) && bytes.find("<rdf:RDF") == std::string::npos)
            return Find([&](const CSought& sought) { return sought.StandsInBytes(bytes); }, place);
        const bool isWide = bytes.starts_with("\xFE\xFF") || bytes.starts_with("\xFF\xFE");
        const std::vector<std::string> texts =
            TextsInXml(isWide ? Utf16BytesToUtf8(bytes.substr(2), bytes.starts_with("\xFE")) : bytes);
        return Find(
            [&](const CSought& sought) {
                return std::ranges::any_of(texts, [&](const std::string& text) { return sought.StandsInText(text); });
            },
            place);
    }
    /// As they are in the file when nobody can unpack them.
    static std::string BytesOf(QPDFObjectHandle stream, bool& isUnpacked)
    {
        std::shared_ptr<Buffer> data;
        try {
            data = stream.getStreamData(qpdf_dl_all);
        } catch (const std::runtime_error&) {
            data = stream.getRawStreamData();
            isUnpacked = false;
        }
        return {reinterpret_cast<const char*>(data->getBuffer()), data->getSize()};
    }
    template <class Condition>
    bool Find(Condition condition, const std::string& place)
    {
        const auto found = std::ranges::find_if(m_sought, condition);
        if (found == m_sought.end()) return false;
        m_finding = "the old text of \"" + found->Former().key + "\" still stands in " + place;
        return true;
    }

    QPDF& m_written;
    std::vector<CSought> m_sought;
    std::string m_finding;
};

// ---- the file as such

/// Whether the file holds objects that its newest cross-reference section does not show.
bool HasEarlierRevisions(QPDF& written)
{
    if (written.getTrailer().hasKey("/Prev")) return true;
    std::map<int, long long> shown;  // by the number of the stream that holds them
    for (const auto& [object, entry] : written.getXRefTable())
        if (entry.getType() == 2) ++shown[entry.getObjStreamNumber()];
    return std::ranges::any_of(shown, [&](const auto& row) {
        QPDFObjectHandle count = written.getObject(row.first, 0).getDict().getKey("/N");
        return !count.isInteger() || count.getIntValue() != row.second;
    });
}

std::string KeywordTrace(const std::vector<FormerText>& former, QPDF& written)
{
    const std::set<std::string> keywords = FormerKeywords(written, former);
    for (const std::string& subject : SubjectsInPacket(MetadataPacket(written).value_or(std::string())))
        if (keywords.contains(Trim(subject)))
            return "one of the old keywords still stands among the subjects in its metadata packet";
    return {};
}

std::string DateTrace(const std::vector<FormerText>& former, QPDF& written)
{
    const auto packet = MetadataPacket(written);
    const bool isBroken = packet && !ReadXmlElements(*packet);
    for (const FormerText& text : former) {
        if (!IsDate(text.key)) continue;
        if (isBroken) return "its metadata packet is broken, so that nobody can tell which dates are in it";
        const auto texts = OwnTexts(written, text.key, packet);
        if (std::ranges::find(texts, text.utf8) != texts.end())
            return "the old date of \"" + text.key + "\" still stands in its metadata";
    }
    return {};
}

}  // namespace

std::string TraceOf(const std::vector<FormerText>& former, const std::map<std::string, std::string>& oldInfo,
                    QPDF& written)
{
    if (HasEarlierRevisions(written)) return "earlier revisions are still in it";
    std::vector<std::string> wanted;
    for (const auto& [key, bytes] : oldInfo)
        if (std::string text = InfoText(written, key); !text.empty()) wanted.push_back(std::move(text));
    if (std::string trace = DateTrace(former, written); !trace.empty()) return trace;
    if (std::string trace = KeywordTrace(former, written); !trace.empty()) return trace;
    return CTraceSearch(written, former, wanted).Finding();
}

}  // namespace openhost
