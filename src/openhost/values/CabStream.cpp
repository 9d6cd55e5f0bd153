#include "openhost/values/CabStream.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <limits>
#include <memory>
#include <unordered_set>
#include <utility>

#include "openhost/core/Atoms.h"
#include "openhost/values/CabKeys.h"

namespace openhost {

namespace {

// The first byte is no text and the line end shows what a careless transfer does to it.
constexpr std::string_view kSignature(
    "\x8F"
    "FCab\r\n\x1A",
    8);
constexpr std::uint32_t kVersion = 1;
constexpr std::size_t kHeaderBytes = 24;  // signature, version, checksum, length
constexpr std::uint64_t kMaxBytes = 64u << 20;
constexpr std::size_t kReadStep = 64u << 10;

std::uint32_t Checksum(std::string_view bytes)
{
    static const auto table = [] {
        std::array<std::uint32_t, 256> made{};
        for (std::uint32_t index = 0; index < 256; ++index) {
            std::uint32_t value = index;
            for (int bit = 0; bit < 8; ++bit) value = value & 1 ? (value >> 1) ^ 0xEDB88320u : value >> 1;
            made[index] = value;
        }
        return made;
    }();
    std::uint32_t sum = 0xFFFFFFFFu;
    for (const char byte : bytes) sum = table[(sum ^ static_cast<unsigned char>(byte)) & 0xFF] ^ (sum >> 8);
    return ~sum;
}

/// Numbers are written with the lowest byte first.
class CWriter {
public:
    template <class Number>
    void Put(Number number)
    {
        const auto bits = static_cast<std::make_unsigned_t<Number>>(number);
        for (std::size_t byte = 0; byte < sizeof(Number); ++byte)
            bytes.push_back(static_cast<char>(bits >> (8 * byte)));
    }
    void PutBytes(std::string_view text)
    {
        if (text.size() > kMaxBytes) Raise(genErrListOverflow, "a value is too large for a stored cab");
        Put(static_cast<std::uint32_t>(text.size()));
        bytes.append(text);
    }
    void PutText(const CHostText& text)
    {
        Put<std::uint16_t>(text.country);
        Put<std::uint16_t>(text.language);
        Put(static_cast<std::uint32_t>(text.Utf16().size()));
        for (const char16_t unit : text.Utf16()) Put(static_cast<std::uint16_t>(unit));
    }
    void PutCab(const CCabinet& cab);

    std::string bytes;

private:
    void PutValue(const CabValue& value);
};

void CWriter::PutValue(const CabValue& value)
{
    std::visit(Overloaded{[](const CabNull&) {}, [](const CabPointer&) {},
                          [&](bool flag) { Put<std::uint8_t>(flag ? 1 : 0); },
                          [&](double number) { Put(std::bit_cast<std::uint64_t>(number)); },
                          [&](const CabAtom& atom) { PutBytes(AtomText(atom.atom)); },
                          [&](const CabString& string) { PutBytes(string.block.View()); },
                          [&](const CabBinary& binary) { PutBytes(binary.block.View()); },
                          [&](CHostText* text) { PutText(*text); }, [&](CCabinet* cab) { PutCab(*cab); },
                          [&](auto integer) { Put(integer); }},
               value);
}

void CWriter::PutCab(const CCabinet& cab)
{
    const std::size_t countAt = bytes.size();
    std::uint32_t count = 0;
    Put(count);
    cab.WalkConst([&](const std::string& key, const CabValue& value) {
        if (TypeOf(value) == kASValuePointer) return true;
        ++count;
        Put(static_cast<std::uint8_t>(TypeOf(value)));
        PutBytes(key);
        PutValue(value);
        return true;
    });
    for (std::size_t byte = 0; byte < sizeof count; ++byte)
        bytes[countAt + byte] = static_cast<char>(count >> (8 * byte));
}

/// What breaks off the reading of bytes that are no cab.
struct NotACab {};

class CReader {
public:
    explicit CReader(std::string_view bytes) : m_bytes(bytes) {}

    template <class Number>
    Number Get()
    {
        const std::string_view part = Take(sizeof(Number));
        std::make_unsigned_t<Number> bits = 0;
        for (std::size_t byte = sizeof(Number); byte-- > 0;)
            bits = static_cast<decltype(bits)>((std::uint64_t{bits} << 8) | static_cast<unsigned char>(part[byte]));
        return static_cast<Number>(bits);
    }
    std::string_view GetBytes() { return Take(Get<std::uint32_t>()); }
    /// Steps over the entries of a cab and of all cabs in it. Answers the height of that tree.
    std::size_t SkimEntries(std::size_t depth = 1);
    /// Of bytes that have been skimmed. `stream`: where they lie.
    CabValue GetValue(ASCabValueType type, const std::shared_ptr<const std::string>& stream);
    bool AtEnd() const { return m_bytes.empty(); }

private:
    std::string_view Take(std::size_t count)
    {
        if (count > m_bytes.size()) throw NotACab{};
        const std::string_view part = m_bytes.substr(0, count);
        m_bytes.remove_prefix(count);
        return part;
    }
    std::size_t SkimValue(ASCabValueType type, std::size_t depth);
    CHostText* GetText();
    PackedEntries GetPacked(const std::shared_ptr<const std::string>& stream);

