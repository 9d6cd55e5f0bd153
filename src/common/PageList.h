// Lists of pages as people write them: 1-3, 8-20E, 1L, "Summary", Regex=total:\s+\d+
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/Expected.h"
#include "common/RegularExpression.h"

enum PageListFlags : unsigned {
    kOddPages = 1,
    kEvenPages = 2,
    kAllPages = kOddPages | kEvenPages,
    kDescendingPages = 4,
    kPagesFromEnd = 16,  ///< 1 is the last page, 2 the one before
};

/// One item of a list: pages by number, or those whose text satisfies a condition.
struct PageListElement {
    int start0 = 0;
    int count = 0;
    unsigned flags = kAllPages;
    /// Present in a text condition, which has no numbers. Letter case does not matter to it.
    std::shared_ptr<const CRegularExpression> condition;
};

/// Items are separated by commas outside quotes; white space around an item does not count. A number, or two with a
/// hyphen between, with D (odd pages), E (even pages) or L (from the end) behind; text in quotes of either kind; or
/// Regex= and an expression, which takes the rest of the list. UTF-8. The sentence names the item and says why.
[[nodiscard]] Expected<std::vector<PageListElement>> ParsePageList(std::string_view description);
[[nodiscard]] Expected<PageListElement> ParsePageListItem(std::string_view item);

/// The pages from 0 that a document of so many pages has of an element without condition, in the element's order.
[[nodiscard]] std::vector<int> PagesOfElement(const PageListElement& element, int pageCount);
