#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// The only conversions between encodings. All are total: what is no character of the input encoding becomes
// U+FFFD, one for each malformed sequence.

inline constexpr char32_t kReplacementCharacter = 0xFFFD;

bool IsValidUtf8(std::string_view bytes);

/// Reads the character at `position` and moves behind it; U+FFFD for a malformed sequence (and `*valid` false).
/// `position` must be below the size.
char32_t NextUtf8(std::string_view bytes, std::size_t& position, bool* valid = nullptr);
/// Appends one character; surrogates and numbers above U+10FFFF count as U+FFFD.
void AppendUtf8(std::string& utf8, char32_t character);

/// The text itself when valid, else with U+FFFD in place of each malformed sequence.
std::string SanitizeUtf8(std::string_view bytes);

std::u16string Utf8ToUtf16(std::string_view utf8);
std::string Utf16ToUtf8(std::u16string_view utf16);
std::u32string Utf8ToUtf32(std::string_view utf8);
std::string Utf32ToUtf8(std::u32string_view utf32);
/// Bytes of UTF-16 without a mark, as they stand in a file or in a host text; an odd last byte becomes U+FFFD.
std::string Utf16BytesToUtf8(std::string_view bytes, bool bigEndian);
std::string Utf8ToUtf16Bytes(std::string_view utf8, bool bigEndian);
