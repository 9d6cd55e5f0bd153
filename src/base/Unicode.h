#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// The conversions between the forms of Unicode, and letter case. All are total: what is no character of the input's
// form becomes U+FFFD, one for each malformed sequence; a lone surrogate is such a sequence. The data are those of
// utf8proc, whatever the system's locale is.

inline constexpr char32_t kReplacementCharacter = 0xFFFD;

bool IsValidUtf8(std::string_view bytes);
/// Bytes of the valid UTF-8 character at the beginning of text that is not empty; 0 when there is none.
[[nodiscard]] std::size_t CharacterLength(std::string_view bytes);
/// Bytes of what people take for one character at the beginning of text that is not empty: a letter with its marks, a
/// family of emoji, or one malformed sequence.
[[nodiscard]] std::size_t GraphemeLength(std::string_view bytes);

/// Reads the character at `position` and moves behind it; U+FFFD for a malformed sequence (and `*valid` false).
/// `position` must be below the size.
char32_t NextUtf8(std::string_view bytes, std::size_t& position, bool* valid = nullptr);
/// Likewise; a lone surrogate comes back as it is.
char32_t NextUtf16(std::u16string_view utf16, std::size_t& position);
/// Appends one character; surrogates and numbers above U+10FFFF count as U+FFFD.
void AppendUtf8(std::string& utf8, char32_t character);

/// The text itself when valid, else with U+FFFD in place of each malformed sequence.
std::string SanitizeUtf8(std::string_view bytes);

std::u16string Utf8ToUtf16(std::string_view utf8);
std::string Utf16ToUtf8(std::u16string_view utf16);
std::u32string Utf8ToUtf32(std::string_view utf8);
std::string Utf32ToUtf8(std::u32string_view utf32);
std::u16string Utf32ToUtf16(std::u32string_view utf32);
std::u32string Utf16ToUtf32(std::u16string_view utf16);
/// Bytes of UTF-16 without a mark, as they stand in a file or in a host text; an odd last byte becomes U+FFFD. Lone
/// surrogates stay in UTF-16.
std::u16string Utf16FromBytes(std::string_view bytes, bool bigEndian);
std::string BytesOfUtf16(std::u16string_view utf16, bool bigEndian);
std::string Utf16BytesToUtf8(std::string_view bytes, bool bigEndian);
std::string Utf8ToUtf16Bytes(std::string_view utf8, bool bigEndian);

/// Valid UTF-8 with accents and letters composed (NFC); other bytes stay as they are.
std::string Composed(std::string_view utf8);

/// Unicode's simple mappings, one character to one. The sharp s stays as it is: its capital is hardly ever meant.
char32_t LowerCased(char32_t character);
char32_t UpperCased(char32_t character);

/// Which way a character runs, as the bidirectional algorithm has it.
enum class Direction { LeftToRight, RightToLeft, Number, Neutral };
Direction DirectionOf(char32_t character);
bool IsWhiteSpace(char32_t character);
bool IsLetter(char32_t character);
/// The letters that a ligature or another presentation form of letters stands for; else the character itself.
std::u32string WithoutPresentationForm(char32_t character);
/// Letters, marks and digits of all scripts, and characters for private use; what stands between words is none.
bool IsPartOfWord(char32_t character);
/// What is compared when neither letter case nor accents nor the form of a letter matter: no, one or several
/// characters. A mark folds to nothing.
std::u32string FoldedForSearch(char32_t character);
