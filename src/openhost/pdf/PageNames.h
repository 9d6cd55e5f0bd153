// What people call pages: labels, bookmarks and named destinations.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <qpdf/QPDFObjectHandle.hh>

#include "openhost/pdf/PdfDocument.h"

namespace openhost {

// Everything works on the document's present state and changes nothing. Trees that are damaged give what can be
// reached: a branch that was entered already, or is no dictionary, is passed over. Texts are UTF-8.
// Fails: CPdfError.

/// The label of each page; a page without one, or with an empty one, has its number from 1.
std::vector<std::string> PageLabelsOf(CPdfDocument& document);

/// The bookmarks below a bookmark, or below the outline's root, top down, each before those below it, until `visit`
/// answers false. A depth of 1 means the next level only, -1 all.
void ForEachBookmark(CPdfDocument& document, QPDFObjectHandle parent, int depth,
                     const std::function<bool(QPDFObjectHandle)>& visit);

/// What stands under a key of a name tree; null when there is none. The key is compared byte by byte first, then as
/// the text that it is.
QPDFObjectHandle InNameTree(CPdfDocument& document, QPDFObjectHandle tree, const std::string& key);

/// All keys and values of a name tree, in its order, until `visit` answers false.
void ForEachName(CPdfDocument& document, QPDFObjectHandle tree,
                 const std::function<bool(QPDFObjectHandle key, QPDFObjectHandle value)>& visit);

/// The array that a destination is: a name or string is looked up among the document's names. Null when there is
/// none.
QPDFObjectHandle ResolvedDestination(CPdfDocument& document, QPDFObjectHandle destination);

/// The page that a destination array leads to, from 0; nothing when the document has no such page.
std::optional<int> PageOfDestination(CPdfDocument& document, QPDFObjectHandle destination);

}  // namespace openhost
