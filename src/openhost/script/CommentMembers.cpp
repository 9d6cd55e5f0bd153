// What "this" says of comments. They can be read; what shows a comment would have to be drawn anew to change it.

#include <algorithm>
#include <stdexcept>

#include <qpdf/QPDF.hh>
#include <qpdf/QPDFObjectHandle.hh>

#include "openhost/pdf/PageTree.h"
#include "openhost/script/ScriptObjects.h"
#include "openhost/script/ScriptValues.h"
#include "openhost/script/Scripts.h"
#include "openhost/values/Text.h"

namespace openhost {

namespace {

/// Other annotations, such as links and fields, are no comments.
constexpr const char* kTypes[] = {"/Text",     "/FreeText",  "/Line",           "/Square",   "/Circle",    "/Polygon",
                                  "/PolyLine", "/Highlight", "/Underline",      "/Squiggly", "/StrikeOut", "/Stamp",
                                  "/Caret",    "/Ink",       "/FileAttachment", "/Sound",    "/Redact"};

/// Answers what the comment at the index -1 is to a script: what it does not know, and each change, is an error.
constexpr char kGuard[] = R"JS((function (values) {
    return new Proxy(values, {
        get: function (target, key) {
            if (typeof key !== "string" || key in target || key === "toJSON") return target[key];
            throw new Error("this host has no property " + key + " of comments");
        },
        set: function (target, key) { throw new Error(key + " of comments cannot be set"); },
        deleteProperty: function (target, key) { throw new Error(key + " of comments cannot be deleted"); }
    });
}))JS";

bool IsComment(QPDFObjectHandle annotation)
{
    if (!annotation.isDictionary() || !annotation.getKey("/Subtype").isName()) return false;
    return std::ranges::find(kTypes, annotation.getKey("/Subtype").getName()) != std::end(kTypes);
}

/// The comments of a page in the order in which they lie on it.
std::vector<QPDFObjectHandle> CommentsOf(QPDFObjectHandle page)
{
    std::vector<QPDFObjectHandle> comments;
    const QPDFObjectHandle annotations = page.getKey("/Annots");
    const int count = QPDFObjectHandle(annotations).isArray() ? QPDFObjectHandle(annotations).getArrayNItems() : 0;
    for (int at = 0; at < count; ++at)
        if (const auto item = QPDFObjectHandle(annotations).getArrayItem(at); IsComment(item))
            comments.push_back(item);
    return comments;
}

std::u16string TextIn(QPDFObjectHandle comment, const char* key)
{
    QPDFObjectHandle value = comment.getKey(key);
    return value.isString() ? Utf16FromPdText(value.getStringValue()) : std::u16string();
}

void PushRectangle(duk_context* context, QPDFObjectHandle value)
{
    duk_push_array(context);
    if (!value.isRectangle()) return;
    const QPDFObjectHandle::Rectangle area = value.getArrayAsRectangle();
    duk_uarridx_t at = 0;
    for (const double edge : {area.llx, area.lly, area.urx, area.ury}) {
        duk_push_number(context, edge);
        duk_put_prop_index(context, -2, at++);
    }
}

void PushComment(duk_context* context, QPDFObjectHandle comment, int page0)
{
    constexpr long long hidden = 2, printed = 4, readOnly = 64;
    RunOwnScript(context, kGuard);
    duk_push_object(context);
    PushScriptUtf8(context, comment.getKey("/Subtype").getName().substr(1));
    duk_put_prop_string(context, -2, "type");
    duk_push_int(context, page0);
    duk_put_prop_string(context, -2, "page");
    PushRectangle(context, comment.getKey("/Rect"));
    duk_put_prop_string(context, -2, "rect");
    constexpr std::pair<const char*, const char*> texts[] = {
        {"contents", "/Contents"}, {"author", "/T"}, {"subject", "/Subj"}, {"name", "/NM"}};
    for (const auto& [name, key] : texts) {
        PushScriptText(context, TextIn(comment, key));
        duk_put_prop_string(context, -2, name);
    }
    QPDFObjectHandle opacity = comment.getKey("/CA"), flags = comment.getKey("/F");
    duk_push_number(context, opacity.isNumber() ? opacity.getNumericValue() : 1);
    duk_put_prop_string(context, -2, "opacity");
    const long long bits = flags.isInteger() ? flags.getIntValue() : 0;
    constexpr std::pair<const char*, long long> states[] = {
        {"hidden", hidden}, {"print", printed}, {"readOnly", readOnly}};
    for (const auto& [name, bit] : states) {
        duk_push_boolean(context, (bits & bit) != 0);
        duk_put_prop_string(context, -2, name);
    }
    duk_call(context, 1);
}

/// Comments are read from the document whenever a script asks, so that there is nothing to wait for.
duk_ret_t SyncAnnotScan(CScriptRun&, duk_context*) { return 0; }

/// Those of a page, or of all; null when there are none.
duk_ret_t GetAnnots(CScriptRun& run, duk_context* context)
{
    for (const auto& [place, name] : {std::pair{1, "nSortBy"}, {2, "bReverse"}, {3, "nFilterBy"}}) {
        PushArgument(context, place, name);
        if (duk_to_boolean(context, -1) != 0)
            throw std::runtime_error(std::string("getAnnots takes no ") + name + " here");
        duk_pop(context);
    }
    const int only = WholeArgument(context, 0, "nPage", -1);
    if (only != -1) CheckedPage(run, only);
    duk_push_array(context);
    duk_uarridx_t count = 0;
    const auto pages = PagesOf(run.Pdf().Library());
    for (int page0 = std::max(only, 0); page0 < (only == -1 ? static_cast<int>(pages.size()) : only + 1); ++page0) {
        for (const QPDFObjectHandle& comment : CommentsOf(pages[static_cast<std::size_t>(page0)])) {
            PushComment(context, comment, page0);
            duk_put_prop_index(context, -2, count++);
        }
    }
    if (count == 0) duk_push_null(context);
    return 1;
}

duk_ret_t GetAnnot(CScriptRun& run, duk_context* context)
{
    const int page0 = CheckedPage(run, WholeArgument(context, 0, "nPage", 0));
    PushArgument(context, 1, "cName");
    const std::u16string name = ScriptUtf16At(context, -1);
    for (const QPDFObjectHandle& comment :
         CommentsOf(PagesOf(run.Pdf().Library())[static_cast<std::size_t>(page0)])) {
        if (TextIn(comment, "/NM") != name || name.empty()) continue;
        PushComment(context, comment, page0);
        return 1;
    }
    duk_push_null(context);
    return 1;
}

}  // namespace

void AddCommentMembers(duk_context* context)
{
    duk_push_global_object(context);
    AddScriptMethods(context, {{"syncAnnotScan", &ScriptEntry<&SyncAnnotScan>},
                               {"getAnnots", &ScriptEntry<&GetAnnots>},
                               {"getAnnot", &ScriptEntry<&GetAnnot>}});
    duk_pop(context);
}

}  // namespace openhost
