#include "openhost/pdf/PageRemoval.h"

#include <qpdf/QPDF.hh>
#include <qpdf/QPDFPageLabelDocumentHelper.hh>
#include <set>

#include "openhost/pdf/PageTree.h"

namespace openhost {
namespace {

/// The labels as they are to be: each page that stays keeps its own.
QPDFObjectHandle LabelsOf(QPDF& library, const std::vector<int>& kept0)
{
    QPDFPageLabelDocumentHelper labels(library);
    std::vector<QPDFObjectHandle> numbers;
    for (std::size_t first = 0; first < kept0.size();) {
        std::size_t last = first;
        while (last + 1 < kept0.size() && kept0[last + 1] == kept0[last] + 1) ++last;
        labels.getLabelsForPageRange(kept0[first], kept0[last], static_cast<long long>(first), numbers);
        first = last + 1;
    }
    QPDFObjectHandle tree = QPDFObjectHandle::newDictionary();
    tree.replaceKey("/Nums", QPDFObjectHandle::newArray(numbers));
    return tree;
}

}  // namespace

void RemovePages(CPdfDocument& document, const std::vector<int>& pages0)
{
    if (pages0.empty()) return;
    QPDF& library = document.Library();
    const std::vector<QPDFObjectHandle> all = ChangeablePagesOf(library);
    const std::set<int> gone0(pages0.begin(), pages0.end());
    std::vector<QPDFObjectHandle> kept;
    std::vector<int> kept0;
    for (std::size_t at = 0; at < all.size(); ++at) {
        const int page0 = static_cast<int>(at);
        if (gone0.contains(page0)) continue;
        kept.push_back(all[at]);
        kept0.push_back(page0);
    }
    if (kept.empty())
        throw CPdfError(PdfProblem::LastPage, document.Description(), "no page would be left; a document keeps one");
    QPDFObjectHandle root = library.getRoot();
    if (root.getKey("/PageLabels").isDictionary()) root.replaceKey("/PageLabels", LabelsOf(library, kept0));
    MakePageTree(library, std::move(kept));
    // Bookmarks and the like would keep the content of the pages in the file.
    for (const int page0 : gone0) {
        QPDFObjectHandle page = all.at(static_cast<std::size_t>(page0));
        library.replaceObject(page.getObjGen(), QPDFObjectHandle::newNull());
    }
}

}  // namespace openhost
