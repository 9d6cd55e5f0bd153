#include "base/Text.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <utility>

#include "base/Unicode.h"

namespace {

constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";

std::string_view TrimmedView(std::string_view text)
{
    const auto first = text.find_first_not_of(kWhiteSpace);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kWhiteSpace) - first + 1);
}

char LowerAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }
char UpperAscii(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

}  // namespace

std::string Trim(std::string_view text) { return std::string(TrimmedView(text)); }

std::string TrimLeft(std::string_view text)
{
    const auto first = text.find_first_not_of(kWhiteSpace);
    return std::string(first == std::string_view::npos ? std::string_view() : text.substr(first));
}

std::string ToLowerAscii(std::string_view text)
{
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), LowerAscii);
    return lower;
}

std::string ToUpperAscii(std::string_view text)
{
    std::string upper(text);
    std::transform(upper.begin(), upper.end(), upper.begin(), UpperAscii);
    return upper;
}

bool EqualsIgnoreCaseAscii(std::string_view a, std::string_view b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return LowerAscii(x) == LowerAscii(y); });
}

std::string RemoveQuotes(std::string_view text)
{
    std::string value = Trim(text);
    if (value.size() < 2) return value;
    if (value.front() == '"') value.front() = ' ';
    if (value.back() == '"') value.back() = ' ';
    return Trim(value);
}

std::vector<std::string> Split(std::string_view text, std::string_view separators)
{
    std::vector<std::string> pieces;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find_first_of(separators, start), text.size());
        if (end > start) pieces.emplace_back(text.substr(start, end - start));
        start = end + 1;
    }
    return pieces;
}

std::string ReplaceAll(std::string_view text, std::string_view what, std::string_view with)
{
    if (what.empty()) return std::string(text);
    std::string result;
    std::size_t start = 0;
    for (auto found = text.find(what); found != std::string_view::npos; found = text.find(what, start)) {
        result.append(text, start, found - start).append(with);
        start = found + what.size();
    }
    return result.append(text.substr(start));
}

int ParseDecimal(std::string_view text)
{
    constexpr long long kMax = std::numeric_limits<int>::max(), kMin = std::numeric_limits<int>::min();
    text.remove_prefix(std::min(text.find_first_not_of(kWhiteSpace), text.size()));
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) text.remove_prefix(1);
    long long value = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') break;
        value = std::min(value * 10 + (c - '0'), kMax + 1);  // one more than int holds is as good as any
    }
    return static_cast<int>(negative ? std::max(-value, kMin) : std::min(value, kMax));
}

std::string FormatText(const char* format, ...)
{
    va_list arguments, again;
    va_start(arguments, format);
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    va_end(arguments);
    std::string text(length > 0 ? static_cast<std::size_t>(length) : 0, '\0');
    if (length > 0) std::vsnprintf(text.data(), text.size() + 1, format, again);
    va_end(again);
    return text;
}

namespace {

// U+F780..U+F7FF stand for the bytes 80..FF: EF 9E 80..BF and EF 9F 80..BF.
constexpr unsigned char kMarkLead = 0xEF, kMarkLow = 0x9E, kMarkHigh = 0x9F;

unsigned char ByteAt(std::string_view bytes, std::size_t at) { return static_cast<unsigned char>(bytes[at]); }

bool Within(unsigned char byte, unsigned char first, unsigned char last) { return byte >= first && byte <= last; }

bool IsMark(std::string_view bytes)
{
    return bytes.size() >= 3 && ByteAt(bytes, 0) == kMarkLead && Within(ByteAt(bytes, 1), kMarkLow, kMarkHigh) &&
           Within(ByteAt(bytes, 2), 0x80, 0xBF);
}

void AppendMark(std::string& text, unsigned char byte)
{
    text += static_cast<char>(kMarkLead);
    text += static_cast<char>(byte < 0xC0 ? kMarkLow : kMarkHigh);
    text += static_cast<char>(0x80 | (byte & 0x3F));
}

/// Moves the ASCII that comes first: most texts are nothing else.
void MoveAscii(std::string_view& from, std::string& to)
{
    std::size_t length = 0;
    while (length < from.size() && ByteAt(from, length) < 0x80) ++length;
    to.append(from.substr(0, length));
    from.remove_prefix(length);
}

}  // namespace

