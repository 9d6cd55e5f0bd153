#ifndef FERRULE_OPENHOST_PDF_PAGE_TREE_H
#define FERRULE_OPENHOST_PDF_PAGE_TREE_H

#include <optional>
#include <vector>

class QPDF;
class QPDFObjectHandle;

namespace openhost {

/// The catalogue of a document; when the trailer leads to none, a repair looks for one among all objects and makes
/// it the root. Answers whether there is one now.
bool EnsureCatalogue(QPDF& document, bool repair);

/// Whether the page tree claims a possible number of pages and leads to one at least. Does not read further.
bool HasUsablePages(QPDF& document);

/// Replaces a page tree that claims another number of pages than it leads to by a flat one of the pages that are
/// there, each with what it inherited. Any other tree is left alone.
void MendPageTree(QPDF& document);

/// Walks the page tree in order. Entries that are no dictionaries are passed over, a node met again inside itself is
/// not entered again: damaged trees give the pages that can be reached. `most` ends the walk early.
std::vector<QPDFObjectHandle> PagesOf(QPDF& document, std::optional<std::size_t> most = std::nullopt);

}  // namespace openhost

#endif
