// What becomes of the text of a new file name: rules, letter case, length, and what file systems allow.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Expected.h"
#include "common/RegularExpression.h"
#include "naming/RenameSettings.h"

/// index * increment + start, with at most 40 digits of padding; a sign is no digit. `index` from 0.
[[nodiscard]] std::string NumberText(const CFileNamePart& part, int index);
/// A to Z, AA, BB to ZZ, AAA, ... at most as many letters as a name may have.
[[nodiscard]] std::string LetterText(int index);
/// "1-N", or "1" for a single page.
[[nodiscard]] std::string PageRangeText(int pageCount);

/// Rules that are compiled once and then used for any number of names.
class CNameRules {
public:
    /// Fails with a sentence that names the rule that does not compile.
    [[nodiscard]] static Expected<CNameRules> From(const std::vector<CFileRenameRule>& rules);
    /// Fails with a sentence when an expression cannot be searched to its end.
    [[nodiscard]] Expected<std::string> Apply(std::string text) const;

private:
    struct Rule {
        CFileRenameRule rule;
        std::optional<CRegularExpression> expression;
    };
    std::vector<Rule> m_rules;
};

[[nodiscard]] std::string InCase(const std::string& text, NameCase textCase);

/// Most bytes of a name on the file systems of Linux, and most UTF-16 units on those of Windows.
inline constexpr std::size_t kLongestNameBytes = 255;
/// Names are cut to so many characters in any case.
inline constexpr std::size_t kLongestNameCharacters = 240;

/// The text as a file name with this extension (without dot; empty: none). Cut to `most` characters and to what a
/// file system takes together with the extension, but never within a character that combines several. Characters that
/// names may not hold and control characters are dropped; so are dots and blanks at the end, and blanks in front.
/// A name that Windows keeps for a device gets an underscore. Empty when nothing remains.
[[nodiscard]] std::string ValidFileName(std::string_view utf8, std::string_view extension, std::size_t most);
