// Enumerations whose values stand for words: the word of value n stands at place n of a table.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

template <std::size_t count>
using WordTable = std::array<std::string_view, count>;

template <class Enum, std::size_t count>
[[nodiscard]] constexpr std::string_view WordOf(const WordTable<count>& words, Enum value)
{
    return words[static_cast<std::size_t>(value)];
}

template <class Enum, std::size_t count>
[[nodiscard]] constexpr std::optional<Enum> FromWord(const WordTable<count>& words, std::string_view word)
{
    for (std::size_t place = 0; place < count; ++place)
        if (words[place] == word) return static_cast<Enum>(place);
    return std::nullopt;
}
