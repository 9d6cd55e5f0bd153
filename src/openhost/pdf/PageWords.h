// The words of a page: what stands on it, put into the order in which it is read.
#pragma once

#include <deque>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "openhost/pdf/PageBoxes.h"
#include "openhost/pdf/TextEngine.h"

namespace openhost {

struct WordOptions {
    bool fonts = true;
    bool joinHyphenated = true;     ///< a word that is divided at the end of a line is one word
    bool dissolveLigatures = true;  ///< they become the letters that they stand for

    friend bool operator==(const WordOptions&, const WordOptions&) = default;
};

/// What is known of a word besides its text and place.
struct WordFacts {
    bool spaceAfter = false;  ///< a space divides it from the next word
    bool endsLine = false;
    bool wasHyphenated = false;  ///< divided at the end of a line
    bool hasLigature = false;
    bool isRotated = false;  ///< its line is not level on the page as it is shown
    bool isRightToLeft = false;
    double fontSize = 0;
};

/// A word with the punctuation beside it, as a view into its page. Boxes are in the user space of the page, as it is
/// before it is turned, in whole multiples of 1/65536: the host interface knows no finer ones.
struct PageWord : WordFacts {
    std::u16string_view text;        ///< in the order in which it is spoken
    std::span<const PageBox> units;  ///< where each unit of the text stands; empty when that was not kept
    std::span<const PageBox> boxes;  ///< one for each line that the word stands on
    std::string_view fontName;
};

/// The words of one page, which live as long as this; moving it keeps them where they are.
class CPageWords {
public:
    CPageWords() = default;
    CPageWords(CPageWords&&) = default;
    CPageWords& operator=(CPageWords&&) = default;

    auto begin() const { return m_words.begin(); }
    auto end() const { return m_words.end(); }
    std::size_t size() const { return m_words.size(); }
    const PageWord& operator[](std::size_t index) const { return m_words[index]; }

private:
    friend class CPageWordsBuilder;

    // Vectors, because the short text of a string would move with it.
    std::vector<char16_t> m_text;
    std::vector<PageBox> m_units, m_boxes;
    std::deque<std::string> m_fonts;
    std::vector<PageWord> m_words;
};

/// Puts a page together, word by word: everything is added to the word that was begun last.
class CPageWordsBuilder {
public:
    bool IsEmpty() const { return m_words.empty(); }
    void BeginWord();
    WordFacts& Facts() { return m_words.back().facts; }
    void AddUnit(char16_t unit) { m_page.m_text.push_back(unit); }
    void AddUnitBox(const PageBox& box) { m_page.m_units.push_back(box); }
    void AddBox(const PageBox& box) { m_page.m_boxes.push_back(box); }
    void SetFont(std::string_view name);
    bool HasFont() const { return m_words.back().font != nullptr; }
    std::u16string_view Text() const;
    void TakeLastUnit();
    /// The page; the builder is done with.
    CPageWords Finish();

private:
    struct Word {
        std::size_t text, unit, box;  // where its parts begin; they end where those of the next word begin
        const std::string* font = nullptr;
        WordFacts facts = {};
    };

    CPageWords m_page;
    std::vector<Word> m_words;
};

/// Which way the page is shown: what is needed to come from there back to user space.
struct PageView {
    PageBox crop;
    int rotation = 0;  ///< degrees clockwise: 0, 90, 180 or 270
};

/// The words of pieces in reading order.
CPageWords WordsOf(const std::vector<TextPiece>& pieces, const PageView& view, const WordOptions& options);

}  // namespace openhost
