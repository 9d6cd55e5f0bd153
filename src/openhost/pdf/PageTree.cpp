#include "openhost/pdf/PageTree.h"

#include <climits>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFExc.hh>
#include <qpdf/QPDFObjectHandle.hh>
#include <set>

namespace openhost {
namespace {

bool IsCatalogue(QPDFObjectHandle object) { return object.isDictionary() && object.getKey("/Pages").isDictionary(); }

/// A page's own entry or the one it inherits.
QPDFObjectHandle InheritedEntry(QPDFObjectHandle node, const char* key)
{
    constexpr int kDeepestTree = 1000;
    for (int level = 0; level < kDeepestTree && node.isDictionary(); ++level) {
        if (node.hasKey(key)) return node.getKey(key);
        node = node.getKey("/Parent");
    }
    return QPDFObjectHandle::newNull();
}

void MakeChildOf(QPDFObjectHandle root, QPDFObjectHandle page)
{
    for (const char* key : {"/Resources", "/MediaBox", "/CropBox", "/Rotate"}) {
        page.replaceKey(key, InheritedEntry(page, key));
    }
    page.replaceKey("/Parent", root);
}

/// A node whose children are being walked.
struct OpenNode {
    QPDFObjectHandle kids;
    int next = 0;
};

}  // namespace

bool EnsureCatalogue(QPDF& document, bool repair)
{
    QPDFObjectHandle trailer = document.getTrailer();
    if (!trailer.isDictionary()) return false;
    if (IsCatalogue(trailer.getKey("/Root"))) return true;
    if (!repair) return false;
    for (QPDFObjectHandle object : document.getAllObjects()) {
        if (object.isDictionaryOfType("/Catalog") && IsCatalogue(object)) {
            trailer.replaceKey("/Root", object);
            return true;
        }
    }
    return false;
}

bool HasUsablePages(QPDF& document)
{
    // The claim is often wrong and then passed over, but without a possible one other readers give up.
    QPDFObjectHandle claim = document.getTrailer().getKey("/Root").getKey("/Pages").getKey("/Count");
    const bool possible = claim.isInteger() && claim.getIntValue() > 0 && claim.getIntValue() <= INT_MAX;
    return possible && !PagesOf(document, 1).empty();
}

void MendPageTree(QPDF& document)
{
    QPDFObjectHandle root = document.getTrailer().getKey("/Root").getKey("/Pages");
    std::vector<QPDFObjectHandle> pages = PagesOf(document);
    const auto count = static_cast<long long>(pages.size());
    QPDFObjectHandle claim = root.getKey("/Count");
    if (claim.isInteger() && claim.getIntValue() == count) return;
    std::set<QPDFObjGen> placed;
    for (QPDFObjectHandle& page : pages) {
        const bool again = page.isIndirect() && !placed.insert(page.getObjGen()).second;
        if (again || !page.isIndirect()) page = document.makeIndirectObject(page.shallowCopy());
        MakeChildOf(root, page);
    }
    root.replaceKey("/Kids", QPDFObjectHandle::newArray(pages));
    root.replaceKey("/Count", QPDFObjectHandle::newInteger(count));
}

std::vector<QPDFObjectHandle> PagesOf(QPDF& document, std::optional<std::size_t> most)
{
    std::vector<QPDFObjectHandle> pages;
    std::set<QPDFObjGen> entered;
    std::vector<OpenNode> path;
    const auto visit = [&](QPDFObjectHandle node) {
        if (!node.isDictionary()) return;
        QPDFObjectHandle kids = node.getKey("/Kids");
        if (!kids.isArray()) {
            if (!node.isDictionaryOfType("/Pages")) pages.push_back(node);
        } else if (!node.isIndirect() || entered.insert(node.getObjGen()).second) {
            path.push_back({kids, 0});
        }
    };

    visit(document.getTrailer().getKey("/Root").getKey("/Pages"));
    while (!path.empty() && (!most || pages.size() < *most)) {
        OpenNode& node = path.back();
        if (node.next >= node.kids.getArrayNItems()) {
            path.pop_back();
        } else {
            visit(node.kids.getArrayItem(node.next++));
        }
    }
    return pages;
}

}  // namespace openhost
