#include "openhost/pdf/FileRebuilder.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <exception>
#include <regex>
#include <sstream>
#include <stdexcept>

#include <qpdf/Buffer.hh>
#include <qpdf/BufferInputSource.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFObjectHandle.hh>

namespace openhost {
namespace {

constexpr int kHighestGeneration = 65535;
constexpr std::size_t kLongestDictionary = 64 * 1024;

bool IsBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r') || c == '\0'; }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool EndsWord(char c) { return IsBlank(c) || std::string_view("<[(/%").find(c) != std::string_view::npos; }

std::optional<int> NumberIn(std::string_view digits, int highest)
{
    int number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    const bool whole = error == std::errc() && end == digits.data() + digits.size();
    return whole && number <= highest ? std::optional(number) : std::nullopt;
}

/// Reads through a file's bytes word by word, as far as words matter.
class CScanner {
public:
    explicit CScanner(std::string_view bytes) : m_bytes(bytes) {}
    FileScan Run();

private:
    bool At(std::string_view word) const;
    bool BlanksBefore(std::size_t& at) const;
    std::optional<int> NumberBefore(std::size_t& at, int highest) const;
    void OnObject();
    void OnStream();
    void OnTrailer();
    void OnTable();
    void NoteEnd() { m_lastEnd = m_at; }
    std::optional<int> LengthIn(const std::string& dictionary) const;
    std::size_t EndOfStream(const std::string& dictionary, std::size_t content) const;
    std::string Dictionary(std::size_t from) const;

