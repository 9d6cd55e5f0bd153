// Words of a document, as the host finds them.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "hostapi/HostTypes.h"
#include "hostcalls/HostPath.h"

/// A rectangle in the user space of a page, as it is before the page is turned.
struct PageRect {
    double left = 0, bottom = 0, right = 0, top = 0;

    bool Contains(double x, double y) const { return x >= left && x <= right && y >= bottom && y <= top; }
};

/// A word with the punctuation beside it, and without the space behind it.
struct HostWord {
    std::u16string text;
    std::vector<PageRect> boxes;  ///< one for each line that the word stands on
    bool spaceAfter = false;
    bool endsLine = false;
    std::string font;  ///< its name, when asked for
    double fontSize = 0;
};

/// Finds the words of a document as it is when the finder is made. The document cannot be closed or fully saved as
/// long as the finder lives. Everything throws CHostException.
class CHostWordFinder {
public:
    enum class Fonts { No, Yes };

    CHostWordFinder(PDDoc document, Fonts fonts);
    CHostWordFinder(const CHostWordFinder&) = delete;
    CHostWordFinder& operator=(const CHostWordFinder&) = delete;
    ~CHostWordFinder();

    /// In reading order where the host knows it.
    [[nodiscard]] std::vector<HostWord> Words(int page0) const;

private:
    HostWord WordOf(PDWord word) const;
    void AddStyle(PDWord word, HostWord& found) const;

    PDWordFinder m_finder = nullptr;
    bool m_fonts;
    CHostText m_text;
};
