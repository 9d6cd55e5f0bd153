// Searching the text of a document by rules.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "common/PageRange.h"
#include "common/SearchPattern.h"
#include "pdflib/PageText.h"

/// Which text counts by the font of its words. The default lets everything through.
struct FontFilter {
    std::string name = {};  ///< a part of the font's name, letter case ignored
    double leastSize = 0;   ///< points
    double mostSize = 0;    ///< points; 0: no limit

    bool IsSet() const { return !name.empty() || leastSize > 0 || mostSize > 0; }
    bool LetsThrough(const HostWord& word) const;
};

/// What one rule of a search looks for. Texts are UTF-8.
struct TextRule {
    SearchItem item;
    PageRange pages = {};
    bool countLineEnds = false;  ///< line ends are line feeds in the text; else blanks
    std::string format = {};     ///< of a match, see MatchForm
    std::optional<PageRect> area = {};
    FontFilter fonts = {};
    bool stopOnMatch = false;
};

struct FoundText {
    int page0 = 0;
    std::string text;  ///< in the format of the rule
};

/// What a rule has found in one document, in page order. A negated rule finds an empty text on the first page of its
/// range when no page of the range matches.
struct RuleFindings {
    std::vector<FoundText> found;
    std::string problem;  ///< why it could not search, or not to the end: a sentence; else empty
};

struct SearchFindings {
    std::vector<RuleFindings> rules;  ///< one for each rule
    int pagesWithoutText = 0;         ///< of those that were read: pictures only, or nothing at all
    int pagesRead = 0;
};

/// Rules that are compiled once and then used for any number of documents.
class CTextSearch {
public:
    /// A rule that does not compile, or whose area says none, finds nothing; its problem says why.
    explicit CTextSearch(const std::vector<TextRule>& rules);

    /// The sentence for each rule that cannot be used, with its number from 1; empty when all can.
    const std::string& Problem() const { return m_problem; }

    /// Called before each page, with its number from 1 and that of all pages; false ends the search.
    using Progress = std::function<bool(int page, int pages)>;

    /// Reads each page that some rule needs once. Throws CHostException.
    [[nodiscard]] SearchFindings Search(PDDoc document, const CPageReferences& pages, const Progress& progress) const;

    /// Answers the text to search, which it makes when it is first asked.
    using TextSource = std::function<CDocumentText&()>;
    /// The same in text that others use, too; it has fonts when NeedsFonts says so.
    [[nodiscard]] SearchFindings Search(const TextSource& source, const CPageReferences& pages,
                                        const Progress& progress) const;
    [[nodiscard]] bool NeedsFonts() const;

private:
    struct Compiled {
        TextRule rule;
        std::optional<CRegularExpression> expression;
        std::string form;
        std::string problem;
    };

    static Compiled Compile(const TextRule& rule);
    void SearchPage(const Compiled& rule, const CPageText& page, int page0, RuleFindings& findings) const;

    std::vector<Compiled> m_rules;
    std::string m_problem;
};
