// The text of pages in reading order, and where it stands.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/RegularExpression.h"
#include "hostcalls/Words.h"

/// What stands between two lines of a text that is searched.
enum class LineEnds { Blanks, LineFeeds };

/// The rectangle that "left, bottom, right, top" says, in either order of the corners; nothing when it says none.
[[nodiscard]] std::optional<PageRect> PageRectFrom(std::string_view text);

/// The text of one page, or of an area of it. Words that were divided at the end of a line are whole.
class CPageText {
public:
    explicit CPageText(std::vector<HostWord> words);

    bool IsEmpty() const { return m_words.empty(); }
    const std::vector<HostWord>& Words() const { return m_words; }

    /// Positions in it are the same with either kind of line ends. Made when first asked for.
    const CSearchedText& Text(LineEnds ends) const;
    /// The words of which something lies in a part of the text.
    [[nodiscard]] std::vector<const HostWord*> WordsIn(TextRange range) const;
    /// The words whose middle lies in an area. Of a divided word the middle of its first part counts.
    [[nodiscard]] CPageText Inside(const PageRect& area) const;

private:
    std::vector<HostWord> m_words;
    std::vector<std::size_t> m_starts;  // where each word begins
    mutable std::map<LineEnds, CSearchedText> m_texts;
};

/// The text of a document as it was when this object was made; a page is read once as long as no other one is asked
/// for, or when it is to be kept. The document cannot be closed or fully saved as long as this lives. Everything
/// throws CHostException.
class CDocumentText {
public:
    explicit CDocumentText(PDDoc document, CHostWordFinder::Fonts fonts = CHostWordFinder::Fonts::No);

    /// From now on the text of this page is kept once it was read.
    void Keep(int page0) { m_kept.try_emplace(page0); }

    /// Valid until the next call; that of a kept page as long as this object.
    const CPageText& Page(int page0);

private:
    CHostWordFinder m_finder;
    std::map<int, std::optional<CPageText>> m_kept;
    int m_page0 = -1;
    CPageText m_page{{}};
};
