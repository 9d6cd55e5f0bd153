// What a search looks for, and what it finds, as both go between the command line and the plug-in.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Expected.h"
#include "protocol/JsonType.h"

/// Left, bottom, right and top in the user space of the page, as it is before it is turned.
using SearchArea = std::array<double, 4>;

/// One thing to look for. Texts are UTF-8.
struct SearchTerm {
    std::string text = {};
    bool isExpression = false;  ///< else literal text
    bool wholeWords = false;
    bool matchCase = true;
    bool lineEnds = false;    ///< the end of a line is a line feed in the text; else a blank
    std::string format = {};  ///< of a match: \0 to \99, \g<name>; empty: the whole match
};

/// The work of kind "search". A file of rules, when the work has one, takes the place of terms, pages and area.
struct SearchOrder {
    std::vector<SearchTerm> terms = {};
    std::string firstPage = {}, lastPage = {};  ///< page expressions; empty: the first and the last page
    std::optional<SearchArea> area = {};
    bool firstMatchOnly = false;  ///< of each term in each file
    std::string copyFolder = {};  ///< gets one copy of each file in which something is found; empty: none are made
    std::string reportFile = {};  ///< the report for people; what an earlier search wrote there is replaced
};

inline constexpr char kSearchWork[] = "search";
inline constexpr char kSearchRules[] = "rules";  ///< what the file of rules is called among those of the work

/// The area that "LEFT,BOTTOM,RIGHT,TOP" names, blanks around the numbers allowed; either corner may come first.
[[nodiscard]] std::optional<SearchArea> ParseSearchArea(std::string_view text);
/// What "area" of an object says; nothing when it is absent or something else.
[[nodiscard]] std::optional<SearchArea> AreaAt(const Json& object);
[[nodiscard]] Json SearchOrderJson(const SearchOrder& order);
/// Fails with a sentence when a term is empty.
[[nodiscard]] Expected<SearchOrder> SearchOrderFrom(const Json& object);

/// A place where something was found.
struct Finding {
    int term = 0;  ///< from 1
    int page = 0;  ///< from 1
    std::string text = {};
};

[[nodiscard]] Json FindingsJson(const std::vector<Finding>& findings);
/// Entries that are none are left out.
[[nodiscard]] std::vector<Finding> FindingsFrom(const Json& array);
