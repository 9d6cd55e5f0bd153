// Bytes of any kind as valid UTF-8 text and back, for JSON.
#pragma once

#include <string>
#include <string_view>

/// Valid UTF-8 stays as it is. Each byte that is part of no valid character becomes the private-use character
/// U+F700 + byte; so do the bytes of a character that is itself one of these, so that the way back is unambiguous.
[[nodiscard]] std::string TextFromBytes(std::string_view bytes);
/// The way back. Other text than the one above made stays as it is where it has no such characters.
[[nodiscard]] std::string BytesFromText(std::string_view text);
