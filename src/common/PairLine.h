// Lines of two texts with a comma between them, as people type tables of names and what belongs to them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

struct PairLine {
    std::string key, value;
};

struct PairForm {
    bool unquoteValue = false;    ///< quotes around a whole value are no part of it, doubled ones in it are one
    bool openQuoteCounts = true;  ///< a quote that is never closed hides commas; else it is a character like others
};

/// The first comma outside double quotes separates, blanks around it and in front of the key are dropped, and the
/// rest of the line is the value; quotes around the whole key are no part of it. Nothing for a line without such a
/// comma.
[[nodiscard]] std::optional<PairLine> ReadPairLine(std::string_view line, PairForm form = {});

/// "key, value", with the key in double quotes when it would not be read again without.
[[nodiscard]] std::string PairLineText(const std::string& key, const std::string& value);
