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

std::set<QPDFObjGen> AnnotationsOf(const std::vector<QPDFObjectHandle>& pages)
{
    std::set<QPDFObjGen> all;
    for (QPDFObjectHandle page : pages)
        if (QPDFObjectHandle list = page.getKey("/Annots"); list.isArray())
            for (QPDFObjectHandle annotation : list.aitems())
                if (annotation.isIndirect()) all.insert(annotation.getObjGen());
    return all;
}

/// Takes the fields out that are `gone`, or have nothing left below them.
class CFieldRemover {
public:
    explicit CFieldRemover(std::set<QPDFObjGen> gone) : m_gone(std::move(gone)) {}

    void From(QPDFObjectHandle list, int depth = 0)
    {
        constexpr int kDeepestForm = 100;
        if (!list.isArray() || depth > kDeepestForm) return;
        for (int at = list.getArrayNItems() - 1; at >= 0; --at)
            if (GoesWhole(list.getArrayItem(at), depth)) list.eraseItem(at);
    }

private:
    bool GoesWhole(QPDFObjectHandle field, int depth)
    {
        if (!field.isDictionary() || !field.isIndirect()) return false;
        if (m_gone.contains(field.getObjGen())) return true;
        QPDFObjectHandle below = field.getKey("/Kids");
        const bool first = m_met.insert(field.getObjGen()).second;
        if (!first || !below.isArray() || below.getArrayNItems() == 0) return false;
        From(below, depth + 1);
        if (below.getArrayNItems() > 0) return false;
        m_gone.insert(field.getObjGen());
        return true;
    }

    std::set<QPDFObjGen> m_gone;
    std::set<QPDFObjGen> m_met;
};

void RemoveFields(QPDF& library, std::set<QPDFObjGen> shown, const std::set<QPDFObjGen>& kept)
{
    QPDFObjectHandle form = library.getRoot().getKey("/AcroForm");
    if (!form.isDictionary()) return;
    std::erase_if(shown, [&](const QPDFObjGen& annotation) { return kept.contains(annotation); });
    if (shown.empty()) return;
    CFieldRemover remover(std::move(shown));
    remover.From(form.getKey("/Fields"));
    remover.From(form.getKey("/CO"));  // the order of calculation
}

}  // namespace

void RemovePages(CPdfDocument& document, const std::vector<int>& pages0)
{
    if (pages0.empty()) return;
    QPDF& library = document.Library();
    const std::vector<QPDFObjectHandle> all = ChangeablePagesOf(library);
    const std::set<int> gone0(pages0.begin(), pages0.end());
    std::vector<QPDFObjectHandle> kept, gone;
    std::vector<int> kept0;
    for (std::size_t at = 0; at < all.size(); ++at) {
        const int page0 = static_cast<int>(at);
        (gone0.contains(page0) ? gone : kept).push_back(all[at]);
        if (!gone0.contains(page0)) kept0.push_back(page0);
    }
    if (kept.empty())
        throw CPdfError(PdfProblem::LastPage, document.Description(), "no page would be left; a document keeps one");
    QPDFObjectHandle root = library.getRoot();
    if (root.getKey("/PageLabels").isDictionary()) root.replaceKey("/PageLabels", LabelsOf(library, kept0));
    RemoveFields(library, AnnotationsOf(gone), AnnotationsOf(kept));
    MakePageTree(library, std::move(kept));
    // Bookmarks and the like would keep the content of the pages in the file.
    for (QPDFObjectHandle& page : gone) library.replaceObject(page.getObjGen(), QPDFObjectHandle::newNull());
}

}  // namespace openhost
