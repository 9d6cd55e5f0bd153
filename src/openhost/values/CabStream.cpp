#include "openhost/values/CabStream.h"

#include <array>
#include <bit>
#include <cstring>
#include <limits>

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

template <class... F>
struct Overloaded : F... {
    using F::operator()...;
};

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
    void GetEntries(CCabinet& cab);
    bool AtEnd() const { return m_bytes.empty(); }

private:
    std::string_view Take(std::size_t count)
    {
        if (count > m_bytes.size()) throw NotACab{};
        const std::string_view part = m_bytes.substr(0, count);
        m_bytes.remove_prefix(count);
        return part;
    }
    void GetValue(CCabinet& cab, std::string_view key, ASCabValueType type);
    void GetText(CCabinet& cab, std::string_view key);

    std::string_view m_bytes;
};

void CReader::GetText(CCabinet& cab, std::string_view key)
{
    const auto country = Get<std::uint16_t>();
    const auto language = Get<std::uint16_t>();
    const std::size_t units = Get<std::uint32_t>();
    if (units > m_bytes.size() / 2) throw NotACab{};
    std::u16string content(units, u'\0');
    for (char16_t& unit : content) unit = static_cast<char16_t>(Get<std::uint16_t>());
    CHostText& text = TextAt(NewTextUtf16(std::move(content)));
    text.country = country;
    text.language = language;
    cab.Put(key, &text);
}

void CReader::GetValue(CCabinet& cab, std::string_view key, ASCabValueType type)
{
    switch (type) {
        case kASValueNull:
            return cab.PutNull(key);
        case kASValueBool:
            return cab.PutBool(key, Get<std::uint8_t>() != 0);
        case kASValueInteger:
            return cab.Put(key, Get<std::int32_t>());
        case kASValueUns:
            return cab.Put(key, Get<std::uint32_t>());
        case kASValueInt64:
            return cab.Put(key, Get<std::int64_t>());
        case kASValueUns64:
            return cab.Put(key, Get<std::uint64_t>());
        case kASValueDouble:
            return cab.PutDouble(key, std::bit_cast<double>(Get<std::uint64_t>()));
        case kASValueAtom:
            return cab.PutAtom(key, AtomFromText(GetBytes()));
        case kASValueString:
            return cab.PutString(key, GetBytes());
        case kASValueBinary:
            return cab.PutBinary(key, GetBytes());
        case kASValueText:
            return GetText(cab, key);
        case kASValueCabinet:
            return GetEntries(cab.PutNewCab(key));
        default:
            throw NotACab{};
    }
}

void CReader::GetEntries(CCabinet& cab)
{
    const auto count = Get<std::uint32_t>();
    for (std::uint32_t index = 0; index < count; ++index) {
        const auto type = static_cast<ASCabValueType>(Get<std::uint8_t>());
        const std::string_view key = GetBytes();
        if (!IsKeyStep(key) || cab.Known(key)) throw NotACab{};
        GetValue(cab, key, type);
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
    COwnedCab cab = COwnedCab::New();
    try {
        CReader reader(body);
        reader.GetEntries(*cab);
        return reader.AtEnd() ? std::move(cab) : COwnedCab();
    } catch (const NotACab&) {
    } catch (const CHostRaise&) {  // nested too deeply, or no atom is left
    }
    return COwnedCab();
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