std::string TextFromBytes(std::string_view bytes)
{
    std::string text;
    text.reserve(bytes.size());
    for (MoveAscii(bytes, text); !bytes.empty(); MoveAscii(bytes, text)) {
        std::size_t length = CharacterLength(bytes);
        if (length > 0 && !IsMark(bytes)) {
            text += bytes.substr(0, length);
        } else {
            length = 1;
            AppendMark(text, ByteAt(bytes, 0));
        }
        bytes.remove_prefix(length);
    }
    return text;
}

std::string BytesFromText(std::string_view text)
{
    std::string bytes;
    bytes.reserve(text.size());
    for (MoveAscii(text, bytes); !text.empty(); MoveAscii(text, bytes)) {
        if (IsMark(text)) {
            bytes += static_cast<char>(ByteAt(text, 2) | (ByteAt(text, 1) == kMarkHigh ? 0x40 : 0));
            text.remove_prefix(3);
        } else {
            bytes += text.front();
            text.remove_prefix(1);
        }
    }
    return bytes;
}

namespace {

constexpr std::array<int, 256> MakeBase64Values()
{
    std::array<int, 256> values{};
    values.fill(-1);
    int next = 0;
    for (int c = 'A'; c <= 'Z'; ++c) values[static_cast<std::size_t>(c)] = next++;
    for (int c = 'a'; c <= 'z'; ++c) values[static_cast<std::size_t>(c)] = next++;
    for (int c = '0'; c <= '9'; ++c) values[static_cast<std::size_t>(c)] = next++;
    values['+'] = next++;
    values['/'] = next;
    return values;
}

constexpr auto kBase64Values = MakeBase64Values();

}  // namespace

std::string EncodeBase64(std::string_view bytes)
{
    constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (std::size_t at = 0; at < bytes.size(); at += 3) {
        const std::size_t count = std::min<std::size_t>(3, bytes.size() - at);
        std::uint32_t group = 0;
        for (std::size_t i = 0; i < 3; ++i)
            group = group << 8 | (i < count ? static_cast<unsigned char>(bytes[at + i]) : 0u);
        for (std::size_t i = 0; i < 4; ++i) text += i <= count ? kAlphabet[group >> (18 - 6 * i) & 0x3F] : '=';
    }
    return text;
}

std::string DecodeBase64(std::string_view text)
{
    std::string bytes;
    bytes.reserve(text.size() / 4 * 3);
    unsigned group = 0;
    int bits = 0;
    for (const char c : text) {
        const int value = kBase64Values[static_cast<unsigned char>(c)];
        if (value < 0) continue;
        group = group << 6 | static_cast<unsigned>(value);
        bits += 6;
        if (bits >= 8) {
            bits -= 8;
            bytes += static_cast<char>(group >> bits & 0xFF);
        }
    }
    return bytes;
}

void CLineSplitter::Keep(std::string_view part) { m_line += part.substr(0, m_longest - m_line.size()); }

void CLineSplitter::Add(std::string_view bytes, std::vector<std::string>& lines)
{
    while (!bytes.empty()) {
        const auto end = bytes.find('\n');
        Keep(bytes.substr(0, end));
        m_begun = end == std::string_view::npos;
        if (m_begun) return;
        lines.push_back(std::exchange(m_line, {}));
        bytes.remove_prefix(end + 1);
    }
}

void CLineSplitter::Finish(std::vector<std::string>& lines)
{
    if (std::exchange(m_begun, false)) lines.push_back(std::exchange(m_line, {}));
}
