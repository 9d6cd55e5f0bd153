#pragma once

#include <string>
#include <string_view>
#include <vector>

// Small services on texts in the narrow code page. White space and letter case are those of ASCII, so bytes of
// multi-byte characters are never touched.

std::string Trim(std::string_view text);
std::string TrimLeft(std::string_view text);

std::string ToLowerAscii(std::string_view text);
std::string ToUpperAscii(std::string_view text);
bool EqualsIgnoreCaseAscii(std::string_view a, std::string_view b);

/// Trims, takes away a double quote at either end (each on its own), and trims again. One character is left alone.
std::string RemoveQuotes(std::string_view text);

/// The non-empty pieces between any of the separator characters, untrimmed.
std::vector<std::string> Split(std::string_view text, std::string_view separators);

/// Every occurrence from left to right; an empty `what` changes nothing.
std::string ReplaceAll(std::string_view text, std::string_view what, std::string_view with);

/// The decimal integer that the text begins with, after white space and an optional sign; 0 when there is none.
/// Values beyond int become the nearest int.
int ParseDecimal(std::string_view text);

/// printf into a string.
#if defined(__GNUC__)
__attribute__((format(printf, 1, 2)))
#endif
std::string
FormatText(const char* format, ...);

// Bytes of any kind as valid UTF-8 text and back, for JSON.

/// Valid UTF-8 stays as it is. Each byte that is part of no valid character becomes the private-use character
/// U+F700 + byte; so do the bytes of a character that is itself one of these, so that the way back is unambiguous.
[[nodiscard]] std::string TextFromBytes(std::string_view bytes);
/// The way back. Other text than the one above made stays as it is where it has no such characters.
[[nodiscard]] std::string BytesFromText(std::string_view text);
