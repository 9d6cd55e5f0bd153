#include "openhost/pdf/Comments.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include <qpdf/QPDF.hh>

#include "openhost/pdf/PageTree.h"

namespace openhost {
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
