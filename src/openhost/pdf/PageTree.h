// The pages of a document: the tree that they hang on, and what is taken away from them.
#pragma once

#include <optional>
#include <vector>

#include "openhost/pdf/PdfDocument.h"

class QPDF;
class QPDFObjectHandle;

namespace openhost {

/// How the catalogue was come by.
enum class Catalogue { Missing, Named, Searched };

/// The catalogue of a document; when the trailer leads to none, a repair looks for one among all objects and makes
/// it the root. Searched: there were several to choose from, of which the last is taken.
Catalogue EnsureCatalogue(QPDF& document, bool repair);

struct PageWalk {
    std::vector<QPDFObjectHandle> pages;
    std::size_t unreadable = 0;  ///< entries of the tree that are no dictionaries, or lead back into it
};

/// Walks the page tree in order. Entries that are no dictionaries are passed over, a node met again inside itself is
/// not entered again: damaged trees give the pages that can be reached.
PageWalk WalkPages(QPDF& document);
std::vector<QPDFObjectHandle> PagesOf(QPDF& document);

/// The same, each page an object of its own: a page that stands in the tree twice is copied first, so that a change
/// of one is none of the other.
std::vector<QPDFObjectHandle> ChangeablePagesOf(QPDF& document);

/// A page's own entry or the one it inherits; null when there is none.
QPDFObjectHandle InheritedEntry(QPDFObjectHandle node, const char* key);

/// How many pages the document says it has; nothing when that is no possible number.
std::optional<std::size_t> ClaimedPages(QPDF& document);

/// Gives a document whose page tree leads to no page a flat one of these pages, and a catalogue when it has none.
void MakePageTree(QPDF& document, std::vector<QPDFObjectHandle> pages);

/// Replaces a page tree that claims another number of pages than it leads to, or leads to nothing in places, by a
/// flat one of the pages that are there, each with what it inherited. Any other tree is left alone.
void MendPageTree(QPDF& document);

/// Takes these pages (from 0) out of the document; the caller marks it as modified.
///
/// The pages that stay keep what they inherited and their labels. The page objects themselves go with all that only
/// they lead to: bookmarks, links and named destinations that led to them stay and lead nowhere. Form fields that
/// were shown on them alone go, too. The structure stays as it is. Fails: LastPage when no page would be left, and
/// what the library throws; the document is as it was then.
void RemovePages(CPdfDocument& document, const std::vector<int>& pages0);

/// Takes all comments out of the document: markup annotations, with their replies and pop-up windows. Links, form
/// fields, media and everything else on the pages stays. Answers how many annotations went; the caller marks the
/// document as modified. Fails: what the library throws.
int RemoveComments(CPdfDocument& document);

}  // namespace openhost