    std::string_view m_bytes;
    std::size_t m_at = 0;
    std::size_t m_objectText = 0;  // behind the word "obj" of the object at hand; 0 outside of objects
    std::size_t m_lastEnd = 0;
    FileScan m_scan;
};

bool CScanner::At(std::string_view word) const
{
    const std::size_t end = m_at + word.size();
    return m_bytes.substr(m_at, word.size()) == word && (end >= m_bytes.size() || EndsWord(m_bytes[end]));
}

FileScan CScanner::Run()
{
    for (; m_at < m_bytes.size(); ++m_at) {
        switch (m_bytes[m_at]) {
            case 'o':
                if (At("obj")) OnObject();
                break;
            case 'e':
                if (m_bytes.substr(m_at, 6) == "endobj") {
                    m_objectText = 0;
                    m_at += 5;
                }
                break;
            case 's':
                if (m_bytes.substr(m_at, 9) == "startxref") NoteEnd();
                if (m_objectText != 0 && At("stream")) OnStream();
                break;
            case 't':
                if (m_bytes.substr(m_at, 7) == "trailer") OnTrailer();
                break;
            case 'x':
                if (At("xref")) OnTable();
                break;
            case '%':
                if (m_bytes.substr(m_at, 5) == "%%EOF") NoteEnd();
                break;
        }
    }
    m_scan.endsEarly = !m_scan.objects.empty() && m_scan.objects.back().offset >= m_lastEnd;
    return std::move(m_scan);
}

bool CScanner::BlanksBefore(std::size_t& at) const
{
    const std::size_t from = at;
    while (at > 0 && IsBlank(m_bytes[at - 1])) --at;
    return at < from;
}

std::optional<int> CScanner::NumberBefore(std::size_t& at, int highest) const
{
    const std::size_t end = at;
    while (at > 0 && IsDigit(m_bytes[at - 1])) --at;
    return NumberIn(m_bytes.substr(at, end - at), highest);
}

void CScanner::OnObject()
{
    std::size_t at = m_at;
    (void)BlanksBefore(at);
    const auto generation = NumberBefore(at, kHighestGeneration);
    if (!generation || !BlanksBefore(at)) return;
    const auto number = NumberBefore(at, kHighestNumber);
    if (!number || *number == 0) return;
    m_scan.objects.push_back({*number, *generation, at});
    m_objectText = m_at + 3;
    const std::string text = Dictionary(m_objectText);
    if (text.find("/Standard") != std::string::npos && text.find("/O") != std::string::npos &&
        text.find("/U") != std::string::npos && text.find("/Filter") != std::string::npos)
        m_scan.securityObject = *number;
}

/// The content is passed over, so that nothing in it is taken for an object of this file.
void CScanner::OnStream()
{
    std::size_t before = m_at;
    (void)BlanksBefore(before);
    if (before < 2 || m_bytes.substr(before - 2, 2) != ">>") return;
    const std::string dictionary = Dictionary(m_objectText);
    const std::size_t end = EndOfStream(dictionary, m_at + 6);
    const bool isTable = std::regex_search(dictionary, std::regex("/Type\\s*/XRef"));
    if (isTable) m_scan.trailers.push_back(dictionary);
    if (end == std::string_view::npos) return;  // cut off; whatever follows is looked at
    m_at = end + 8;
    m_objectText = 0;
    if (isTable) NoteEnd();
}

/// The length that a stream's dictionary names, or the object that it refers to.
std::optional<int> CScanner::LengthIn(const std::string& dictionary) const
{
    static const std::regex kLength("/Length\\s+(\\d{1,9})(\\s+\\d+\\s+R)?");
    std::smatch length;
    if (!std::regex_search(dictionary, length, kLength)) return std::nullopt;
    if (!length[2].matched) return std::stoi(length[1]);
    for (std::size_t at = 0; (at = m_bytes.find(length[1].str() + " 0 obj", at)) != std::string_view::npos; ++at) {
        if (at > 0 && IsDigit(m_bytes[at - 1])) continue;
        std::size_t begin = at + length[1].str().size() + 6;
        while (begin < m_bytes.size() && IsBlank(m_bytes[begin])) ++begin;
        std::size_t end = begin;
        while (end < m_bytes.size() && IsDigit(m_bytes[end])) ++end;
        return NumberIn(m_bytes.substr(begin, end - begin), INT_MAX);
    }
    return std::nullopt;
}

/// Where "endstream" stands: the next one, unless objects come before it. Then the content is a file of its own, and
/// its length leads to the end, or this stream has none.
std::size_t CScanner::EndOfStream(const std::string& dictionary, std::size_t content) const
{
    const std::size_t next = m_bytes.find("endstream", content);
    const std::string_view between = m_bytes.substr(content, next == std::string_view::npos ? next : next - content);
    if (between.find("endobj") == std::string_view::npos) return next;
    const auto length = LengthIn(dictionary);
    if (!length) return std::string_view::npos;
    std::size_t start = content;
    if (m_bytes[start] == '\r') ++start;
    if (start < m_bytes.size() && m_bytes[start] == '\n') ++start;
    std::size_t end = std::min(start + static_cast<std::size_t>(*length), m_bytes.size());
    while (end < m_bytes.size() && IsBlank(m_bytes[end])) ++end;
    return m_bytes.substr(end, 9) == "endstream" ? end : std::string_view::npos;
}

void CScanner::OnTrailer()
{
    if (std::string dictionary = Dictionary(m_at + 7); !dictionary.empty())
        m_scan.trailers.push_back(std::move(dictionary));
    NoteEnd();
    m_objectText = 0;
}

/// Sections "0 85" of lines "0000000015 00000 n".
void CScanner::OnTable()
{
    static const std::regex kSection("^\\s*(\\d{1,8})[ ]+(\\d{1,8})\\s*(?=\\d{10} )");
    static const std::regex kLine("^\\s*\\d{10} \\d{5} ([nf])");
    const char* at = m_bytes.data() + m_at + 4;
    const char* const end = m_bytes.data() + m_bytes.size();
    std::cmatch section, line;
    const auto rest = [end](const char* from) { return std::min(end, from + 64); };
    while (std::regex_search(at, rest(at), section, kSection)) {
        const int first = std::stoi(section[1]), count = std::stoi(section[2]);
        at += section.length();
        for (int i = 0; i < count && std::regex_search(at, rest(at), line, kLine); ++i) {
            if (*line[1].first == 'n' && first + i > 0) m_scan.claimed.insert(first + i);
            at += line.length();
        }
    }
}

/// From the first "<<" to the ">>" that closes it, or as far as the text goes; strings are passed over.
std::string CScanner::Dictionary(std::size_t from) const
{
    while (from < m_bytes.size() && IsBlank(m_bytes[from])) ++from;
    if (m_bytes.substr(from, 2) != "<<") return {};
    const std::string_view text = m_bytes.substr(from, kLongestDictionary);
    int depth = 0, parentheses = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\') {
            ++i;
        } else if (text[i] == '(' || (text[i] == ')' && parentheses > 0)) {
            parentheses += text[i] == '(' ? 1 : -1;
        } else if (parentheses == 0 && (text.substr(i, 2) == "<<" || text.substr(i, 2) == ">>")) {
            depth += text[i] == '<' ? 1 : -1;
            ++i;
            if (depth == 0) return std::string(text.substr(0, i + 1));
        }
    }
    return std::string(text.substr(0, std::min(text.find("endobj"), text.find("startxref"))));
}

}  // namespace

FileScan ScanFile(std::string_view bytes) { return CScanner(bytes).Run(); }

std::string TrailerEntry(const std::string& dictionary, const std::string& key)
{
    QPDF context;
    context.setSuppressWarnings(true);
    context.emptyPDF();
    try {
        QPDFObjectHandle parsed = QPDFObjectHandle::parse(&context, dictionary);
        if (parsed.isDictionary() && parsed.hasKey(key)) return parsed.getKey(key).unparse();
    } catch (const std::exception&) {  // broken; a reference may still be found
    }
    std::smatch reference;
    if (std::regex_search(dictionary, reference, std::regex(key + "\\s+(\\d{1,8}\\s+\\d{1,5}\\s+R)")))
        return reference[1];
    return {};
}

