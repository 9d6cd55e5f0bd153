#include "openhost/core/ShortText.h"

#include <algorithm>

namespace openhost {
namespace {

constexpr std::string_view kDots = "...";

bool ContinuesCharacter(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

/// Bytes that are no UTF-8 may go on like this for ever; a character has three of them at most.
constexpr std::size_t kMostContinued = 3;

}  // namespace

std::string ShortenedInMiddle(std::string_view text, std::size_t bytes)
{
    if (text.size() <= bytes) return std::string(text);
    const std::size_t room = bytes - std::min(bytes, kDots.size());
    std::size_t head = room / 3, tail = text.size() - (room - head);
    for (std::size_t i = 0; i < kMostContinued && head > 0 && ContinuesCharacter(text[head]); ++i) --head;
    for (std::size_t i = 0; i < kMostContinued && tail < text.size() && ContinuesCharacter(text[tail]); ++i) ++tail;
    std::string shortened(text.substr(0, head));
    shortened += kDots.substr(0, std::min(bytes, kDots.size()));
    return shortened.append(text.substr(tail));
}

}  // namespace openhost
