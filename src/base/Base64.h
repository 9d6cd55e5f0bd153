// Bytes as Base64 text and back.
#pragma once

#include <string>
#include <string_view>

/// Base64 with padding, in one line.
[[nodiscard]] std::string EncodeBase64(std::string_view bytes);

/// Bytes of a Base64 text. Characters outside the alphabet are skipped, padding included; a last group of two or
/// three characters yields one or two bytes, a single character none.
[[nodiscard]] std::string DecodeBase64(std::string_view text);
