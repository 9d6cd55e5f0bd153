// Named, typed values: the parameters of a step as the XML form states them, and how their texts read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

struct WorkflowItems;

/// Text of an item, as UTF-8, kept apart by what it becomes.
struct WorkflowText {
    std::string utf8;
};
struct WorkflowString {
    std::string bytes;
};
struct WorkflowAtom {
    std::string name;
};
struct WorkflowBinary {
    std::string bytes;
};
struct WorkflowNull {};

using WorkflowValue = std::variant<WorkflowNull, bool, std::int32_t, double, WorkflowText, WorkflowString,
                                   WorkflowAtom, WorkflowBinary, WorkflowItems>;

/// The parameters of one level: unique names, in the order in which each name was first met.
struct WorkflowItems {
    std::vector<std::pair<std::string, WorkflowValue>> entries;
};

/// How much of an item's text counts.
inline constexpr std::size_t kMaxItemValueBytes = 1'000'000;

/// The value of an item of the given type word; nothing for an unknown word and for an empty number.
/// Takes at most the first kMaxItemValueBytes of the text, cut between characters.
[[nodiscard]] std::optional<WorkflowValue> ItemValue(std::string_view type, std::string_view valueUtf8);

/// The number that a text starts with, after white space; 0 when there is none. Always a decimal point, whatever the
/// locale.
[[nodiscard]] double LeadingDouble(std::string_view text);

/// Whether the first key stands before the second in a cab: keys of digits first, by number, then the others by
/// bytes.
[[nodiscard]] bool ComesFirstInCab(const std::string& key, const std::string& other);
