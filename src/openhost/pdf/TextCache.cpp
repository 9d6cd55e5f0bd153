#include "openhost/pdf/TextCache.h"

#include <cmath>
#include <utility>

#include "base/Sha256.h"
#include "base/Unicode.h"

namespace openhost {
namespace {

// An entry is: mark, for each page its number, length and bytes, the digest of all of it. Numbers are written in
// groups of seven bits, the lowest first, with the highest bit set in all groups but the last; those with a sign have
// it in the lowest bit.
constexpr std::string_view kMark = "FerruleWords 1\n";
constexpr std::size_t kDigestLength = 64;
constexpr double kFractions = 65536;  // of a unit, as words have them
constexpr std::size_t kMostAdded = 64 << 20;

std::string DigestOf(std::string_view bytes)
{
    CSha256 digest;
    digest.Add(bytes.data(), bytes.size());
    return digest.Digest();
}

class CWriter {
public:
    std::string bytes;

    void Number(std::uint64_t number)
    {
        for (; number >= 0x80; number >>= 7) bytes += static_cast<char>(number | 0x80);
        bytes += static_cast<char>(number);
    }
    void Signed(std::int64_t number)
    {
        Number(static_cast<std::uint64_t>(number) << 1 ^ static_cast<std::uint64_t>(number >> 63));
    }
};

/// Reads what CWriter wrote; anything else makes it fail, and then all numbers are 0.
class CReader {
public:
    explicit CReader(std::string_view bytes) : m_at(bytes.data()), m_end(m_at + bytes.size()) {}

    bool Failed() const { return m_failed; }
    bool IsAtEnd() const { return m_at == m_end; }
    const char* At() const { return m_at; }

    std::uint64_t Number()
    {
        std::uint64_t number = 0;
        for (unsigned shift = 0; shift < 64 && m_at != m_end; shift += 7) {
            const auto group = static_cast<unsigned char>(*m_at++);
            number |= static_cast<std::uint64_t>(group & 0x7F) << shift;
            if (group < 0x80) return number;
        }
        return Fail();
    }
    std::int64_t Signed()
    {
        const std::uint64_t number = Number();
        return static_cast<std::int64_t>(number >> 1 ^ (~(number & 1) + 1));
    }
    /// How many things follow, of which each takes at least one byte.
    std::size_t Count()
    {
        const std::uint64_t count = Number();
        return static_cast<std::size_t>(count <= static_cast<std::uint64_t>(m_end - m_at) ? count : Fail());
    }
    std::string_view Bytes(std::size_t length)
    {
        const char* const begin = m_at;
        m_at += length;
        return {begin, length};
    }

private:
    std::uint64_t Fail()
    {
        m_failed = true;
        m_at = m_end;
        return 0;
    }

    const char *m_at, *m_end;
    bool m_failed = false;
};

enum Flag : unsigned {
    kSpaceAfter = 1,
    kEndsLine = 2,
    kWasHyphenated = 4,
    kHasLigature = 8,
    kIsRotated = 16,
    kIsRightToLeft = 32,
    kHasFont = 64
};

unsigned FlagsOf(const PageWord& word)
{
    return (word.spaceAfter ? kSpaceAfter : 0U) | (word.endsLine ? kEndsLine : 0U) |
           (word.wasHyphenated ? kWasHyphenated : 0U) | (word.hasLigature ? kHasLigature : 0U) |
           (word.isRotated ? kIsRotated : 0U) | (word.isRightToLeft ? kIsRightToLeft : 0U) |
           (word.fontName.empty() ? 0U : kHasFont);
}

WordFacts FactsOf(unsigned flags)
{
    return {.spaceAfter = (flags & kSpaceAfter) != 0,
            .endsLine = (flags & kEndsLine) != 0,
            .wasHyphenated = (flags & kWasHyphenated) != 0,
            .hasLigature = (flags & kHasLigature) != 0,
            .isRotated = (flags & kIsRotated) != 0,
            .isRightToLeft = (flags & kIsRightToLeft) != 0};
}

std::int64_t Whole(double units) { return std::llround(units * kFractions); }
double Units(std::int64_t whole) { return static_cast<double>(whole) / kFractions; }

/// The edges of the box that came last. Boxes of a line are alike, and a word begins close to where the last one
/// ends, so that differences are short.
struct Edges {
    std::int64_t bottom = 0, right = 0, height = 0;
};

void WriteBox(CWriter& writer, const PageBox& box, Edges& last)
{
    const Edges now{Whole(box.bottom), Whole(box.right), Whole(box.top) - Whole(box.bottom)};
    writer.Signed(Whole(box.left) - last.right);
    writer.Signed(now.right - Whole(box.left));
    writer.Signed(now.bottom - last.bottom);
    writer.Signed(now.height - last.height);
    last = now;
}

/// Adds without a care: what makes no sense has to do no harm only.
std::int64_t Sum(std::int64_t one, std::int64_t other)
{
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(one) + static_cast<std::uint64_t>(other));
}

PageBox ReadBox(CReader& reader, Edges& last)
{
    const std::int64_t left = Sum(last.right, reader.Signed());
    last.right = Sum(left, reader.Signed());
    last.bottom = Sum(last.bottom, reader.Signed());
    last.height = Sum(last.height, reader.Signed());
    return {Units(left), Units(last.bottom), Units(last.right), Units(Sum(last.bottom, last.height))};
}

std::string EncodedPage(const CPageWords& words)
{
    CWriter writer;
    Edges last;
    std::string_view lastFont;
    writer.bytes.reserve(16 * words.size());
    for (const PageWord& word : words) {
        writer.Number(FlagsOf(word));
        if (!word.fontName.empty()) {
            // The name of the font that the word before has is left empty.
            const std::string_view name = word.fontName == lastFont ? std::string_view() : word.fontName;
            writer.Number(name.size());
            writer.bytes += name;
            writer.Signed(Whole(word.fontSize));
            lastFont = word.fontName;
        }
        writer.Number(word.text.size());
        for (const char16_t unit : word.text) writer.Number(unit);
        writer.Number(word.boxes.size());
        for (const PageBox& box : word.boxes) WriteBox(writer, box, last);
    }
    return std::move(writer.bytes);
}

std::optional<CPageWords> DecodedPage(std::string_view bytes)
{
    CReader reader(bytes);
    CPageWordsBuilder words;
    Edges last;
    std::string_view lastFont;
    while (!reader.IsAtEnd()) {
        words.BeginWord();
        const auto flags = static_cast<unsigned>(reader.Number());
        words.Facts() = FactsOf(flags);
        if (flags & kHasFont) {
            if (const std::size_t length = reader.Count()) lastFont = reader.Bytes(length);
            words.SetFont(lastFont);
            words.Facts().fontSize = Units(reader.Signed());
        }
        for (std::size_t left = reader.Count(); left > 0 && !reader.Failed(); --left)
            words.AddUnit(static_cast<char16_t>(reader.Number()));
        for (std::size_t left = reader.Count(); left > 0 && !reader.Failed(); --left)
            words.AddBox(ReadBox(reader, last));
    }
    if (reader.Failed()) return std::nullopt;
    return words.Finish();
}

std::string NameOf(const std::string& sha256, const WordOptions& options)
{
    constexpr std::size_t kVariantLength = 8;
    const std::string variant = TextEngineVersion() + (options.fonts ? "|fonts" : "|") +
                                (options.joinHyphenated ? "|joined" : "|") +
                                (options.dissolveLigatures ? "|dissolved" : "|");
    return sha256 + '-' + DigestOf(variant).substr(0, kVariantLength);
}

}  // namespace

