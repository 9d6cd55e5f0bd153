// Expressions made of what a user typed, and what an expression carries for others than the search.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/RegularExpression.h"

/// What to search for, as a user asks for it. UTF-8.
struct SearchItem {
    std::string text;
    bool isExpression = true;  ///< else literal text
    bool wholeWords = false;
    bool matchCase = false;
};

/// What bounds a whole word.
enum class WordBounds {
    WhiteSpace,  ///< ends of lines and white space: punctuation next to a word keeps it from matching
    Words,       ///< where a letter, digit or underscore of ASCII ends or begins
};

/// The pattern of an item, for CRegularExpression::Compile.
[[nodiscard]] std::string PatternOf(const SearchItem& item, WordBounds bounds = WordBounds::WhiteSpace);
/// Fails with a sentence that names the text.
[[nodiscard]] Expected<CRegularExpression> CompileItem(const SearchItem& item,
                                                       WordBounds bounds = WordBounds::WhiteSpace);

/// A pattern that matches the text and nothing else; it never negates.
[[nodiscard]] std::string EscapePattern(std::string_view text);

/// What (?#name=value) says in a pattern. A comment matches nothing, so the search is the same without it. The first
/// one that is not empty counts; the value ends at the first closing parenthesis.
[[nodiscard]] std::optional<std::string> EmbeddedOption(std::string_view pattern, std::string_view name);
inline constexpr std::string_view kFormatOption = "format";
inline constexpr std::string_view kAreaOption = "area";

/// The output form of a match, for Expand: what the pattern carries, else what the field says, else the whole match.
[[nodiscard]] std::string MatchForm(std::string_view pattern, std::string_view field);

/// Expressions that were read from lines, in their order, and a sentence for each line that is none.
struct ExpressionLines {
    std::vector<CRegularExpression> expressions;
    std::vector<std::string> problems;
};
/// Makes an expression of each line that is not empty, with the settings of `each`, whose text is the lines. Lines
/// end with CR LF.
[[nodiscard]] ExpressionLines ExpressionsFromLines(const SearchItem& each);
