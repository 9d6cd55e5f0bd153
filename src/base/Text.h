// Texts: in the narrow code page, as bytes that JSON can hold, as Base64, and in lines that come in pieces.
#pragma once

#include <cstddef>
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

// Bytes as Base64 text and back.

/// Base64 with padding, in one line.
[[nodiscard]] std::string EncodeBase64(std::string_view bytes);

/// Bytes of a Base64 text. Characters outside the alphabet are skipped, padding included; a last group of two or
/// three characters yields one or two bytes, a single character none.
[[nodiscard]] std::string DecodeBase64(std::string_view text);

/// Makes whole lines of bytes that come in pieces. A line is kept up to `longest` bytes, the rest of it is dropped.
class CLineSplitter {
public:
    explicit CLineSplitter(std::size_t longest) : m_longest(longest) {}

    /// Appends the lines that these bytes complete, without their line ends.
    void Add(std::string_view bytes, std::vector<std::string>& lines);
    /// What has come of a last line without line end, if anything.
    void Finish(std::vector<std::string>& lines);

private:
    void Keep(std::string_view part);

    std::size_t m_longest;
    std::string m_line;
    bool m_begun = false;
};
