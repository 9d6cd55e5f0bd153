// Which pages of a document a command works on.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Expected.h"
#include "common/SettingsRecord.h"

enum class PageSelection { All = 0, Current = 1, FromTo = 2 };
enum class PageSubset { Every = 0, Odd = 1, Even = 2 };  // by page numbers, which begin with 1

/// What page expressions name in a document. Pages from 0; nothing when there is no such thing, or it leads nowhere.
/// Names as they are in the parameters of a step, in the narrow code page.
class CPageReferences {
public:
    virtual ~CPageReferences() = default;
    virtual int PageCount() const = 0;
    virtual std::optional<int> PageOfBookmark(const std::string& title) const = 0;
    virtual std::optional<int> PageOfDestination(const std::string& name) const = 0;
    virtual std::optional<int> PageOfLabel(const std::string& label) const = 0;
};

/// A page from 0. When the expression names none, `page0` is the nearest one that can serve, and `error` says what is
/// wrong; an empty expression has nothing to say.
struct ResolvedPage {
    int page0 = 0;
    bool ok = false;
    std::string error;
};

/// A page number, one that counts from the end (-1 is the last page), "last", "b:" and the title of a bookmark, "d:"
/// and the name of a destination, or "l:" and a page label. A title, name or label is all that follows the colon;
/// case matters in it and not before.
[[nodiscard]] ResolvedPage ResolvePageExpression(std::string_view expression, const CPageReferences& document);

/// Pages from 0. An expression, where there is one, says its end instead of the number.
struct PageRange {
    int firstPage0 = 0;
    int lastPage0 = -1;  ///< negative: the last page of the document
    /// As stored, whatever the number; an unknown one selects all pages or every page.
    int selection = static_cast<int>(PageSelection::All);
    int subset = static_cast<int>(PageSubset::Every);
    std::string firstExpression = {}, lastExpression = {};

    [[nodiscard]] static PageRange Read(const CSettingsRecord& record);
    void Write(CSettingsRecord& record) const;

    /// One line for people.
    [[nodiscard]] std::string Describe() const;

    /// The pages of the range that a document has, ascending. `current0` is the page that a window shows, the first
    /// one where there is none. Fails with a sentence when an expression names no page, or the last page is before
    /// the first.
    [[nodiscard]] Expected<std::vector<int>> Pages(const CPageReferences& document, int current0 = 0) const;
};

/// What is wrong with page numbers that somebody typed, from 1; empty when nothing is. Without a document its number
/// of pages is not asked for.
[[nodiscard]] std::string PageNumbersProblem(int first, int last, std::optional<int> pageCount);
