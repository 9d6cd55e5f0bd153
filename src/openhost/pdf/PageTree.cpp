#include "openhost/pdf/PageTree.h"

#include <algorithm>
#include <climits>
#include <iterator>
#include <set>
#include <string_view>

#include <qpdf/QPDF.hh>
#include <qpdf/QPDFExc.hh>
#include <qpdf/QPDFObjectHandle.hh>
#include <qpdf/QPDFPageLabelDocumentHelper.hh>

namespace openhost {
namespace {

bool IsCatalogue(QPDFObjectHandle object) { return object.isDictionary() && object.getKey("/Pages").isDictionary(); }

void MakeChildOf(QPDFObjectHandle root, QPDFObjectHandle page)
{
    for (const char* key : {"/Resources", "/MediaBox", "/CropBox", "/Rotate"}) {
        page.replaceKey(key, InheritedEntry(page, key));
    }
    page.replaceKey("/Type", QPDFObjectHandle::newName("/Page"));
    page.replaceKey("/Parent", root);
}

/// A node whose children are being walked.
struct OpenNode {
    QPDFObjectHandle kids;
    int next = 0;
};

}  // namespace

QPDFObjectHandle InheritedEntry(QPDFObjectHandle node, const char* key)
{
    constexpr int kDeepestTree = 1000;
    for (int level = 0; level < kDeepestTree && node.isDictionary(); ++level) {
        if (node.hasKey(key)) return node.getKey(key);
        node = node.getKey("/Parent");
    }
    return QPDFObjectHandle::newNull();
}

Catalogue EnsureCatalogue(QPDF& document, bool repair)
{
    QPDFObjectHandle trailer = document.getTrailer();
    if (!trailer.isDictionary()) return Catalogue::Missing;
    if (IsCatalogue(trailer.getKey("/Root"))) return Catalogue::Named;
    if (!repair) return Catalogue::Missing;
    int found = 0;
    for (QPDFObjectHandle object : document.getAllObjects()) {
        if (!object.isDictionaryOfType("/Catalog") || !IsCatalogue(object)) continue;
        trailer.replaceKey("/Root", object);
        ++found;
    }
    if (found == 0) return Catalogue::Missing;
    return found == 1 ? Catalogue::Named : Catalogue::Searched;
}

std::optional<std::size_t> ClaimedPages(QPDF& document)
{
    QPDFObjectHandle claim = document.getTrailer().getKey("/Root").getKey("/Pages").getKey("/Count");
    const bool possible = claim.isInteger() && claim.getIntValue() > 0 && claim.getIntValue() <= INT_MAX;
    return possible ? std::optional(static_cast<std::size_t>(claim.getIntValue())) : std::nullopt;
}

void MendPageTree(QPDF& document)
{
    PageWalk walk = WalkPages(document);
    if (walk.unreadable == 0 && ClaimedPages(document) == walk.pages.size()) return;
    MakePageTree(document, std::move(walk.pages));
}

void MakePageTree(QPDF& document, std::vector<QPDFObjectHandle> pages)
{
    QPDFObjectHandle trailer = document.getTrailer();
    if (!trailer.getKey("/Root").isDictionary())
        trailer.replaceKey("/Root", document.makeIndirectObject(QPDFObjectHandle::parse("<</Type/Catalog>>")));
    QPDFObjectHandle catalogue = trailer.getKey("/Root");
    catalogue.replaceKey("/Type", QPDFObjectHandle::newName("/Catalog"));
    // A tree whose root is no node, or is a page itself, gets another root.
    QPDFObjectHandle root = catalogue.getKey("/Pages");
    if (!root.isDictionary() || !root.getKey("/Kids").isArray()) {
        root = document.makeIndirectObject(QPDFObjectHandle::newDictionary());
        catalogue.replaceKey("/Pages", root);
    }
    std::set<QPDFObjGen> placed;
    for (QPDFObjectHandle& page : pages) {
        const bool again = page.isIndirect() && !placed.insert(page.getObjGen()).second;
        if (again || !page.isIndirect()) page = document.makeIndirectObject(page.shallowCopy());
        MakeChildOf(root, page);
    }
    root.replaceKey("/Type", QPDFObjectHandle::newName("/Pages"));
    root.replaceKey("/Kids", QPDFObjectHandle::newArray(pages));
    root.replaceKey("/Count", QPDFObjectHandle::newInteger(static_cast<long long>(pages.size())));
    if (document.everCalledGetAllPages()) document.updateAllPagesCache();
}

PageWalk WalkPages(QPDF& document)
{
    PageWalk walk;
    std::set<QPDFObjGen> entered;
    std::vector<OpenNode> path;
    const auto visit = [&](QPDFObjectHandle node) {
        if (!node.isDictionary()) {
            ++walk.unreadable;
            return;
        }
        QPDFObjectHandle kids = node.getKey("/Kids");
        if (!kids.isArray()) {
            if (!node.isDictionaryOfType("/Pages")) walk.pages.push_back(node);
        } else if (!node.isIndirect() || entered.insert(node.getObjGen()).second) {
            path.push_back({kids, 0});
        } else {
            ++walk.unreadable;  // a branch that leads back into the tree stands where pages should be
        }
    };

    visit(document.getTrailer().getKey("/Root").getKey("/Pages"));
    while (!path.empty()) {
        OpenNode& node = path.back();
        if (node.next >= node.kids.getArrayNItems()) {
            path.pop_back();
        } else {
            visit(node.kids.getArrayItem(node.next++));
        }
    }
    return walk;
}

std::vector<QPDFObjectHandle> PagesOf(QPDF& document) { return WalkPages(document).pages; }

std::vector<QPDFObjectHandle> ChangeablePagesOf(QPDF& document)
{
    std::vector<QPDFObjectHandle> pages = PagesOf(document);
    std::set<QPDFObjGen> met;
    const auto isShared = [&](QPDFObjectHandle& page) {
        return !page.isIndirect() || !met.insert(page.getObjGen()).second;
    };
    if (std::ranges::none_of(pages, isShared)) return pages;
    MakePageTree(document, std::move(pages));
    return PagesOf(document);
}

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

namespace {

constexpr std::string_view kCommentTypes[] = {"/Caret",     "/Circle", "/FileAttachment", "/FreeText", "/Highlight",
                                              "/Ink",       "/Line",   "/PolyLine",       "/Polygon",  "/Popup",
                                              "/Redact",    "/Sound",  "/Square",         "/Squiggly", "/Stamp",
                                              "/StrikeOut", "/Text",   "/Underline"};
static_assert(std::is_sorted(std::begin(kCommentTypes), std::end(kCommentTypes)));

bool IsComment(QPDFObjectHandle annotation)
{
    if (!annotation.isDictionary()) return false;
    QPDFObjectHandle type = annotation.getKey("/Subtype");
    return type.isName() &&
           std::binary_search(std::begin(kCommentTypes), std::end(kCommentTypes), std::string_view(type.getName()));
}

}  // namespace

int RemoveComments(CPdfDocument& document)
{
    QPDF& library = document.Library();
    int removed = 0;
    for (QPDFObjectHandle page : PagesOf(library)) {
        QPDFObjectHandle annotations = page.getKey("/Annots");
        if (!annotations.isArray()) continue;
        std::vector<QPDFObjectHandle> kept, comments;
        for (QPDFObjectHandle annotation : annotations.aitems())
            (IsComment(annotation) ? comments : kept).push_back(annotation);
        if (comments.empty()) continue;
        removed += static_cast<int>(comments.size());
        if (kept.empty())
            page.removeKey("/Annots");
        else
            page.replaceKey("/Annots", QPDFObjectHandle::newArray(kept));
        // The structure of a tagged document leads to them, too, and would keep their texts in the file.
        for (QPDFObjectHandle& comment : comments)
            if (comment.isIndirect()) library.replaceObject(comment.getObjGen(), QPDFObjectHandle::newNull());
    }
    return removed;
}

}  // namespace openhost