std::optional<CPageWords> CStoredWords::Page(int page0) const
{
    if (const auto added = m_added.find(page0); added != m_added.end()) return DecodedPage(added->second);
    const auto read = m_read.find(page0);
    if (read == m_read.end()) return std::nullopt;
    return DecodedPage(std::string_view(m_bytes).substr(read->second.begin, read->second.length));
}

void CStoredWords::AddPage(int page0, const CPageWords& words)
{
    if (m_addedBytes > kMostAdded) return;
    std::string bytes = EncodedPage(words);
    m_addedBytes += bytes.size();
    m_added.insert_or_assign(page0, std::move(bytes));
    m_changed = true;
}

std::string CStoredWords::Bytes() const
{
    CWriter writer;
    writer.bytes = kMark;
    const auto add = [&](int page0, std::string_view bytes) {
        writer.Number(static_cast<std::uint64_t>(page0));
        writer.Number(bytes.size());
        writer.bytes += bytes;
    };
    for (const auto& [page0, part] : m_read)
        if (!m_added.contains(page0)) add(page0, std::string_view(m_bytes).substr(part.begin, part.length));
    for (const auto& [page0, bytes] : m_added) add(page0, bytes);
    return writer.bytes + DigestOf(writer.bytes);
}

std::optional<CStoredWords> CStoredWords::From(std::string bytes)
{
    const std::string_view whole = bytes;
    if (whole.size() < kMark.size() + kDigestLength || !whole.starts_with(kMark)) return std::nullopt;
    const std::string_view content = whole.substr(0, whole.size() - kDigestLength);
    if (DigestOf(content) != whole.substr(content.size())) return std::nullopt;
    CStoredWords stored;
    CReader reader(content.substr(kMark.size()));
    while (!reader.IsAtEnd()) {
        const std::uint64_t page0 = reader.Number();
        const std::size_t length = reader.Count();
        const auto begin = static_cast<std::size_t>(reader.At() - bytes.data());
        (void)reader.Bytes(length);
        if (page0 <= std::numeric_limits<int>::max()) stored.m_read[static_cast<int>(page0)] = {begin, length};
    }
    if (reader.Failed()) return std::nullopt;
    stored.m_bytes = std::move(bytes);
    return stored;
}

CStoredWords CTextCache::Find(const std::string& sha256, const WordOptions& options) const
{
    auto bytes = m_folder.Read(NameOf(sha256, options));
    auto stored = bytes ? CStoredWords::From(std::move(*bytes)) : std::nullopt;
    return stored ? std::move(*stored) : CStoredWords();
}

void CTextCache::Keep(const std::string& sha256, const WordOptions& options, const CStoredWords& words)
{
    m_folder.Write(NameOf(sha256, options), words.Bytes());
}

}  // namespace openhost
