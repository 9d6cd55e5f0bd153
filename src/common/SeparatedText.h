// Tables as text: a record for each line, its values between commas or tabs.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Expected.h"

/// How the values of a line are told apart.
struct SeparatedForm {
    char separator = ',';
    /// Values may stand in double quotes, which may hold separators, line ends and doubled quotes (RFC 4180).
    bool quotes = true;
};

struct SeparatedRecord {
    std::size_t line = 0;             ///< where it begins, from 1
    std::vector<std::string> values;  ///< UTF-8; one at least
};

/// A value as it stands between such separators: in double quotes where it needs them.
[[nodiscard]] std::string SeparatedValue(std::string_view text, char separator = ',');

/// The records of a text, whose lines end with LF, CR or both; an empty line is a record with an empty value. Takes
/// time in proportion to the text. Fails with a sentence that tells the line when a quote is never closed.
[[nodiscard]] Expected<std::vector<SeparatedRecord>> ParseSeparated(std::string_view utf8, SeparatedForm form = {});

/// The same, record by record. A sentence from `take` ends it and is the answer; else the answer is why the text
/// cannot be read, or empty.
using TakeRecord = std::function<std::string(SeparatedRecord record)>;
[[nodiscard]] std::string ForEachSeparated(std::string_view utf8, SeparatedForm form, const TakeRecord& take);

/// What the bytes of a text file are.
enum class CharacterSet {
    Detect,  ///< as the mark says; without one UTF-16 by its zero bytes, else UTF-8 when all of it is, else CodePage
    Utf8,
    Utf16LittleEndian,
    Utf16BigEndian,
    CodePage  ///< of this computer; Windows-1252 where that is UTF-8
};

struct DecodedText {
    std::string utf8;  ///< without mark; what is no character is U+FFFD
    std::string set;   ///< for people: "UTF-8"
};

/// A mark counts whatever is asked for.
[[nodiscard]] DecodedText DecodeText(std::string bytes, CharacterSet set = CharacterSet::Detect);

/// A whole file of at most 512 MiB. Fails with the system's reason, which does not name the file.
[[nodiscard]] Expected<DecodedText> ReadDecodedText(const std::string& path, CharacterSet set = CharacterSet::Detect);
