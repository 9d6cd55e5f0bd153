#include "base/ByteText.h"

#include "base/Unicode.h"

#include <cstddef>

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

}  // namespace

std::string TextFromBytes(std::string_view bytes)
{
    std::string text;
    text.reserve(bytes.size());
    while (!bytes.empty()) {
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
    while (!text.empty()) {
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
