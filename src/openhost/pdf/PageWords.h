// The words of a page: what stands on it, put into the order in which it is read.
#pragma once

#include <string>
#include <vector>

#include "openhost/pdf/PageBoxes.h"
#include "openhost/pdf/TextEngine.h"

namespace openhost {

struct WordOptions {
    bool fonts = true;
    bool joinHyphenated = true;     ///< a word that is divided at the end of a line is one word
    bool dissolveLigatures = true;  ///< they become the letters that they stand for
};

/// A word with the punctuation beside it. Boxes are in the user space of the page, as it is before it is turned.
struct PageWord {
    std::u16string text;             ///< in the order in which it is spoken
    std::vector<PageBox> unitBoxes;  ///< where each unit of the text stands
    std::vector<PageBox> boxes;      ///< one for each line that the word stands on
    bool spaceAfter = false;         ///< a space divides it from the next word
    bool endsLine = false;
    bool wasHyphenated = false;  ///< divided at the end of a line
    bool hasLigature = false;
    bool isRotated = false;  ///< its line is not level on the page as it is shown
    bool isRightToLeft = false;
    std::string fontName;
    double fontSize = 0;
};

/// Which way the page is shown: what is needed to come from there back to user space.
struct PageView {
    PageBox crop;
    int rotation = 0;  ///< degrees clockwise: 0, 90, 180 or 270
};

/// The words of pieces in reading order.
std::vector<PageWord> WordsOf(const std::vector<TextPiece>& pieces, const PageView& view, const WordOptions& options);

}  // namespace openhost
