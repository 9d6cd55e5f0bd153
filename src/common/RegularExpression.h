// Regular expressions: what users search texts and names with.
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Expected.h"

/// A part of a text, in units of UTF-16.
struct TextRange {
    std::size_t start = 0;
    std::size_t length = 0;
    std::size_t End() const { return start + length; }
    bool operator==(const TextRange&) const = default;
};

/// A text as expressions search it, made once however often it is searched.
///
/// UTF-16, as the texts of a host are. A lone surrogate, which is no character, is U+FFFD here, so every position is
/// that of the text given.
class CSearchedText {
public:
    explicit CSearchedText(std::u16string utf16);
    /// Positions are those of the text as UTF-16.
    static CSearchedText FromUtf8(std::string_view utf8);

    std::u16string_view View() const { return m_text; }
    /// Within the text.
    std::string Utf8(TextRange range) const;

private:
    std::u16string m_text;
};

/// Where an expression matches. The groups are numbered as in the expression, 0 is the whole match; one that took no
/// part has no range, and there are none beyond 99.
struct TextMatch {
    std::vector<std::optional<TextRange>> groups;
    TextRange Range() const { return *groups.front(); }
};

/// A match with the texts of some named groups, UTF-8. Names that the expression lacks, and those that captured
/// nothing, are left out.
struct NamedMatch {
    TextRange range;
    std::string text;
    std::map<std::string, std::string> named;
};

/// Which matches count when the first one is empty.
enum class EmptyMatch {
    EndsSearch,  ///< there is no match then
    Skipped,     ///< the search goes on to one that has characters
};

enum class LetterCase { Matters, Ignored };

/// One expression in Perl's syntax, compiled once and executed on many texts.
///
/// Lines have beginnings and ends of their own (^, $). \w, \d, \s and \b know ASCII only; \p{L} and its like know
/// everything, and so does letter case. A leading "!" negates: the rest is the expression, and a text satisfies it in
/// which the rest does not match.
///
/// Executing: fails with a sentence that names the expression when the expression needs too many attempts, too much
/// memory or, over one text, too much time. A start behind the end of the text finds nothing. Positions in the middle
/// of a character mean the next one. Several threads may execute one expression at a time.
class CRegularExpression {
public:
    CRegularExpression();
    CRegularExpression(CRegularExpression&&) noexcept;
    CRegularExpression& operator=(CRegularExpression&&) noexcept;
    virtual ~CRegularExpression();

    /// UTF-8. False when it is no expression; Error says why, and nothing matches then.
    [[nodiscard]] bool Compile(std::string_view pattern, LetterCase letterCase);
    bool IsCompiled() const { return m_code != nullptr; }
    /// What was compiled, without the "!" of a negated one.
    const std::string& Pattern() const { return m_pattern; }
    bool IsNegated() const { return m_negated; }
    /// Of the last Compile; empty when it went well.
    const std::string& Error() const { return m_error; }

    /// The first match at or behind `start`, never an empty one. Negation plays no part.
    Expected<std::optional<TextMatch>> Find(const CSearchedText& text, std::size_t start = 0,
                                            EmptyMatch empty = EmptyMatch::EndsSearch) const;
    Expected<std::optional<NamedMatch>> FindNamed(const CSearchedText& text, const std::vector<std::string>& names,
                                                  std::size_t start = 0) const;
    /// The text of a group in the first match, which may be an empty one; UTF-8. Empty for a group without part.
    /// Nothing when nothing matches or the text is empty.
    Expected<std::optional<std::string>> Extract(const CSearchedText& text, std::size_t group,
                                                 std::size_t start = 0) const;

    /// Hands over each match from left to right, empty ones left out, until `visit` answers false. Answers how many
    /// there were.
    Expected<std::size_t> ForEachMatch(const CSearchedText& text,
                                       const std::function<bool(const TextMatch&)>& visit) const;
    /// Whether there is a match with characters; for a negated expression, whether there is none.
    Expected<bool> IsSatisfiedBy(const CSearchedText& text) const;
    /// The text with every match that is not empty replaced; UTF-8. `replacement` as for Expand.
    Expected<std::string> ReplaceAll(const CSearchedText& text, std::string_view replacement) const;

    /// The template with \0 to \99 and \g<name> replaced by what the groups captured; UTF-8. Two digits are one
    /// number, unless only the first is a group's. Every other backslash stands for itself.
    std::string Expand(const CSearchedText& text, const TextMatch& match, std::string_view form) const;

private:
    struct CodeDeleter {
        void operator()(void* code) const;
    };

    std::optional<TextRange> NamedGroup(const TextMatch& match, const std::string& name) const;

    std::unique_ptr<void, CodeDeleter> m_code;
    std::string m_pattern;
    std::string m_error;
    std::size_t m_groups = 0;  // the whole match not counted
    bool m_negated = false;
    bool m_inOneGo = false;  // where the search begins matters to it
};