    std::string_view m_bytes;
};

/// Answers the height of a cab; 0 of other values.
std::size_t CReader::SkimValue(ASCabValueType type, std::size_t depth)
{
    switch (type) {
        case kASValueNull:
            return 0;
        case kASValueBool:
            return Take(1), 0;
        case kASValueInteger:
        case kASValueUns:
            return Take(4), 0;
        case kASValueInt64:
        case kASValueUns64:
        case kASValueDouble:
            return Take(8), 0;
        case kASValueAtom:
            return AtomFromText(GetBytes()), 0;
        case kASValueString:
        case kASValueBinary:
            return GetBytes(), 0;
        case kASValueText:
            Take(2 * sizeof(std::uint16_t));  // country and language
            return Take(std::size_t{2} * Get<std::uint32_t>()), 0;
        case kASValueCabinet:
            return SkimEntries(depth + 1);
        default:
            throw NotACab{};
    }
}

std::size_t CReader::SkimEntries(std::size_t depth)
{
    if (depth > kMaxCabDepth) throw NotACab{};
    const auto count = Get<std::uint32_t>();
    std::unordered_set<std::string_view> keys;
    std::size_t below = 0;
    for (std::uint32_t index = 0; index < count; ++index) {
        const auto type = static_cast<ASCabValueType>(Get<std::uint8_t>());
        const std::string_view key = GetBytes();
        if (!IsKeyStep(key) || !keys.insert(key).second) throw NotACab{};
        below = std::max(below, SkimValue(type, depth));
    }
    return below + 1;
}

CHostText* CReader::GetText()
{
    const auto country = Get<std::uint16_t>();
    const auto language = Get<std::uint16_t>();
    std::u16string content(Get<std::uint32_t>(), u'\0');
    for (char16_t& unit : content) unit = static_cast<char16_t>(Get<std::uint16_t>());
    CHostText& text = TextAt(NewTextUtf16(std::move(content)));
    text.country = country;
    text.language = language;
    return &text;
}

PackedEntries CReader::GetPacked(const std::shared_ptr<const std::string>& stream)
{
    const std::string_view from = m_bytes;
    const std::size_t height = SkimEntries();
    return {stream, from.substr(0, from.size() - m_bytes.size()), height};
}

CabValue CReader::GetValue(ASCabValueType type, const std::shared_ptr<const std::string>& stream)
{
    const auto block = [](std::string_view bytes) { return CSharedBlock(SharedCopy(bytes), bytes.size()); };
    switch (type) {
        case kASValueBool:
            return Get<std::uint8_t>() != 0;
        case kASValueInteger:
            return Get<std::int32_t>();
        case kASValueUns:
            return Get<std::uint32_t>();
        case kASValueInt64:
            return Get<std::int64_t>();
        case kASValueUns64:
            return Get<std::uint64_t>();
        case kASValueDouble:
            return std::bit_cast<double>(Get<std::uint64_t>());
        case kASValueAtom:
            return CabAtom{AtomFromText(GetBytes())};
        case kASValueString:
            return CabString{block(GetBytes())};
        case kASValueBinary:
            return CabBinary{block(GetBytes())};
        case kASValueText:
            return GetText();
        case kASValueCabinet:
            return &CabAt(NewPackedCab(GetPacked(stream)));
        default:
            return CabNull{};
    }
}

/// The announced bytes, read in steps: an announcement alone must not cost memory.
bool ReadBody(const ReadBytes& read, std::uint64_t length, std::string& body)
{
    while (body.size() < length) {
        const std::size_t before = body.size();
        const std::size_t step = static_cast<std::size_t>(std::min<std::uint64_t>(kReadStep, length - before));
        body.resize(before + step);
        if (read(body.data() + before, step) != step) return false;
    }
    return true;
}

}  // namespace

std::string BytesOfCab(const CCabinet& cab)
{
    CWriter body;
    body.PutCab(cab);
    if (body.bytes.size() > kMaxBytes) Raise(genErrListOverflow, "the cab is too large to be stored");
    CWriter all;
    all.bytes = kSignature;
    all.Put(kVersion);
    all.Put(Checksum(body.bytes));
    all.Put(static_cast<std::uint64_t>(body.bytes.size()));
    return all.bytes + body.bytes;
}

COwnedCab ReadCab(const ReadBytes& read)
{
    char header[kHeaderBytes];
    if (read(header, kHeaderBytes) != kHeaderBytes) return COwnedCab();
    CReader fields(std::string_view(header, kHeaderBytes).substr(kSignature.size()));
    const auto version = fields.Get<std::uint32_t>();
    const auto checksum = fields.Get<std::uint32_t>();
    const auto length = fields.Get<std::uint64_t>();
    const bool ours = std::string_view(header, kSignature.size()) == kSignature;
    if (!ours || version != kVersion || length > kMaxBytes) return COwnedCab();
    std::string body;
    if (!ReadBody(read, length, body) || Checksum(body) != checksum) return COwnedCab();
    const auto stream = std::make_shared<const std::string>(std::move(body));
    try {
        CReader reader(*stream);
        const std::size_t cabHeight = reader.SkimEntries();
        return COwnedCab(reader.AtEnd() ? NewPackedCab({stream, *stream, cabHeight}) : nullptr);
    } catch (const NotACab&) {
    } catch (const CHostRaise&) {  // no atom is left
    }
    return COwnedCab();
}

void UnpackEntries(const PackedEntries& packed, const std::function<void(std::string_view key, CabValue value)>& take)
{
    CReader reader(packed.entries);
    for (auto count = reader.Get<std::uint32_t>(); count > 0; --count) {
        const auto type = static_cast<ASCabValueType>(reader.Get<std::uint8_t>());
        const std::string_view key = reader.GetBytes();
        take(key, reader.GetValue(type, packed.stream));
    }
}

COwnedCab CabFromBytes(std::string_view bytes)
{
    return ReadCab([&](char* buffer, std::size_t count) {
        const std::size_t given = std::min(count, bytes.size());
        if (given > 0) std::memcpy(buffer, bytes.data(), given);
        bytes.remove_prefix(given);
        return given;
    });
}

}  // namespace openhost