namespace {

constexpr int kOffsetBytes = 8;
constexpr int kLastFieldBytes = 4;

/// Offsets count from the header, so the file begins with it.
std::string FromHeader(std::string bytes)
{
    const std::size_t header = bytes.find("%PDF-");
    const std::size_t firstObject = bytes.find(" obj");
    if (header != std::string::npos && (firstObject == std::string::npos || header < firstObject))
        return header == 0 ? std::move(bytes) : bytes.substr(header);
    return "%PDF-1.7\n" + bytes;
}

void PutNumber(std::string& data, std::uint64_t number, int bytes)
{
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8) data += static_cast<char>(number >> shift & 0xFF);
}

/// The numbers at the front of a stream of objects, one in two of which is an object's; none when it cannot be read.
std::vector<int> NumbersIn(QPDFObjectHandle stream)
{
    const int count =
        stream.getDict().getKey("/N").isInteger() ? stream.getDict().getKey("/N").getIntValueAsInt() : 0;
    std::shared_ptr<Buffer> content;
    try {
        content = stream.getStreamData(qpdf_dl_generalized);
    } catch (const std::runtime_error&) {
        return {};
    }
    std::istringstream text(std::string(reinterpret_cast<const char*>(content->getBuffer()), content->getSize()));
    std::vector<int> numbers;
    for (int number = 0, offset = 0; static_cast<int>(numbers.size()) < count && text >> number >> offset;)
        numbers.push_back(number);
    return numbers;
}

}  // namespace

CFileRebuilder::CFileRebuilder(std::string bytes) : m_bytes(FromHeader(std::move(bytes))), m_scan(ScanFile(m_bytes))
{
    for (const ScannedObject& object : m_scan.objects)
        m_places[object.number] = {.offset = object.offset, .generation = object.generation};
}

std::string CFileRebuilder::Entry(const char* key) const
{
    for (auto trailer = m_scan.trailers.rbegin(); trailer != m_scan.trailers.rend(); ++trailer)
        if (std::string value = TrailerEntry(*trailer, key); !value.empty()) return key + (' ' + value);
    return {};
}

/// An encryption that no trailer names is still there: without it secret bytes would be taken for the content.
std::string CFileRebuilder::Trailer() const
{
    std::string security = Entry("/Encrypt");
    if (security.empty() && m_scan.securityObject)
        security = "/Encrypt " + std::to_string(*m_scan.securityObject) + " 0 R";
    return Entry("/Root") + Entry("/Info") + Entry("/ID") + security;
}

std::shared_ptr<InputSource> CFileRebuilder::Source(const std::string& name) const
{
    const int table = m_places.empty() ? 1 : m_places.rbegin()->first + 1;
    std::string data, index;
    for (const auto& [number, place] : m_places) {
        index += ' ' + std::to_string(number) + " 1";
        PutNumber(data, place.inStream ? 2 : 1, 1);
        PutNumber(data, place.inStream ? static_cast<std::uint64_t>(place.stream) : place.offset, kOffsetBytes);
        PutNumber(data, static_cast<std::uint64_t>(place.inStream ? place.index : place.generation), kLastFieldBytes);
    }
    std::string file = m_bytes + '\n';
    const std::size_t offset = file.size();
    file += std::to_string(table) + " 0 obj\n<</Type/XRef/Size " + std::to_string(table + 1) + "/W[1 " +
            std::to_string(kOffsetBytes) + ' ' + std::to_string(kLastFieldBytes) + "]/Index[" + index + "]/Length " +
            std::to_string(data.size()) + Trailer() + ">>\nstream\n" + data + "\nendstream\nendobj\nstartxref\n" +
            std::to_string(offset) + "\n%%EOF\n";
    return std::make_shared<BufferInputSource>(name, file);
}

bool CFileRebuilder::AddObjectStreams(QPDF& reading)
{
    const std::map<int, Place> direct = m_places;
    bool any = false;
    for (const auto& [stream, place] : direct) {
        QPDFObjectHandle object = reading.getObject(stream, place.generation);
        if (!object.isStream() || !object.getDict().isDictionaryOfType("/ObjStm")) continue;
        int index = -1;
        for (const int number : NumbersIn(object)) {
            ++index;
            if (number <= 0 || number > kHighestNumber) continue;
            Place& known = m_places[number];
            const bool older = known.offset != 0 && known.offset > place.offset;  // the newer one counts
            if (!older) known = {.inStream = true, .offset = place.offset, .stream = stream, .index = index};
            any = any || !older;
        }
    }
    return any;
}

std::map<std::pair<std::size_t, int>, QPDFObjGen> CFileRebuilder::ByPlace() const
{
    std::map<std::pair<std::size_t, int>, QPDFObjGen> objects;
    for (const auto& [number, place] : m_places)
        objects[{place.offset, place.index}] = QPDFObjGen(number, place.inStream ? 0 : place.generation);
    return objects;
}

}  // namespace openhost
